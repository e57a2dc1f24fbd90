#!/usr/bin/env python3
"""Unpacks archives made by GNU tar, bsdtar and Python with GNU tar and with ours, and compares the two trees: names,
kinds, content, modes, times, links. Then hands ours hostile and damaged archives, which it must refuse.

    compare_with_gnu_tar.py TAR [--emulator COMMAND]

With an emulator (Wine) links and modes are left out: Wine makes no symbolic links, and Windows has no modes.
"""

import argparse
import gzip
import io
import os
import pathlib
import shutil
import stat
import subprocess
import sys
import tarfile
import tempfile

LONG = "/".join(f"directory-{n:02}-of-a-long-name" for n in range(12)) + "/" + "n" * 120
HOST_TIME = 1_500_000_000


def lay_out(root, with_links, short):
    """A tree of everything that archives hold; `short` leaves out what the oldest formats cannot."""
    files = {
        "plain.txt": b"content\n",
        "empty": b"",
        "with space 'and' $quotes;": b"x",
        "exactly one block": b"b" * 512,
        "big": bytes(range(256)) * 20_000,
        "d/e/deep": b"deep",
        "-dash": b"-",
    }
    if not short:
        files[LONG] = b"long"
        files["größe/日本 😀.txt"] = "größe".encode()
    for name, content in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        path.chmod(0o640 if len(content) % 2 else 0o755)
        os.utime(path, ns=(0, HOST_TIME * 10**9 + len(content) * 10**5 * 100))
    os.link(root / "plain.txt", root / "d/hard")
    if with_links:
        os.symlink("e/deep", root / "d/link")
        os.symlink("../plain.txt", root / "d/up")
        os.symlink("nowhere", root / "dangling")
        if not short:
            os.symlink(LONG, root / "long-link")
    (root / "odd").mkdir(mode=0o500)
    (root / "hollow").mkdir()
    (root / "d").chmod(0o711)
    for directory in [*sorted(root.rglob("*"), reverse=True), root]:
        if directory.is_dir() and not directory.is_symlink():
            os.utime(directory, (0, HOST_TIME + len(directory.name)))


def python_archive(kind):
    def make(tree, archive):
        with tarfile.open(archive, "w", format=kind) as tar:
            tar.add(tree, ".")

    return make


def command_archive(*command):
    def make(tree, archive):
        subprocess.run([*command, "-cf", archive, "-C", tree, "."], check=True)

    return make


def makers():
    """(name, whether it knows short names alone, function) of each program and format."""
    for name in ("v7", "ustar", "gnu", "oldgnu", "posix"):
        yield f"gnu-{name}", name in ("v7", "ustar"), command_archive("tar", "--format=" + name)
    if shutil.which("bsdtar"):
        for name in ("v7", "ustar", "gnutar", "pax"):
            yield f"bsd-{name}", name in ("v7", "ustar"), command_archive("bsdtar", "--format=" + name)
    yield "python-ustar", True, python_archive(tarfile.USTAR_FORMAT)
    yield "python-gnu", False, python_archive(tarfile.GNU_FORMAT)
    yield "python-pax", False, python_archive(tarfile.PAX_FORMAT)


def compressed(archive):
    content = archive.read_bytes()
    half = len(content) // 2
    yield "plain", content
    yield "gzip", gzip.compress(content, 6)
    yield "two gzip members", gzip.compress(content[:half], 9) + gzip.compress(content[half:], 0)


def snapshot(root, on_windows):
    """Everything below `root`, times in the 100 ns in which Windows counts."""
    states = {}
    names = {}
    for path in sorted([root, *root.rglob("*")]):
        status = path.lstat()
        name = path.relative_to(root).as_posix()
        content = path.read_bytes() if stat.S_ISREG(status.st_mode) else b""
        link = os.readlink(path) if path.is_symlink() else ""
        first = names.setdefault(status.st_ino, name) if content else ""
        mode = 0 if on_windows else stat.S_IMODE(status.st_mode)
        time = status.st_mtime_ns // 100
        states[name] = (stat.S_IFMT(status.st_mode), mode, time, link, first, content)
    return states


