#!/usr/bin/env python3
"""Times the whole program against general-purpose ones doing the same work, in turn in one run.

Usage: program_bench.py PROGRAM [--work DIR] [--rounds N] [--only NAME,...] [--results FILE]

Every scenario makes its input once, then runs the program and its rivals in turn, N times (8 unless told) after one
round that warms the caches and in which the outputs are compared, and prints medians with the ratio of the program to
each rival, beside what the ratio is meant to be at most. Their order differs from round to round, for what ran before
leaves memory and disk in one state or another. All write to disk: what they wrote is flushed within the time
measured, and nothing else waits to be written when a run begins. Machines differ from minute to minute: only the ratios
of one run mean anything. The raw numbers go to FILE as JSON; those of scenarios that were not run now stay there.
"""

import argparse
import json
import os
import pathlib
import random
import shutil
import statistics
import subprocess
import sys
import time
import zipfile

MIB = 1 << 20
VERSION = "6.1.2.57"


# ---- Inputs ------------------------------------------------------------------------------------------------

def script(entries):
    files = "".join(
        f'  <File name="/user/stock{i}.bin" source="data/stock{i}.bin">\n    <Or>\n'
        '      <Eq property="Controller" value="R6"/>\n    </Or>\n  </File>\n'
        for i in range(entries))
    return f'<?xml version="1.0" encoding="UTF-8"?>\n<Script>\n  <Version value="{VERSION}"/>\n{files}</Script>\n'


def make_archive(path, members, entries, method=zipfile.ZIP_STORED):
    """Writes an archive of `members` ((name, bytes) pairs) and a script of `entries` entries."""
    with zipfile.ZipFile(path, "w", method, compresslevel=1) as archive:
        archive.writestr("script.xml", script(entries))
        for name, content in members:
            archive.writestr(zipfile.ZipInfo(name), content, method)


def random_members(count, size, seed):
    source = random.Random(seed)
    for i in range(count):
        yield f"data/stock{i}.bin", source.randbytes(size)


