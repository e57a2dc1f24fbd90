#!/usr/bin/env python3
"""Gives the same inputs to the build for this system and to the Windows build under Wine, and compares every file
that the two leave behind, byte for byte: archives, manifests, unpacked packages.

    compare_systems.py PROGRAM WINDOWS_PROGRAM EMULATOR

The inputs are the samples, upgrade archives for each platform, stored and deflated, and an installation directory
whose host executable is the Windows program itself. Exit status 1 when a file differs."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
MODELS = {"sensor-arm7.pkg": "R2", "sensor-arm64.pkg": "R6", "module-ombix.pkg": "TX2"}


def upgrade_archive(path, model):
    entries = "\r\n".join(
        f'  <File name="/app/part{n}" source="host/part{n}">\r\n    <Or>\r\n'
        f'      <Eq property="Controller" value="{model}"/>\r\n    </Or>\r\n  </File>'
        for n in range(50)
    )
    script = f'<?xml version="1.0"?>\r\n<Startup>\r\n  <Version value="6.1.2.57"/>\r\n{entries}\r\n</Startup>\r\n'
    with zipfile.ZipFile(path, "w") as archive:
        for number in range(50):
            method = zipfile.ZIP_DEFLATED if number % 2 else zipfile.ZIP_STORED
            member = zipfile.ZipInfo(f"host/part{number}", (2024, 1, 2, 3, 4, 6))
            archive.writestr(member, bytes([number]) * 5000, method)
        archive.writestr(zipfile.ZipInfo("script.xml", (2024, 1, 2, 3, 4, 6)), script, zipfile.ZIP_DEFLATED)


def lay_out(root, program, windows_program, tar):
    home = root / "host/bin/win64"
    for directory in (home, root / "archives", root / "packages"):
        directory.mkdir(parents=True)
    shutil.copy(windows_program, home / "TaQor.exe")
    shutil.copy(program, home)
    shutil.copy(tar, home / "tar.exe")
    shutil.copy(ROOT / "samples/sample_config.xml", home)
    for name, model in MODELS.items():
        upgrade_archive(root / "archives" / name, model)
    for package in ("lane-counter", "dust-filter"):
        command = ["tar", "-C", ROOT / "samples" / package, "-cf", root / f"packages/{package}.tar", "."]
        subprocess.run(command, check=True)
    (root / "edge.so").write_bytes(b"a library")


def run(root, name, emulator):
    program = root / "host/bin/win64" / name
    for arguments in (
        ["--config", "sample_config.xml", "--platform", "all"],
        ["--file", "edge.so", "--archive", "archives/sensor-arm64.pkg"],
        ["--manifest", "manifest.xml", "--archive", "archives/Custom-sensor-arm7.pkg"],
        ["--manifest", "win.xml", "--archive", "host"],
    ):
        done = subprocess.run([*emulator, program, *arguments], cwd=root, capture_output=True, check=False)
        if done.returncode != 0:
            sys.exit(f"{program} {' '.join(arguments)}: {done.stdout.decode()}{done.stderr.decode()}")


def contents(root, programs):
    files = (path for path in root.rglob("*") if path.is_file() and path.name not in programs)
    return {path.relative_to(root).as_posix(): path.read_bytes() for path in files}


def main():
    program, windows_program, emulator = (pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3].split())
    with tempfile.TemporaryDirectory(prefix="tavek-systems-") as directory:
        here, windows = pathlib.Path(directory, "here"), pathlib.Path(directory, "windows")
        lay_out(here, program, windows_program, shutil.which("tar"))
        lay_out(windows, windows_program, windows_program, windows_program.parent / "tar.exe")
        before = contents(here, ())
        run(here, program.name, [])
        run(windows, windows_program.name, emulator)
        programs = (program.name, windows_program.name, "tar.exe")
        one, other = contents(here, programs), contents(windows, programs)
    written = [name for name in one if before.get(name) != one[name]]
    different = [name for name in sorted(one.keys() | other.keys()) if one.get(name) != other.get(name)]
    for name in different:
        print(f"{name} differs")
    print(f"{len(written)} files written, {len(one)} compared, {len(different)} different")
    return 1 if different or len(written) < 8 else 0


if __name__ == "__main__":
    sys.exit(main())
