#!/bin/sh
# Starts a Windows program in Wine: run_in_wine.sh WINE WINESERVER PREFIX PROGRAM [ARGUMENT...]
# The prefix is a Windows of the build directory's own. Its server stays for a minute after the last program, which
# makes all starts but the first one quick.
wine=$1
server=$2
export WINEPREFIX="$3" WINEDEBUG=-all
shift 3
# Fails when one is running. A new one and its services must not hold on to this program's streams: whoever reads
# them would wait for their end.
if "$server" -p60 </dev/null >/dev/null 2>&1; then "$wine" cmd /c exit </dev/null >/dev/null 2>&1; fi
exec "$wine" "$@"
