#!/usr/bin/env bash
# Has clang read the sources as for Windows, with the headers of MinGW-w64, so that they lean on no one compiler's
# habits. Nothing is written.
#
#   scripts/check_windows_syntax.sh [SOURCE...]     (all of platform, TaVekUtil, TaVekInspect and tools)

# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"
cd "$repository"

need clang g++-mingw-w64-x86-64-posix git

sources=("$@")
if [ ${#sources[@]} -eq 0 ]; then
    mapfile -t sources < <(git ls-files 'platform/*.cpp' 'TaVekUtil/*.cpp' 'TaVekInspect/*.cpp' 'tools/*.cpp' |
        grep -v '/posix_[a-z]*\.cpp$')
fi
library=$(x86_64-w64-mingw32-g++-posix -print-file-name=include/c++)

printf '%s\n' "${sources[@]}" |
    xargs -P "$(nproc)" -n 1 clang++ --target=x86_64-w64-mingw32 -fsyntax-only -std=c++20 -I. \
        -nostdinc++ -isystem "$library" -isystem "$library/x86_64-w64-mingw32" \
        -isystem "$library/backward" -isystem /usr/x86_64-w64-mingw32/include \
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
        -D_FILE_OFFSET_BITS=64 -DTAVEK_VERSION='"0"' -DWIN32_LEAN_AND_MEAN -DNOMINMAX -D_WIN32_WINNT=0x0A00
printf '%d sources read\n' "${#sources[@]}"
