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
# Fails when one is running. A new one and its services must not hold on to this program's streams: whoever reads
# them would wait for their end.
if "$server" -p60 </dev/null >/dev/null 2>&1; then "$wine" cmd /c exit </dev/null >/dev/null 2>&1; fi
exec "$wine" "$@"