def text_members(count, size, seed):
    """Members that deflate to about a third, as programs and texts do."""
    source = random.Random(seed)
    words = [source.randbytes(source.randint(3, 9)) for _ in range(4096)]
    for i in range(count):
        piece = b"".join(source.choices(words, k=200_000))
        yield f"data/stock{i}.bin", (piece * (size // len(piece) + 1))[:size]


def make_package(directory, files, size=1000):
    """Writes an unpacked add-on package of `files` files."""
    directory.mkdir(parents=True)
    source = random.Random(files)
    entries = []
    for i in range(files):
        (directory / f"lib{i}.so").write_bytes(source.randbytes(size))
        entries.append(f'<File type="VekApp"><Source>lib{i}.so</Source><Destination>/user/lib{i}.so</Destination></File>')
    (directory / "vek_manifest.xml").write_text(
        f'<VekAppPackage><BeVersion>*</BeVersion><VekApp name="bench"><Platform name="linux_arm64">{"".join(entries)}'
        "</Platform></VekApp></VekAppPackage>")


def make_config(path, archive, package):
    path.write_text(
        f"<Config><OutputPrefix>out</OutputPrefix><StockPackages><P>{archive}</P></StockPackages>"
        f"<VekPkgsToLoad><P>{package}</P></VekPkgsToLoad></Config>")


# ---- Measuring ---------------------------------------------------------------------------------------------

def run(command, directory):
    """Runs a command; answers its wall-clock seconds and peak resident memory in MiB."""
    # A child of this interpreter would begin with the interpreter's memory on its account; time's does not.
    peak = directory / "peak"
    begin = time.perf_counter()
    result = subprocess.run(["/usr/bin/time", "-q", "-f", "%M", "-o", peak, *command], cwd=directory,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    seconds = time.perf_counter() - begin
    if result.returncode != 0:
        sys.exit(f"failed with {result.returncode}: {' '.join(map(str, command))}")
    return seconds, int(peak.read_text()) / 1024


def members_of(directory, outputs):
    """Names, sizes and checksums of the one archive among `outputs` that is there; None without one."""
    for output in outputs:
        if (directory / output).exists():
            with zipfile.ZipFile(directory / output) as archive:
                return sorted((m.filename, m.file_size, m.CRC) for m in archive.infolist())
    return None


def verdict(value, target):
    if target is None:
        return "for comparison"
    return f"at most {target:g} wanted: " + ("met" if value <= target else "MISSED")


def machine():
    """A line that describes this machine."""
    lines = pathlib.Path("/proc/cpuinfo").read_text().splitlines()
    model = next((line.split(": ")[1] for line in lines if line.startswith("model name")), os.uname().machine)
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / MIB / 1024
    load = ", ".join(f"{value:.1f}" for value in os.getloadavg())
    return f"{os.cpu_count()} x {model}, {memory:.0f} GiB, Linux {os.uname().release}, load {load}"


def shell(text):
    return ["sh", "-c", text]


class Bench:
    def __init__(self, arguments):
        self.program = str(pathlib.Path(arguments.program).resolve())
        self.inspector = str(pathlib.Path(self.program).with_name("TaVekInspect"))
        self.work = pathlib.Path(arguments.work).resolve()
        self.made = set()
        self.rounds = arguments.rounds
        self.file = arguments.results and pathlib.Path(arguments.results)
        self.results = json.loads(self.file.read_text()) if self.file and self.file.exists() else {}

    def directory(self, name):
        """A new directory in the work directory, in which nothing of that name may be but a benchmark's."""
        directory = self.work / ("tavek-bench-" + name)
        shutil.rmtree(directory, ignore_errors=True)
        directory.mkdir(parents=True)
        self.made.add(directory)
        return directory

    def tidy_up(self):
        """Removes what was made, and nothing else that the work directory may hold."""
        for directory in self.made:
            shutil.rmtree(directory, ignore_errors=True)
        self.made.clear()

    def compare(self, name, directory, commands, targets=None, outputs=(), same=()):
        """Runs `commands` (name -> command) in turn; `outputs` are removed before each run.

        `targets` says how many times a rival's time the program, the first command, may take, None for a rival that
        sets no mark; "MiB", how much memory.
        After the first run of the program and of each rival in `same` their outputs hold the same members.
        """
        figures = {key: [] for key in commands}
        contents = {}
        own = next(iter(commands))
        dice = random.Random(len(commands))
        for round_number in range(self.rounds + 1):
            for key, command in dice.sample(list(commands.items()), len(commands)):
                for output in outputs:
                    (directory / output).unlink(missing_ok=True)
                os.sync()
                figure = run(command, directory)
                if round_number > 0:
                    figures[key].append(figure)
                elif key == own or key in same:
                    contents[key] = members_of(directory, outputs)
        for key in same:
            if contents[key] != contents[own]:
                sys.exit(f"{name}: {key} made something else")
        runs = {key: {"seconds": [f[0] for f in runs], "MiB": [f[1] for f in runs]} for key, runs in figures.items()}
        self.results[name] = {"runs": runs, "targets": targets or {}}
        self.report(name)
        if self.file:
            self.file.parent.mkdir(parents=True, exist_ok=True)
            self.file.write_text(json.dumps(self.results, indent=1) + "\n")

    def report(self, name):
        print(f"\n{name}")
        runs, targets = self.results[name]["runs"], self.results[name]["targets"]
        own_name, own = next(iter(runs.items()))
        for key, figures in runs.items():
            line = f"  {key:<22} {statistics.median(figures['seconds']):8.3f} s  {max(figures['MiB']):7.1f} MiB"
            if key in targets:
                ratio = statistics.median(a / b for a, b in zip(own["seconds"], figures["seconds"]))
                line += f"   {own_name} takes {ratio:.2f} times as long, {verdict(ratio, targets[key])}"
            elif figures is own and "MiB" in targets:
                line += "   memory: " + verdict(max(figures["MiB"]), targets["MiB"])
            print(line, flush=True)

    def batch(self, directory, archive, package):
        make_config(directory / "config.xml", archive, package)
        return [self.program, "--config", str(directory / "config.xml")]


def rivals(directory, members):
    """The same edit by zip and 7z: the files of the program's own output, put into a copy of the archive."""
    with zipfile.ZipFile(directory / "out-in.zip") as output:
        for name in members:
            output.extract(name, directory / "edit")
    (directory / "names").write_text("\n".join(members) + "\n")
    return {
        "zip": shell("cd edit && zip -q -0 ../in.zip --out ../rival.zip -@ < ../names && sync ../rival.zip"),
        "7z u": shell("cd edit && 7z u -bd -tzip -mx0 ../in.zip -u- -u'!../rival.zip' @../names && sync ../rival.zip"),
    }


def added_members(archive):
    with zipfile.ZipFile(archive) as output:
        return [n for n in output.namelist() if n.startswith("data/12345-")] + ["script.xml", "vekPackages.xml"]


# ---- Scenarios ---------------------------------------------------------------------------------------------

OUTPUTS = ["out-in.zip", "rival.zip"]


def prepare(bench, name, members, entries, files, method=zipfile.ZIP_STORED):
    """Lays out an archive and a package, and runs the program once, for rivals put its own output's members in."""
    directory = bench.directory(name)
    make_archive(directory / "in.zip", members, entries, method)
    make_package(directory / "package", files)
    command = bench.batch(directory, directory / "in.zip", directory / "package")
    run(command, directory)
    return directory, command


def stored(bench):
    directory, command = prepare(bench, "stored", random_members(64, 16 * MIB, 1), 200, 1)
    edits = rivals(directory, added_members(directory / "out-in.zip"))
    commands = {"TaVekUtil": command, "cp, flush": shell("cp in.zip rival.zip && sync rival.zip"), **edits}
    bench.compare("1 GiB, 64 stored members: add one package", directory, commands,
                  {"cp, flush": 1.2, "zip": 1, "7z u": 1, "MiB": 24}, OUTPUTS, edits)


def deflated(bench):
    directory, command = prepare(bench, "deflated", text_members(64, 16 * MIB, 2), 200, 1, zipfile.ZIP_DEFLATED)
    rival = shell("unzip -tq in.zip && cp in.zip rival.zip && sync rival.zip")
    bench.compare("1 GiB deflated: add one package", directory,
                  {"TaVekUtil": command, "unzip -tq, cp, flush": rival}, {"unzip -tq, cp, flush": 0.5}, OUTPUTS)


def small_members(bench):
    for count in (1_000, 10_000, 100_000):
        directory, command = prepare(bench, "members", random_members(count, 200, 3), 200, 1)
        edit = {"zip": rivals(directory, added_members(directory / "out-in.zip"))["zip"]}
        bench.compare(f"{count} small members: add one package", directory,
                      {"TaVekUtil": command, "cp, flush": shell("cp in.zip rival.zip && sync rival.zip"), **edit},
                      {"cp, flush": None, "zip": 0.25}, OUTPUTS, edit)


def package_files(bench):
    commands = {}
    for files in (10, 100, 1_000, 10_000):
        directory, commands[f"{files} files"] = prepare(
            bench, f"files{files}", random_members(10, 200, 4), 10_000, files)
    bench.compare("a package into a script of 10,000 entries", directory, commands)


def verify(bench):
    """TaVekInspect checks more than the members' checksums: script and manifest, and what they say of each other."""
    for name, make, method in (("stored", random_members, zipfile.ZIP_STORED), ("deflated", text_members, zipfile.ZIP_DEFLATED)):
        directory = bench.directory("verify")
        make_archive(directory / "in.zip", make(64, 16 * MIB, 1), 64, method)
        bench.compare(f"1 GiB {name}: verify", directory, {
            "TaVekInspect verify": [bench.inspector, "verify", "in.zip"],
            "unzip -tq": ["unzip", "-tq", "in.zip"],
        }, {"unzip -tq": 0.67})


def start_up(bench):
    """Many starts in one figure, for one alone is lost in the noise."""
    loop = "i=0; while [ $i -lt 200 ]; do {} >/dev/null; i=$((i+1)); done"
    directory = bench.directory("start")
    bench.compare("200 starts", directory, {
        "TaVekUtil --help": shell(loop.format(f"'{bench.program}' --help")),
        "true": shell(loop.format("/bin/true")),
    }, {"true": 1.5})


SCENARIOS = {"stored": stored, "deflated": deflated, "members": small_members, "files": package_files,
             "verify": verify, "start": start_up}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("--work", default="build/bench-data")
    parser.add_argument("--rounds", type=int, default=8)
    parser.add_argument("--only", default=",".join(SCENARIOS))
    parser.add_argument("--results")
    arguments = parser.parse_args()
    bench = Bench(arguments)
    print(machine())
    size = os.path.getsize(bench.program) / MIB
    print(f"size of the program: {size:.2f} MiB, {verdict(size, 2)}")
    for name in arguments.only.split(","):
        SCENARIOS[name](bench)
        bench.tidy_up()


if __name__ == "__main__":
    main()
