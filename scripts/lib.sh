# Shared by the scripts of this directory; to be sourced, not run.
# shellcheck shell=bash disable=SC2034

set -euo pipefail
export LC_ALL=C.UTF-8

repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# need PACKAGE...: installs from Debian what is missing; says nothing when it is all there.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    printf 'Installing: %s\n' "${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# fetch DIRECTORY PACKAGE@VERSION...: unpacks packages of the npm registry to DIRECTORY/PACKAGE, but for those that are there.
fetch() {
    local directory=$1 package name archive
    shift
    command -v npm >/dev/null || need npm
    mkdir -p "$directory"
    for package in "$@"; do
        name=${package%@*}
        [ ! -d "$directory/$name" ] || continue
        archive=$(cd "$directory" && npm pack --silent "$package")
        rm -rf "$directory/$name.part" # of a run that was broken off
        mkdir "$directory/$name.part"
        tar -xzf "$directory/$archive" -C "$directory/$name.part" --strip-components=1
        rm "$directory/$archive"
        mv "$directory/$name.part" "$directory/$name"
    done
}

build_packages=(cmake ninja-build g++ tar)

# build PRESET [TARGET...]: configures and builds, quietly as long as all is well.
build() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } >"$log" 2>&1; then
        cat "$log"
        rm -f "$log"
        fail "preset $preset does not build"
    fi
    rm -f "$log"
}
