#!/usr/bin/env bash
# Fetches real Windows executables with version resources, to be read by tests: packages of the npm registry that
# carry them, and the programs and libraries of Debian's libwine if it is installed. Nothing of it is committed.
# Usage: scripts/fetch_executables.sh [DIRECTORY]     (build/executables)

# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"
cd "$repository"
directory=${1:-build/executables}

fetch "$directory" 7zip-bin@5.2.0 rcedit@3.1.0 node-notifier@10.0.1 electron-winstaller@5.4.0

for bits in i386 x86_64; do
    wine=/usr/lib/x86_64-linux-gnu/wine/$bits-windows
    if [ -d "$wine" ]; then ln -sfn "$wine" "$directory/wine-$bits"; fi
done

find -L "$directory" -iname '*.exe' -o -iname '*.dll' | wc -l
