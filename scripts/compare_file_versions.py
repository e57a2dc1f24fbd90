#!/usr/bin/env python3
"""Compares how real Windows executables' file versions are read: by our own reader here, by our own reader and by
the system's functions under Wine, and by icoutils' wrestool, an independent reader.

Usage: scripts/compare_file_versions.py [DIRECTORY]     (build/executables, see fetch_executables.sh)
Needs the presets release and windows built. Exit status 1 when a file is read differently, or when fewer than ten
programs of each size have a version."""

import os
import pathlib
import struct
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WINE = "/usr/lib/wine/wine64"
CHUNK = 200


def executables(directory):
    found = []
    for folder, _, names in os.walk(directory, followlinks=True):
        found += [os.path.join(folder, name) for name in names if name.lower().endswith((".exe", ".dll"))]
    return sorted(found)


def probe(command, paths, environment=None):
    """The answers of the probe: (system, own) for each path."""
    answers = []
    for start in range(0, len(paths), CHUNK):
        chunk = paths[start:start + CHUNK]
        output = subprocess.run(command + chunk, env=environment, capture_output=True, check=True).stdout.decode()
        lines = output.replace("\r\n", "\n").splitlines()
        if len(lines) != len(chunk):
            sys.exit(f"{command[-1]}: {len(lines)} answers for {len(chunk)} files")
        answers += [tuple(line.split("\t")[:2]) for line in lines]
    return answers


def by_wrestool(path):
    """The version of the resource that wrestool takes out, name 1 as the system's functions do."""
    resource = subprocess.run(["wrestool", "-x", "--raw", "--type=16", "--name=1", path],
                              capture_output=True, check=False).stdout
    at = resource.find(struct.pack("<I", 0xFEEF04BD))
    if at < 0:
        return "none"
    most, least = struct.unpack_from("<II", resource, at + 8)
    return f"{most >> 16}.{most & 0xFFFF}.{least >> 16}.{least & 0xFFFF}"


def bits(path):
    with open(path, "rb") as file:
        start = file.read(4096)
    header = struct.unpack_from("<I", start, 60)[0] if len(start) >= 64 else 0
    if start[:2] != b"MZ" or header + 26 > len(start):
        return 0
    return {0x10B: 32, 0x20B: 64}.get(struct.unpack_from("<H", start, header + 24)[0], 0)


def main():
    directory = sys.argv[1] if len(sys.argv) > 1 else str(ROOT / "build/executables")
    paths = executables(directory)
    environment = dict(os.environ, WINEDEBUG="-all", WINEPREFIX=str(ROOT / "build/windows/wine"))
    here = probe([str(ROOT / "build/release/bin/file_version_probe")], paths)
    wine = probe([WINE, str(ROOT / "build/windows/bin/file_version_probe.exe")], paths, environment)

    different = 0
    versions = {32: 0, 64: 0, 0: 0}
    for path, (_, own), (system, own_in_wine) in zip(paths, here, wine):
        independent = by_wrestool(path)
        if len({own, system, own_in_wine, independent}) != 1:
            different += 1
            print(f"DIFFERENT {path}: own {own}, own under Wine {own_in_wine}, system {system}, "
                  f"wrestool {independent}")
        elif own != "none":
            versions[bits(path)] += 1
    print(f"{len(paths)} executables: {versions[32]} versions in 32-bit and {versions[64]} in 64-bit files read "
          f"alike by all, {len(paths) - sum(versions.values()) - different} without a version, {different} different")
    return 1 if different or min(versions[32], versions[64]) < 10 else 0


if __name__ == "__main__":
    sys.exit(main())
