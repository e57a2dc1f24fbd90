#!/usr/bin/env bash
# Shows the program at work: builds it, makes upgrade archives and packages with public tools, runs all three
# modes, and shows with public tools alone what changed. Everything happens in build/demo.

# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"
cd "$repository"

demo=$repository/build/demo
program=host/bin/win64/TaVekUtil
release_time=202401020304.06
# A real Windows program, of Debian's package win32-loader, takes the place of the host software's executable.
windows_program=/usr/share/win32/win32-loader.exe
export TZ=UTC

bold='' plain=''
[ ! -t 1 ] || bold=$'\033[1m' plain=$'\033[0m'
step() { printf '\n%s== %s%s\n' "$bold" "$*" "$plain"; }

# Shows a command, then runs it.
run() {
    printf '$ %s\n' "$*"
    "$@"
}

# module NUMBER SIZE: content of a made-up host library, the same on every run.
module() {
    awk -v state="$1" -v size="$2" 'BEGIN {
        for (written = 0; written < size; written += length(line) + 1) {
            line = "section"
            for (word = 0; word < 8; word++) {
                state = (state * 16807) % 2147483647
                line = line sprintf(" %08x", state)
            }
            print line
        }
    }'
}

# host_script MODEL...: a start-up script as the host software ships it, with some 300 entries for the models.
host_script() {
    local number model
    printf '<?xml version="1.0" encoding="UTF-8"?>\n'
    printf '<!-- Installs the host software. Entries are applied from top to bottom. -->\n<Startup>\n'
    printf '  <Version value="6.1.2.57"/>\n'
    for number in $(seq -w 0 299); do
        [ "${number#?}" != 00 ] || printf '  <!-- group %s -->\n' "${number%??}"
        printf '  <File name="/app_main/part%s" source="host/part%s">\n    <Or>\n' "$number" "$((10#$number % 40))"
        for model in "$@"; do printf '      <Eq property="Controller" value="%s"/>\n' "$model"; done
        printf '    </Or>\n  </File>\n'
    done
    printf '</Startup>\n'
}

# upgrade_archive NAME SEED MODEL...: an upgrade archive of 45 members, the firmware images among them stored.
upgrade_archive() {
    local name=$1 seed=$2 tree part
    shift 2
    tree=$(mktemp -d)
    mkdir -p "$tree/host" "$tree/firmware"
    host_script "$@" >"$tree/script.xml"
    for part in $(seq 0 39); do module "$((seed + part))" 60000 >"$tree/host/part$part"; done
    for part in boot kernel tables; do module "$((seed + 100))" 400000 >"$tree/firmware/$part.img"; done
    printf 'release 6.1.2.57 for %s\n' "$*" >"$tree/release.txt"
    find "$tree" -exec touch -t "$release_time" {} +
    (cd "$tree" && find . -type f | sed 's,^\./,,' | sort | zip -q -X -n .img -@ "$demo/archives/$name")
    touch -t "$release_time" "$demo/archives/$name"
    rm -r "$tree"
}

lay_out() {
    local package
    rm -rf "$demo"
    mkdir -p "$demo/archives" "$demo/packages" "$demo/host/bin/win64"
    cp build/release/bin/TaVekUtil "$demo/$program"
    ln -s "$(command -v tar)" "$demo/host/bin/win64/tar.exe"
    cp samples/*.xml "$demo/host/bin/win64"
    cp "$windows_program" "$demo/host/bin/win64/TaQor.exe"
    upgrade_archive sensor-arm7.pkg 1000 R2 R4 R4-mc
    upgrade_archive sensor-arm64.pkg 2000 R6 R8
    upgrade_archive module-ombix.pkg 3000 TX2 'Xavier NX' 'Orin NX' 'AGX Orin'
    for package in lane-counter dust-filter; do
        tar -C "samples/$package" --sort=name --mtime=@0 --owner=0 --group=0 -cf "$demo/packages/$package.tar" .
    done
    module 7 150000 >"$demo/edge-detector.so"
}

# The members of an archive: size, packed size, date and name.
members() { unzip -v "$1" | awk 'NR > 3 && NF >= 8 { printf "%9s %9s  %s %s  %s\n", $1, $3, $5, $6, $8 }'; }

# changes OLD NEW COMMAND...: the lines in which the output of COMMAND differs between the two.
changes() {
    local old=$1 new=$2
    shift 2
    diff -U1 --label "$old" --label "$new" <("$@" "$old") <("$@" "$new") || true
}

script_of() { unzip -p "$1" script.xml; }

results() { (cd "$demo" && find archives -name '*.pkg' -exec sha256sum {} + | sort -k 2); }

work() {
    (cd "$demo" && "$program" --config sample_config.xml --platform all &&
        "$program" --file edge-detector.so --archive archives/sensor-arm64.pkg) >/dev/null 2>&1 ||
        fail 'the second run failed'
}

main() {
    step 'Building'
    need "${build_packages[@]}" zip unzip diffutils mawk win32-loader
    build release TaVekUtil
    lay_out
    cd "$demo"
    printf 'Three upgrade archives, an installation directory and two packages lie in build/demo:\n'
    ls -l archives packages

    step 'All archives, driven by a configuration'
    run "$program" --config sample_config.xml --platform all
    step 'What that changed in an archive: two files of each package, the script, the manifest'
    changes archives/sensor-arm7.pkg archives/Custom-sensor-arm7.pkg members
    step 'The start-up script before and after'
    changes archives/sensor-arm7.pkg archives/Custom-sensor-arm7.pkg script_of
    step 'The installation directory, which takes no package for another host version'
    run find host -newer packages/dust-filter.tar -type f
    run head -n 5 host/vekPackages.xml
    step 'Every result is a sound archive'
    for archive in archives/Custom-*.pkg; do run unzip -tq "$archive"; done

    step 'One library into one archive'
    run "$program" --file edge-detector.so --archive archives/sensor-arm64.pkg
    unzip -p archives/sensor-arm64.pkg script.xml | tail -n 13

    step 'The manifest of an archive'
    run "$program" --manifest manifest.xml --archive archives/Custom-sensor-arm7.pkg
    cat manifest.xml

    step 'The same work again'
    results >"$repository/build/demo.first"
    cd "$repository"
    lay_out
    work
    results >build/demo.second
    if cmp -s build/demo.first build/demo.second; then
        printf 'All archives are byte for byte what they were the first time:\n'
        cat build/demo.second
    else
        diff build/demo.first build/demo.second
        fail 'the two runs gave different archives'
    fi
    rm build/demo.first build/demo.second
}

main
