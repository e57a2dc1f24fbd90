#!/usr/bin/env bash
# Runs the checks of the project, all of them or those named on the command line, and installs what they need.
#
#   scripts/test.sh                 every check
#   scripts/test.sh release asan    these alone
#   scripts/test.sh --list          their names
#
# The last line says how many passed and failed; the exit status is 1 when one failed.

# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"
cd "$repository"

test_packages=(googletest python3 zip unzip p7zip-full libarchive-tools zlib1g-dev libio-compress-perl
    libxml2-utils python3-jsonschema patch pkgconf libxml2-dev)

sources() { git ls-files '*.cpp' '*.h'; }

# The faults, and what writes many gigabytes, have checks of their own.
run_tests() { ctest --preset "$1" --parallel "$(nproc)" --label-exclude 'faults|large'; }

check_format() {
    need clang-format
    sources | xargs clang-format --dry-run -Werror
}

check_layers() {
    need python3
    python3 scripts/check_layers.py
}

check_scripts() {
    need shellcheck
    git ls-files '*.sh' '*.bash' '.ci/run' | xargs shellcheck -x -s bash
}

check_release() {
    need "${test_packages[@]}"
    build release
    run_tests release
}

check_asan() {
    need "${test_packages[@]}"
    build asan
    run_tests asan
}

check_clang() {
    need "${test_packages[@]}" clang
    build clang
    run_tests clang
}

check_tidy() {
    need "${test_packages[@]}" clang-tidy
    cmake --preset clang >/dev/null
    # One source a process: the analyzer takes names from one source for those of the next and no longer sees va_start.
    sources | grep -E '^(platform|TaVekUtil|TaVekInspect|tools)/.*\.cpp$' | grep -v '/windows' |
        xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p build/clang 2>/dev/null
}

# Tests that count memory have an operator new of their own, which valgrind leaves alone here. What a process that ends
# abnormally on purpose holds then is possibly lost.
check_valgrind() {
    need "${test_packages[@]}" valgrind
    build debug
    find build/debug/bin -name '*_test' | sort |
        xargs -P "$(nproc)" -I{} valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite \
            --errors-for-leak-kinds=definite --soname-synonyms=somalloc=nouserintercepts {} --gtest_brief=1
}

# Lines of the tool and the layer under it that the tests run; what is below the mark is listed.
check_coverage() {
    need "${test_packages[@]}" gcovr
    build coverage
    find build/coverage -name '*.gcda' -delete
    run_tests coverage
    gcovr --root . --object-directory build/coverage --filter 'platform/' --filter 'TaVekUtil/' --filter 'TaVekInspect/' \
        --exclude-unreachable-branches --fail-under-line 95 --print-summary --txt build/coverage/lines.txt
    grep -E '^(platform|TaVekUtil|TaVekInspect)/' build/coverage/lines.txt | awk '$4 != "100%"'
}

check_faults() {
    need "${test_packages[@]}" strace
    local preset
    for preset in release debug; do
        build "$preset"
        ctest --preset "$preset" --label-regex faults --verbose
    done
}

# Archives and members beyond 4 GiB; a slow disk makes it long.
check_large() {
    need "${test_packages[@]}"
    build release
    ctest --preset release --label-regex large
}

check_windows() {
    need "${test_packages[@]}" g++-mingw-w64-x86-64-posix wine64
    build windows
    run_tests windows
    build release TaVekUtil
    python3 scripts/compare_systems.py build/release/bin/TaVekUtil build/windows/bin/TaVekUtil.exe \
        "$repository/cmake/run_in_wine.sh /usr/lib/wine/wine64 /usr/lib/wine/wineserver64 $repository/build/windows/wine"
}

# The versions of real Windows programs: as Windows's own functions read them under Wine, our reader, and another.
check_file_versions() {
    need icoutils libwine g++-mingw-w64-x86-64-posix wine64 googletest python3
    build release file_version_probe
    build windows file_version_probe
    scripts/fetch_executables.sh
    python3 scripts/compare_file_versions.py
}

check_windows_syntax() {
    scripts/check_windows_syntax.sh
}

# The documents with every example in them, the manual pages, the schemas, the completion.
check_docs() {
    need "${test_packages[@]}" groff libxml2-utils man-db mandoc zsh
    fetch build/node tree-sitter-powershell@0.26.4 web-tree-sitter@0.27.1
    build debug TaVekUtil TaVekInspect
    TAVEK_ALL_TOOLS=1 TAVEK_NODE_PACKAGES=$repository/build/node ctest --preset debug --parallel "$(nproc)" -L docs
    scripts/demo.sh >build/demo.log 2>&1
    python3 -B tests/docs/transcript_check.py build/demo.log
}

# What people install: what is in it, and that it installs, runs and goes again.
check_packages() {
    need "${test_packages[@]}" dpkg-dev g++-mingw-w64-x86-64-posix groff man-db wine64 zsh
    build release TaVekUtil TaVekInspect manual_pages
    build windows TaVekUtil TaVekInspect tavek_tar
    local preset
    for preset in release windows; do
        rm -rf "build/$preset/packages"
        cpack --config "build/$preset/CPackConfig.cmake" >/dev/null
    done
    dpkg-deb --contents build/release/packages/tavekutil_*.deb
    tar -tvzf build/release/packages/TaVekUtil-*.tar.gz
    unzip -l build/windows/packages/TaVekUtil-*.zip
    python3 -B tests/packages/packages_test.py --linux build/release/packages --windows build/windows/packages
}

# Each fuzz target for half a minute of processor time.
check_fuzz() {
    need "${test_packages[@]}" clang
    scripts/fuzz.sh --cpu 30 --jobs "$(nproc)"
}

checks=(
    format layers scripts release asan clang tidy valgrind coverage faults large windows windows_syntax file_versions docs packages
    fuzz)

main() {
    local chosen=("$@") name status failed=() passed=0
    [ ${#chosen[@]} -gt 0 ] || chosen=("${checks[@]}")
    need "${build_packages[@]}" git
    for name in "${chosen[@]}"; do
        declare -F "check_$name" >/dev/null || fail "no check is called $name (--list names them)"
        printf '\n== %s\n' "$name"
        # Not as a condition, which would let a check go on behind its first failing command.
        set +e
        (set -e && check_"$name")
        status=$?
        set -e
        if [ "$status" -eq 0 ]; then passed=$((passed + 1)); else failed+=("$name"); fi
    done
    [ ${#failed[@]} -eq 0 ] || printf '\nFailed: %s\n' "${failed[*]}"
    printf '%d passed, %d failed\n' "$passed" "${#failed[@]}"
    [ ${#failed[@]} -eq 0 ]
}

if [ "${1:-}" = --list ]; then printf '%s\n' "${checks[@]}"; else main "$@"; fi
