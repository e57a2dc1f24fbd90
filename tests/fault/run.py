#!/usr/bin/env python3
"""Makes each system call of the program fail in turn, and kills it at each, and looks at what is left.

    run.py --program build/debug/bin/TaVekUtil [--short-io build/debug/tests/fault/libshort_io.so] [SCENARIO...]

A run counts from the program's first own call, the first that names a file of the scenario or asks where the program
lies; before that the system's loader is at work, which ends by protecting memory (mprotect). With --short-io, which
needs a program that is not linked statically, reads and writes are made short and interrupted as well.

The last lines say how many runs there were by call and error, and how many went wrong; the exit status is 1 then.
"""

import argparse
import collections
import concurrent.futures
import os
import pathlib
import shutil
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))

import judge  # noqa: E402
import scenarios  # noqa: E402
import tracing  # noqa: E402
from tracing import Injection  # noqa: E402

ERRORS = ("ENOSPC", "EIO", "EACCES", "EINTR")
OTHER_ERRORS = {
    "mmap": ("ENOMEM",),
    "fchown": ("EPERM", *ERRORS),
    "getxattr": ("EOPNOTSUPP", *ERRORS),
    "fremovexattr": ("EOPNOTSUPP", *ERRORS),
    "clone3": ("EAGAIN",),
}
# Nor can brk: strace cannot give the answer that stands for its failure, and mmap would be called instead.
CANNOT_FAIL = {"brk", "exit_group", "futex", "getpid", "munmap", "prlimit64", "rt_sigaction", "rt_sigprocmask"}


def own_calls(calls, scenario):
    names = [f'"{name}' for name in os.listdir(scenario.template)] + ['"/proc/self/exe"']
    loaded = max((i for i, call in enumerate(calls) if call.name == "mprotect"), default=0)
    first = next(i for i, call in enumerate(calls) if i > loaded and any(name in call.arguments for name in names))
    return calls[first:]


def errors_for(call):
    if call.name in CANNOT_FAIL:
        return ()
    if call.name == "fsync" and not judge.TEMPORARY.search(call.paths()[0]):
        return (*ERRORS, "EINVAL")  # from file systems that cannot flush a directory
    return OTHER_ERRORS.get(call.name, ERRORS)


def injections_into(calls):
    return [Injection(call, what) for call in calls for what in (*errors_for(call), "kill")]


