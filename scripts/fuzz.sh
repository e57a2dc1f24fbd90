#!/usr/bin/env bash
# Fuzzes the targets of tests/fuzz, all of them or those named on the command line.
#
#   scripts/fuzz.sh                          every target for one hour of processor time
#   scripts/fuzz.sh --cpu 30 xml archive     these two for half a minute each
#   scripts/fuzz.sh --jobs 2                 two targets at a time
#   scripts/fuzz.sh --list                   their names
#
# Processor time is what the fuzzing process itself used, user and system, so a busy machine makes a run longer but
# not smaller. Inputs that reach something new are kept in build/fuzz/corpus and are where the next run begins;
# tests/fuzz/corpus holds the seeds, and in folders `found` the fewest inputs that reach all that earlier runs did:
#
#   build/fuzz/bin/xml_fuzz -merge=1 -use_counters=0 -max_len=400 "$PWD"/tests/fuzz/corpus/xml/{found,} \
#       "$PWD"/build/fuzz/corpus/xml
#
# What breaks a target goes to build/fuzz/findings, and makes the exit status 1.

# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"
cd "$repository"

build=$repository/build/fuzz
corpus=$build/corpus
findings=$build/findings
# Seconds on the clock that one run of a fuzzer may take; then its processor time is known, and the corpus read anew.
shortest_slice=10
longest_slice=300

targets() { for source in tests/fuzz/*_fuzz.cpp; do basename "$source" _fuzz.cpp; done; }

usage() {
    sed -n '2,/^$/s/^# \{0,1\}//p' "$0"
    exit "$1"
}

dictionary() { # of a target: its own or, for those that read the tool's documents, the shared one
    if [ -f "tests/fuzz/$1.dict" ]; then echo "tests/fuzz/$1.dict"; else echo tests/fuzz/tool.dict; fi
}

# slice TARGET SECONDS LOG: one run of the fuzzer; prints the processor time it took.
slice() {
    local target=$1 seconds=$2 log=$3 TIMEFORMAT='%U %S' status=0 taken
    taken=$({ time "$build/bin/${target}_fuzz" -max_total_time="$seconds" -print_final_stats=1 \
        -dict="$(dictionary "$target")" -artifact_prefix="$findings/$target-" \
        "$corpus/$target" "$repository/tests/fuzz/corpus/$target" >"$log" 2>&1; } 2>&1) || status=$?
    awk '{ print $1 + $2 }' <<<"$taken"
    return "$status"
}

# figure LOG PATTERN: the number behind the last PATTERN in a log of the fuzzer, 0 when there is none.
figure() { { grep -oE "$2 *[0-9]+" "$1" || echo 0; } | tail -n 1 | grep -oE '[0-9]+$'; }

# slice_length BUDGET SPENT: whole seconds that the next slice may take, 0 when nothing is left.
slice_length() {
    awk -v left="$(awk "BEGIN { print $1 - $2 }")" -v least="$shortest_slice" -v most="$longest_slice" \
        'BEGIN { print (left <= 0) ? 0 : (left < least) ? least : (left > most) ? most : int(left + 0.999) }'
}

# fuzz TARGET SECONDS RESULT: slices until the processor time is spent; writes the target's row of the table.
fuzz() {
    local target=$1 budget=$2 result=$3 log=$build/$1.log spent=0 runs=0 outcome=none left used
    mkdir -p "$corpus/$target" "$findings"
    while left=$(slice_length "$budget" "$spent") && [ "$left" -gt 0 ] && [ "$outcome" = none ]; do
        used=$(slice "$target" "$left" "$log") || outcome="see $log"
        spent=$(awk "BEGIN { print $spent + $used }")
        runs=$((runs + $(figure "$log" 'stat::number_of_executed_units:')))
    done
    [ "$runs" -gt 0 ] || outcome="did not run, see $log"
    printf '%-14s %9.0f %12d %10d  %s\n' "$target" "$spent" "$runs" "$(figure "$log" 'cov:')" "$outcome" >"$result"
    [ "$outcome" = none ]
}

main() {
    local budget=3600 jobs=1 chosen=() results status=0 target
    while [ $# -gt 0 ]; do
        case $1 in
            --cpu) budget=${2:?--cpu needs a number of seconds} && shift ;;
            --jobs) jobs=${2:?--jobs needs a number} && shift ;;
            --list) targets && exit ;;
            -h | --help) usage 0 ;;
            -*) usage 1 >&2 ;;
            *) chosen+=("$1") ;;
        esac
        shift
    done
    [ ${#chosen[@]} -gt 0 ] || mapfile -t chosen < <(targets)
    for target in "${chosen[@]}"; do
        [ -f "tests/fuzz/${target}_fuzz.cpp" ] || fail "no target is called $target (--list names them)"
    done

    need "${build_packages[@]}" clang googletest
    build fuzz "${chosen[@]/%/_fuzz}"
    results=$(mktemp -d)
    [ ! -w /dev/shm ] || export TMPDIR=/dev/shm # where saving does not wait for a disk
    for target in "${chosen[@]}"; do
        while [ "$(jobs -pr | wc -l)" -ge "$jobs" ]; do wait -n || status=1; done
        fuzz "$target" "$budget" "$results/$target" &
    done
    while [ -n "$(jobs -p)" ]; do wait -n || status=1; done

    printf '%-14s %9s %12s %10s  %s\n' target 'CPU s' executions coverage findings
    cat "$results"/*
    rm -rf "$results"
    return "$status"
}

main "$@"
