#!/usr/bin/env python3
"""Times the whole program against general-purpose ones doing the same work, in turn in one run.

Usage: program_bench.py PROGRAM [--work DIR] [--rounds N] [--only NAME,...] [--results FILE]

Every scenario makes its input once, checks the program's output, then runs the program and its rivals in turn, N times
(5 unless told), and prints medians with the ratio of the program to each rival. Machines differ from minute to minute:
only the ratios of one run mean anything. The raw numbers go to FILE as JSON.
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
    begin = time.perf_counter()
    process = subprocess.Popen(command, cwd=directory, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - begin
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"failed with {process.returncode}: {' '.join(map(str, command))}")
    return seconds, usage.ru_maxrss / 1024


def shell(text):
    return ["sh", "-c", text]


class Bench:
    def __init__(self, arguments):
        self.program = str(pathlib.Path(arguments.program).resolve())
        self.work = pathlib.Path(arguments.work).resolve()
        self.rounds = arguments.rounds
        self.results = {}

    def directory(self, name):
        directory = self.work / name
        shutil.rmtree(directory, ignore_errors=True)
        directory.mkdir(parents=True)
        return directory

    def compare(self, name, directory, commands, outputs=()):
        """Runs `commands` (name -> command, ours first) in turn; outputs are removed before each run."""
        figures = {key: [] for key in commands}
        for round_number in range(self.rounds + 1):
            for key, command in commands.items():
                for output in outputs:
                    (directory / output).unlink(missing_ok=True)
                figure = run(command, directory)
                if round_number > 0:  # the first round warms the caches
                    figures[key].append(figure)
        self.results[name] = {key: {"seconds": [f[0] for f in runs], "MiB": [f[1] for f in runs]}
                              for key, runs in figures.items()}
        self.report(name)

    def report(self, name):
        print(f"\n{name}")
        own = next(iter(self.results[name].values()))
        for key, runs in self.results[name].items():
            ratios = [a / b for a, b in zip(own["seconds"], runs["seconds"])]
            print(f"  {key:<22} {statistics.median(runs['seconds']):8.3f} s  {max(runs['MiB']):7.1f} MiB"
                  + ("" if runs is own else f"   TaVekUtil takes {statistics.median(ratios):.2f} times as long"))

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

def prepare(bench, name, members, entries, files, method=zipfile.ZIP_STORED):
    directory = bench.directory(name)
    make_archive(directory / "in.zip", members, entries, method)
    make_package(directory / "package", files)
    command = bench.batch(directory, directory / "in.zip", directory / "package")
    run(command, directory)
    return directory, command


def stored(bench):
    directory, command = prepare(bench, "stored", random_members(64, 16 * MIB, 1), 200, 1)
    bench.compare("1 GiB, 64 stored members: add one package", directory, {
        "TaVekUtil": command,
        "cp + sync": shell("cp in.zip rival.zip && sync rival.zip"),
        **rivals(directory, added_members(directory / "out-in.zip")),
    }, ["out-in.zip", "rival.zip"])


def deflated(bench):
    directory, command = prepare(bench, "deflated", text_members(64, 16 * MIB, 2), 200, 1, zipfile.ZIP_DEFLATED)
    bench.compare("1 GiB deflated: add one package", directory, {
        "TaVekUtil": command,
        "unzip -tq + cp": shell("unzip -tq in.zip && cp in.zip rival.zip && sync rival.zip"),
    }, ["out-in.zip", "rival.zip"])


def small_members(bench):
    for count in (1_000, 10_000, 100_000):
        directory, command = prepare(bench, "members", random_members(count, 200, 3), 200, 1)
        bench.compare(f"{count} small members: add one package", directory, {
            "TaVekUtil": command,
            "zip": rivals(directory, added_members(directory / "out-in.zip"))["zip"],
        }, ["out-in.zip", "rival.zip"])


def package_files(bench):
    for files in (10, 100, 1_000, 10_000):
        directory, command = prepare(bench, "files", random_members(10, 200, 4), 10_000, files)
        bench.compare(f"package of {files} files into a script of 10,000 entries", directory,
                      {"TaVekUtil": command}, ["out-in.zip"])


def start_up(bench):
    """Many starts in one figure, for one alone is lost in the noise."""
    loop = "i=0; while [ $i -lt 200 ]; do {} >/dev/null; i=$((i+1)); done"
    directory = bench.directory("start")
    bench.compare("200 starts", directory, {
        "TaVekUtil": shell(loop.format(f"'{bench.program}' --help")),
        "true": shell(loop.format("/bin/true")),
    })


SCENARIOS = {"stored": stored, "deflated": deflated, "members": small_members, "files": package_files,
             "start": start_up}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("--work", default="build/bench-data")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", default=",".join(SCENARIOS))
    parser.add_argument("--results")
    arguments = parser.parse_args()
    bench = Bench(arguments)
    print(f"size of the program: {os.path.getsize(bench.program) / MIB:.2f} MiB")
    for name in arguments.only.split(","):
        SCENARIOS[name](bench)
        shutil.rmtree(bench.work, ignore_errors=True)
    if arguments.results:
        pathlib.Path(arguments.results).write_text(json.dumps(bench.results, indent=1) + "\n")


if __name__ == "__main__":
    main()
