#!/bin/sh
# Starts a Windows program in Wine: run_in_wine.sh WINE WINESERVER PREFIX PROGRAM [ARGUMENT...]
# The prefix is a Windows of the build directory's own. Its server stays for a minute after the last program: a start
# is quick then, and no program meets a server that is about to go, which would end it without a word.
wine=$1
server=$2
export WINEPREFIX="$3" WINEDEBUG=-all
shift 3
# Without the directory the server would not start here, and the first program would start one that does not stay.
mkdir -p "$WINEPREFIX"
# Fails when one is running. A new one starts its services, and nobody is let past before they run: a program that comes
# among them may end without a word. Nor must they hold on to this program's streams: whoever reads them would wait for
# their end.
# shellcheck disable=SC2016 # the inner shell's own
flock --close "$WINEPREFIX" sh -c '"$1" -p60 && "$2" cmd /c exit' start "$server" "$wine" </dev/null >/dev/null 2>&1
exec "$wine" "$@"
