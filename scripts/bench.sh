#!/usr/bin/env bash
# Measures the program and its parts against others doing the same work, everything in turn in one run.
#
#   scripts/bench.sh                all scenarios of bench/program_bench.py, then the parts
#   scripts/bench.sh stored files   these scenarios alone (stored, deflated, members, files, verify, start)
#
# Raw numbers go to build/bench/, the chart to build/bench/chart.svg; scenarios that are left out keep the numbers of their
# last run. Takes about ten minutes and 6 GiB of disk.

# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"
cd "$repository"

need "${build_packages[@]}" pkgconf python3 time zip unzip p7zip-full libbenchmark-dev zlib1g-dev libdeflate-dev libpugixml-dev \
    libxml2-dev
build release
build bench

only=${*:-}
python3 bench/program_bench.py build/release/bin/TaVekUtil ${only:+--only "${only// /,}"} \
    --work build/bench/data --results build/bench/program.json
python3 bench/chart.py build/bench/program.json >build/bench/chart.svg

if [ -z "$only" ]; then
    for part in build/bench/bin/*_bench; do
        printf '\n%s\n' "${part##*/}"
        "$part" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
            --benchmark_enable_random_interleaving=true --benchmark_out="build/bench/${part##*/}.json" |
            grep -E '_median|^Benchmark'
    done
fi
