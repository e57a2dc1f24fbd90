#!/usr/bin/env python3
"""Runs one batch over many archives and packages, and watches the memory and the open files of the process meanwhile.

    load.py --program build/release/bin/TaVekUtil [--archives 200] [--packages 20] [--files 5] [--size 256]
            [--samples FILE]

Memory and files held while the last fifth of the archives is saved must be what they were early in the run. FILE gets
what was seen, as JSON, for bench/load_chart.py.
"""

import argparse
import json
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import threading
import time
from dataclasses import asdict, dataclass

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "e2e"))

from harness import documents, zip_builder

PAGE = os.sysconf("SC_PAGE_SIZE")
# What an allocator may keep or give back without anything growing.
SLACK_KIB = 1024


@dataclass
class Sample:
    seconds: float  # since the start
    saved: int  # archives done so far
    resident: int  # KiB
    files: int


def options_of(arguments):
    parser = argparse.ArgumentParser(description="Watches a long batch.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--archives", type=int, default=200)
    parser.add_argument("--packages", type=int, default=20)
    parser.add_argument("--files", type=int, default=5, help="files of each package")
    parser.add_argument("--size", type=int, default=256, help="KiB of each archive, half of it deflated")
    parser.add_argument("--samples", help="where to keep what was seen")
    return parser.parse_args(arguments)


def lay_out(root, options):
    """Writes archives, packages and the configuration; answers its path."""
    dice = random.Random(1)
    half = b"".join(dice.randbytes(512) for _ in range(options.size))
    blob = zip_builder.build(
        [
            zip_builder.Member("host/app", half, zip_builder.DEFLATED),
            zip_builder.Member("script.xml", documents.host_script("linux_arm64"), zip_builder.DEFLATED),
            zip_builder.Member("host/data", half),
        ]
    )
    stock = [os.path.join(root, f"sensor{number}.pkg") for number in range(options.archives)]
    for path in stock:
        pathlib.Path(path).write_bytes(blob)
    packages = [os.path.join(root, f"package{number}") for number in range(options.packages)]
    for number, package in enumerate(packages):
        lay_out_package(package, number, options.files, dice)
    configuration = os.path.join(root, "cfg.xml")
    pathlib.Path(configuration).write_text(documents.configuration("New", stock, packages))
    return configuration


def lay_out_package(package, number, files, dice):
    os.mkdir(package)
    names = [f"lib{number}-{file}.so" for file in range(files)]
    for name in names:
        pathlib.Path(package, name).write_bytes(dice.randbytes(4096))
    entries = [documents.entry("VekApp", name, "/user/" + name) for name in names]
    manifest = documents.package_manifest(f"Package {number:03}", documents.platform("linux_arm64", *entries))
    pathlib.Path(package, "vek_manifest.xml").write_text(manifest)


def sampled(process, seconds, progress):
    """One look at the process; None when it is gone."""
    try:
        pages = int(pathlib.Path(f"/proc/{process.pid}/statm").read_text().split()[1])
        return Sample(seconds, progress[0], pages * PAGE // 1024, len(os.listdir(f"/proc/{process.pid}/fd")))
    except (OSError, IndexError):
        return None


def watched(program, configuration):
    """The exit status and the samples of a run."""
    begin = time.monotonic()
    process = subprocess.Popen([program, "--config", configuration], stdout=subprocess.PIPE, text=True)
    progress = [0]

    def follow():
        for line in process.stdout:
            progress[0] += "Saving new package as" in line

    reader = threading.Thread(target=follow)
    reader.start()
    samples = []
    while process.poll() is None:
        sample = sampled(process, time.monotonic() - begin, progress)
        if sample and sample.resident:
            samples.append(sample)
        time.sleep(0.002)
    reader.join()
    return process.returncode, progress[0], samples


def judged(options, samples):
    """Prints what was seen; answers whether it stayed flat."""
    print(f"{len(samples)} samples in {samples[-1].seconds:.1f} s, most memory {max(s.resident for s in samples)} KiB")
    early = [s for s in samples if 0.05 <= s.saved / options.archives < 0.25]
    late = [s for s in samples if s.saved / options.archives >= 0.8]
    if not early or not late:
        print("too few samples to judge")
        return False
    flat = True
    for name, unit, slack in (("resident", "KiB", SLACK_KIB), ("files", "open", 0)):
        first, last = (max(getattr(sample, name) for sample in part) for part in (early, late))
        print(f"{name}: at most {first} {unit} early in the run, {last} late")
        flat = flat and last <= first + slack
    return flat


def memory_directory(size):
    """Where files of `size` bytes in all lie in memory, None when there is no such place."""
    try:
        system = os.statvfs("/dev/shm")
    except OSError:
        return None
    is_roomy = system.f_bavail * system.f_frsize > size
    return "/dev/shm" if is_roomy and os.access("/dev/shm", os.W_OK) else None


def main(arguments):
    options = options_of(arguments)
    root = tempfile.mkdtemp(
        prefix="tavek-load-", dir=memory_directory(3 * options.archives * options.size * 1024)
    )
    try:
        status, saved, samples = watched(os.path.abspath(options.program), lay_out(root, options))
        print(f"{saved} of {options.archives} archives saved, exit status {status}")
        if options.samples:
            pathlib.Path(options.samples).write_text(json.dumps([asdict(sample) for sample in samples]))
        return 0 if status == 0 and saved == options.archives and judged(options, samples) else 1
    finally:
        shutil.rmtree(root, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
