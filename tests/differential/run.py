#!/usr/bin/env python3
"""Runs random cases through the program and through a model of it, and compares all that a run leaves.

    run.py --program build/release/bin/TaVekUtil [--inspector build/release/bin/TaVekInspect]
           --seed 1 --runs 1000 [--jobs 2] [--keep DIRECTORY]

With an inspector each batch is planned before it runs, and must come out as foretold.

Case N of seed S is the same on every machine: `--seed S --first N --runs 1` repeats it, `--keep` leaves its disk.
"""

import argparse
import collections
import multiprocessing
import os
import pathlib
import shutil
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
sys.dont_write_bytecode = True
sys.path[:0] = [str(HERE), str(HERE.parent / "e2e")]


def options_of(arguments):
    parser = argparse.ArgumentParser(description="Compares the program with a model of it on random cases.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--inspector", default="", help="TaVekInspect, to foretell each batch")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="number of the first case")
    parser.add_argument("--runs", type=int, default=1000)
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--keep", help="a directory in which the cases are left behind")
    return parser.parse_args(arguments)


def examine(task):
    """Runs one case; answers its number, how it ended, the differences, and the statuses seen."""
    from compare import Comparison

    number, options, root = task
    comparison = Comparison(root)
    ending, lines = comparison.outcome(f"{options.seed}/{number}")
    if not options.keep:
        shutil.rmtree(root, ignore_errors=True)
    return number, ending, lines, comparison.seen


def tasks(options, scratch):
    for number in range(options.first, options.first + options.runs):
        root = os.path.join(options.keep or scratch, str(number))
        yield number, options, os.path.abspath(root)


def memory_directory():
    """Where files lie in memory, if programs may be started there; None otherwise."""
    try:
        system = os.statvfs("/dev/shm")
    except OSError:
        return None
    return None if system.f_flag & os.ST_NOEXEC or not os.access("/dev/shm", os.W_OK) else "/dev/shm"


def main(arguments):
    options = options_of(arguments)
    os.environ["TAVEK_PROGRAM"] = os.path.abspath(options.program)
    os.environ["TAVEK_INSPECTOR"] = os.path.abspath(options.inspector) if options.inspector else ""
    scratch = tempfile.mkdtemp(prefix="tavek-differential-", dir=memory_directory())
    print(f"seed {options.seed}, cases {options.first} to {options.first + options.runs - 1}", flush=True)
    try:
        with multiprocessing.Pool(options.jobs) as pool:
            return report(options, pool.imap_unordered(examine, tasks(options, scratch), 16))
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def report(options, outcomes):
    endings, statuses, different = collections.Counter(), {}, 0
    for number, ending, lines, seen in outcomes:
        endings[ending] += 1
        for kind, shown in seen:
            if statuses.setdefault(kind, shown) != shown:
                lines = lines + [f"status {shown!r}, elsewhere {statuses[kind]!r} ({kind})"]
        if lines:
            different += 1
            print(f"== seed {options.seed}, case {number}\n" + "\n".join(lines), flush=True)
    for ending, count in sorted(endings.items()):
        print(f"{count:7} {ending}")
    print(f"{options.runs} cases, {different} differences")
    return 1 if different or not options.runs else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