class Comparison:
    def __init__(self, options, work):
        self.command = [*options.emulator.split(), os.path.abspath(options.tar)]
        self.on_windows = bool(options.emulator)
        self.work = work
        self.faults = []
        self.count = 0

    def ours(self, archive, directory):
        command = [*self.command, "--force-local", "-C", str(directory), "-xvf", str(archive)]
        return subprocess.run(command, capture_output=True, check=False)

    def fault(self, text):
        self.faults.append(text)
        print("FAILED " + text)

    def compare(self, name, content, packed):
        """Both must unpack alike. The times of directories must be those of the `packed` tree: GNU tar loses some
        when an archive comes back to a directory that it had left."""
        self.count += 1
        archive = self.work / "archive.tar"
        archive.write_bytes(content)
        trees = [self.work / "gnu", self.work / "ours"]
        for tree in trees:
            tree.mkdir()
        subprocess.run(
            ["tar", "--no-same-owner", "--no-same-permissions", "-xf", archive, "-C", trees[0]], check=True
        )
        done = self.ours(archive, trees[1])
        if done.returncode != 0:
            self.fault(f"{name}: status {done.returncode}: {done.stderr.decode(errors='replace')}")
        else:
            expected, found, original = (snapshot(tree, self.on_windows) for tree in [*trees, packed])
            for key, state in expected.items():
                if stat.S_ISDIR(state[0]):
                    expected[key] = (*state[:2], original[key][2], *state[3:])
            for key in sorted(expected.keys() | found.keys()):
                if expected.get(key) != found.get(key):
                    self.fault(
                        f"{name}: {key}: {str(expected.get(key))[:200]} expected, not {str(found.get(key))[:200]}"
                    )
        for tree in trees:
            subprocess.run(["chmod", "-R", "u+rwX", tree], check=True)
            shutil.rmtree(tree)

    def refuse(self, name, content):
        """The archive must be refused with status 2 and a line, and nothing appear beside the directory."""
        self.count += 1
        outer = self.work / "outer"
        (outer / "in").mkdir(parents=True)
        (outer / "canary").write_bytes(b"alive")
        archive = self.work / "archive.tar"
        archive.write_bytes(content)
        done = self.ours(archive, outer / "in")
        if done.returncode != 2 or not done.stderr.startswith(b"tar: "):
            self.fault(f"{name}: status {done.returncode}, {done.stderr!r}")
        if sorted(os.listdir(outer)) != ["canary", "in"] or (outer / "canary").read_bytes() != b"alive":
            self.fault(f"{name}: something was written outside")
        if [path for path in (outer / "in").rglob(".tavek*")]:
            self.fault(f"{name}: an unfinished file was left behind")
        shutil.rmtree(outer)


def member(name, kind=tarfile.REGTYPE, link="", content=b"x"):
    info = tarfile.TarInfo(name)
    info.type = kind
    info.linkname = link
    info.size = len(content) if kind == tarfile.REGTYPE else 0
    return info, content


def archive_of(*members, kind=tarfile.GNU_FORMAT):
    blob = io.BytesIO()
    with tarfile.open(fileobj=blob, mode="w", format=kind) as tar:
        for info, content in members:
            tar.addfile(info, io.BytesIO(content))
    return blob.getvalue()


def hostile(on_windows):
    names = [
        "../a",
        "d/../../a",
        "/tmp/tavek-escaped",
        "..",
        "d/..",
        "..\\a",
        "\\a",
        "\\\\server\\share\\a",
        "../" * 40 + "a",
    ]
    if on_windows:
        names += ["C:/a", "C:a", "c:\\a", "NUL", "d/con.txt", "a:stream", "COM1", "a.", "d /x", "a?b"]
    for name in names:
        for kind in (tarfile.GNU_FORMAT, tarfile.PAX_FORMAT):
            yield f"member {name}", archive_of(member(name), kind=kind)
    yield "directory outside", archive_of(member("../d", tarfile.DIRTYPE))
    for link in ("..", "../canary", "/etc/passwd", "d/../../canary", "\\\\server\\share"):
        yield f"symbolic link to {link}", archive_of(member("l", tarfile.SYMTYPE, link))
        yield f"hard link to {link}", archive_of(member("l", tarfile.LNKTYPE, link))
    yield "a member through a link", archive_of(member("l", tarfile.SYMTYPE, "d"), member("l/a"))
    chained = [
        member("p/q/r", tarfile.SYMTYPE, "../.."),
        member("t", tarfile.SYMTYPE, "p/q/r/.."),
        member("t/a"),
    ]
    yield "links that climb together", archive_of(*chained)
    for kind in (tarfile.CHRTYPE, tarfile.BLKTYPE, tarfile.FIFOTYPE, tarfile.GNUTYPE_SPARSE):
        yield f"kind {kind}", archive_of(member("a", kind))


def damaged():
    good = archive_of(member("a", content=b"1234" * 500), member("b"))
    zipped = gzip.compress(good)
    yield "empty", b""
    yield "no archive", b"no archive at all, " * 100
    for size in (1, 511, 512, 1000, 2560, 3000, 3584):
        yield f"cut at {size}", good[:size]
    for place in (0, 120, 149, 2560):
        yield f"damaged at {place}", good[:place] + b"\xa5" + good[place + 1 :]
    for size in (3, 10, len(zipped) // 2, len(zipped) - 4):
        yield f"gzip cut at {size}", zipped[:size]
    for place in (2, 12, len(zipped) - 8, len(zipped) - 1):
        yield f"gzip damaged at {place}", zipped[:place] + bytes([zipped[place] ^ 0xFF]) + zipped[place + 1 :]
    yield "something behind gzip", zipped + b"x"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("tar")
    parser.add_argument("--emulator", default="")
    options = parser.parse_args()
    os.umask(0o022)
    with tempfile.TemporaryDirectory(prefix="tavek-tar-") as directory:
        work = pathlib.Path(directory)
        comparison = Comparison(options, work)
        for short in (False, True):
            tree = work / ("short" if short else "full")
            tree.mkdir()
            lay_out(tree, not comparison.on_windows, short)
            for name, only_short, make in makers():
                if only_short != short:
                    continue
                packed = work / "packed.tar"
                make(tree, packed)
                for form, content in compressed(packed):
                    comparison.compare(f"{name}, {form}", content, tree)
        for name, content in [*hostile(comparison.on_windows), *damaged()]:
            comparison.refuse(name, content)
    print(f"{comparison.count} archives, {len(comparison.faults)} faults")
    return 1 if comparison.faults else 0


if __name__ == "__main__":
    sys.exit(main())