class Harness:
    def __init__(self, options):
        self.options = options
        self.counts = collections.Counter()
        self.wrong = 0

    def complain(self, *words):
        self.wrong += 1
        print("WRONG", *words, flush=True)

    # ---- One run -----------------------------------------------------------------------------------------

    def run(self, scenario, injection=None, preload=None):
        """Runs a copy of the scenario; answers the result and the files before and after."""
        directory = scenario.copy()
        try:
            command = [os.path.join(directory, scenario.program()), *scenario.arguments]
            before = scenarios.snapshot(directory)
            result = tracing.run(command, directory, injection, preload)
            after = scenarios.snapshot(directory)
            again = self.rerun(command, directory) if injection and injection.what == "kill" else None
            return directory, result, before, after, again
        finally:
            shutil.rmtree(directory, ignore_errors=True)

    def rerun(self, command, directory):
        """What a second run makes of what a killed one left."""
        done = tracing.start(command, directory)
        return done, scenarios.snapshot(directory)

    # ---- One scenario ------------------------------------------------------------------------------------

    def walk(self, scenario):
        directory, result, before, clean, _ = self.run(scenario)
        if result.status != 0 or result.stderr:
            self.complain(scenario.name, "fails without a fault:", result.stderr)
            return
        calls = own_calls(result.calls, scenario)
        changed = [n for n in clean if clean[n] != before.get(n) and clean[n].content]
        outputs = [os.path.join(directory, n) for n in changed if not inside(n, scenario.unpacked)]
        for sentence in judge.wrong_order(calls, outputs, directory):
            self.complain(scenario.name, sentence)

        injections = injections_into(calls)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for injection, outcome in zip(injections, pool.map(lambda i: self.run(scenario, i), injections)):
                self.judge(scenario, injection, clean, outcome)
        if self.options.short_io:
            self.short(scenario, clean, len(calls))
        if scenario.unpacked:
            self.tar(scenario, clean)
        print(f"{scenario.name:<10} {len(calls):4} calls", flush=True)

    def judge(self, scenario, injection, clean, outcome, how=""):
        _, result, before, after, again = outcome
        call = injection.call
        self.counts[call.name, injection.what] += 1
        sentences = judge.complaints(scenario, before, clean, after, result, injection)
        if again:
            sentences += self.after_kill(clean, after, *again)
        for sentence in sentences:
            self.complain(
                f"{scenario.name}{how}: {injection.what} at {call.name} {call.ordinal} ({call.arguments[:100]}):",
                f"{sentence}\n  {result.stderr.strip()}",
            )

    def after_kill(self, clean, killed, done, files):
        """Running again mends what a kill left: every file is there, and nothing but the temporary one more."""
        if done.returncode != 0 and not all(judge.same(killed.get(name), clean[name]) for name in clean):
            return [f"running again ends with {done.returncode}: {done.stderr.decode()}"]
        missing = [name for name in clean if name not in files]
        more = [name for name in files if name not in clean and not judge.TEMPORARY.search(name)]
        return [f"running again leaves {missing} out and {more} over"] if missing or more else []

    def tar(self, scenario, clean):
        """The tar program failing and being killed at each of its calls."""
        calls = own_calls(self.run_tar(scenario, None)[0].calls, scenario)
        injections = injections_into(calls)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            outcomes = pool.map(lambda i: self.run_tar(scenario, i), injections)
            for injection, (result, before, after) in zip(injections, outcomes):
                self.counts["of tar", injection.what] += 1
                for sentence in judge.tar_complaints(scenario, before, clean, after, result):
                    self.complain("tar itself:", injection, sentence, result.stderr)

    def run_tar(self, scenario, injection):
        directory = scenario.copy()
        try:
            command = [os.path.join(directory, scenario.program()), *scenario.arguments]
            before = scenarios.snapshot(directory)
            child = os.path.join(directory, scenarios.PROGRAM_DIRECTORY, "tar.exe")
            result = tracing.run_child(command, directory, child, injection)
            return result, before, scenarios.snapshot(directory)
        finally:
            shutil.rmtree(directory, ignore_errors=True)

    def short(self, scenario, clean, usual):
        """Short and interrupted reads and writes change nothing; nor does a full disk or a kill among them do harm."""
        _, result, before, after, _ = self.run(scenario, preload=self.options.short_io)
        self.counts["read, write", "short, EINTR"] += 1
        if len(own_calls(result.calls, scenario)) <= usual:
            self.complain(scenario.name, "has no more calls with short reads and writes")
        differing = [n for n in clean.keys() | after.keys() if not judge.same(clean.get(n), after.get(n))]
        if result.status != 0 or differing:
            self.complain(scenario.name, "with short reads and writes:", result.status, differing, result.stderr)
        writes = [c for c in own_calls(result.calls, scenario) if c.name == "write"]
        writes = writes[:: max(1, len(writes) // 16)]
        for injection in [Injection(call, what) for call in writes for what in ("ENOSPC", "kill")]:
            outcome = self.run(scenario, injection, self.options.short_io)
            self.judge(scenario, injection, clean, outcome, " (short writes)")

    # ---- The report --------------------------------------------------------------------------------------

    def report(self):
        names = sorted({name for name, _ in self.counts})
        whats = sorted({what for _, what in self.counts})
        print("\n" + " " * 14 + "".join(f"{what:>14}" for what in whats))
        for name in names:
            print(f"{name:<14}" + "".join(f"{self.counts[name, what] or '':>14}" for what in whats))
        print(f"{sum(self.counts.values())} runs with a fault, {self.wrong} complaints")


def inside(name, directory):
    return directory is not None and (name + "/").startswith(directory + "/")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    parser.add_argument("--short-io", help="the library made of short_io.cpp")
    parser.add_argument("scenarios", nargs="*", default=scenarios.ALL, metavar="SCENARIO")
    options = parser.parse_args()
    if tracing.STRACE is None:
        print("SKIPPED: strace is not installed")
        return 77
    if options.short_io:
        options.short_io = os.path.abspath(options.short_io)
    else:
        print("SKIPPED: short reads and writes (no --short-io)")
    harness = Harness(options)
    try:
        for name in options.scenarios:
            harness.walk(scenarios.Scenario(name, options.program, shutil.which("tar")))
    finally:
        scenarios.remove_scratch()
    harness.report()
    return 1 if harness.wrong or not harness.counts else 0


if __name__ == "__main__":
    sys.exit(main())
