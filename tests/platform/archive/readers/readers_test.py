#!/usr/bin/env python3
"""Lets other programs read what the container writes.

    readers_test.py --carrier archive_carrier [--corpus DIR] [-v] [CLASS...]

Without classes all but Large run. Large needs 14 GiB of disk and some minutes: what is a hole in the file that is
loaded is real bytes in the one that is saved.
"""

import argparse
import csv
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest
import zipfile
import zlib

import other_readers

GIB = 1 << 30
OPTIONS = argparse.Namespace(carrier="", corpus="")


class Readers(unittest.TestCase):
    programs = set(other_readers.PROGRAMS)

    def setUp(self):
        missing = other_readers.missing()
        if missing:
            self.skipTest(f"not installed: {', '.join(missing)}")
        scratch = tempfile.TemporaryDirectory(prefix="tavek-readers-")
        self.addCleanup(scratch.cleanup)
        self.scratch = pathlib.Path(scratch.name)
        self.saved = self.scratch / "saved.zip"

    def carry(self, *words):
        done = subprocess.run([OPTIONS.carrier, *map(str, words)], capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""), words)
        return done.stdout

    def expect_sound(self, members, zip64=False):
        """Every reader finds `members` ({name: (method, size, crc)}, or how many) in what was saved."""
        for program in self.programs:
            self.assertEqual(other_readers.verdict(program, self.saved), 0, program)
        found = other_readers.members(self.saved)
        count = members if isinstance(members, int) else len(members)
        self.assertEqual(len(found), count)
        if not isinstance(members, int):
            self.assertEqual(list(found.items()), list(members.items()))
        if count > 5000:
            return  # half a million lines of a listing say nothing new
        wanted = {"LOCAL HEADER": count, "CENTRAL HEADER": count, "END CENTRAL HEADER": 1}
        if zip64:
            wanted["ZIP64 END CENTRAL DIR"] = 2  # the record and its locator
        self.assertEqual(other_readers.listing(self.saved), {name: n for name, n in wanted.items() if n})


class Corpus(Readers):
    """Each sound archive of the corpus, with a member added, is as readable as it was."""

    ADDED = "added by the test"

    def test_sound_archives_stay_so(self):
        table = pathlib.Path(OPTIONS.corpus) / "expected.tsv"
        if not table.exists():
            self.skipTest(f"there is no corpus at {OPTIONS.corpus}")
        with open(table, encoding="utf-8", newline="") as lines:
            rows = list(csv.DictReader(lines, delimiter="\t"))
        sound = [row for row in rows if row["verdict"] == "must-load" and "member is damaged" not in row["why"]]
        self.assertGreater(len(sound), 40)
        for row in sound:
            with self.subTest(row["file"], why=row["why"]):
                self.expect_carried(table.parent / row["file"])

    def expect_carried(self, original):
        self.carry("load", original, "add", self.ADDED, 1000, "save", self.saved)
        for program in other_readers.PROGRAMS:
            before = other_readers.verdict(program, original)
            after = other_readers.verdict(program, self.saved)
            # An empty archive is a warning to unzip, and a password or a method it lacks an error.
            self.assertIn(after, (0, before), program)
        members = other_readers.members(original)
        members[self.ADDED] = (0, 1000, zlib.crc32(b"x" * 1000))
        self.assertEqual(list(other_readers.members(self.saved).items()), list(members.items()))


class Shapes(Readers):
    """Archives of every shape that a container can have."""

    @staticmethod
    def added(*sizes):
        return {f"many/{i}": (0, size, zlib.crc32(b"x" * size)) for i, size in enumerate(sizes)}

    def test_no_members(self):
        self.carry("save", self.saved)
        with zipfile.ZipFile(self.saved) as archive:
            self.assertEqual(archive.namelist(), [])
        self.assertEqual(other_readers.verdict("7z", self.saved), 0)
        self.assertEqual(other_readers.listing(self.saved), {"END CENTRAL HEADER": 1})

    def test_empty_members(self):
        self.carry("add-many", 100, 0, "save", self.saved)
        self.expect_sound(self.added(*[0] * 100))

    def test_sizes_around_those_of_buffers(self):
        sizes = [1, 65535, 65536, 65537, 262143, 262144, 262145, 5_000_000]
        words = [word for i, size in enumerate(sizes) for word in ("add", f"many/{i}", size)]
        self.carry(*words, "save", self.saved)
        self.expect_sound(self.added(*sizes))

    def test_names(self):
        names = ["data/12345-a", "größe/日本", "a b", "x" * 240, "dir/"]
        self.carry(*[word for name in names for word in ("add", name, 0 if name.endswith("/") else 5)],
                   "save", self.saved)
        self.expect_sound({name: (0, 5 * (not name.endswith("/")), zlib.crc32(b"" if name.endswith("/") else b"xxxxx"))
                           for name in names})

    def test_the_last_count_without_zip64_and_the_first_with(self):
        for count in (65534, 65535, 65536):
            self.carry("add-many", count, 1, "save", self.saved)
            self.expect_sound(count, zip64=count > 65534)

    def test_100_000_members_over_edits(self):
        self.carry("add-many", 100_000, 3, "save", self.saved)
        self.expect_sound(100_000, zip64=True)
        self.carry("load", self.saved, "delete", "many/0", "add", "last", 7, "save", self.saved)
        self.expect_sound(100_000, zip64=True)
        # Down to where ZIP64 is no longer needed.
        deletions = [word for i in range(1, 99_000) for word in ("delete", f"many/{i}")]
        for start in range(0, len(deletions), 20_000):
            self.carry("load", self.saved, *deletions[start:start + 20_000], "save", self.saved)
        left = {f"many/{i}": (0, 3, zlib.crc32(b"xxx")) for i in range(99_000, 100_000)}
        self.expect_sound(left | {"last": (0, 7, zlib.crc32(b"x" * 7))})


class Large(Readers):
    """Sizes and offsets beyond 4 GiB. The archives that are loaded are small: deflated zeros, or holes in the file."""

    def setUp(self):
        super().setUp()
        status = os.statvfs(self.scratch)
        if status.f_bavail * status.f_frsize < 14 * GIB:
            self.skipTest("less than 14 GiB of disk are free")

    def deflated_zeros(self, size):
        """Writes an archive of a member and `size` deflated zeros; answers the fields of the zeros."""
        with zipfile.ZipFile(self.scratch / "loaded.zip", "w", zipfile.ZIP_DEFLATED, compresslevel=1) as archive:
            archive.writestr("front", b"f")
            with archive.open("zeros", "w", force_zip64=True) as member:
                block = bytes(64 << 20)
                for at in range(0, size, len(block)):
                    member.write(block[:size - at])
            zeros = archive.infolist()[1]
        self.assertEqual(zeros.file_size, size)
        return {"zeros": (zeros.compress_type, zeros.file_size, zeros.CRC)}

    def expect_zeros_carried(self, size):
        wanted = self.deflated_zeros(size)
        self.carry("load", self.scratch / "loaded.zip", "delete", "front", "add", "last", 3, "save", self.saved)
        self.expect_sound(wanted | {"last": (0, 3, zlib.crc32(b"xxx"))})

    def test_a_deflated_member_beyond_4_gib(self):
        """4 GiB of zeros are 4 MiB deflated: both sizes and the checksum are checked while it is carried."""
        self.expect_zeros_carried(4 * GIB + 1)

    def test_a_member_of_exactly_the_mark(self):
        # unzip 6.0 takes the true size for the mark once more, at the members behind this one.
        self.programs = {"7z"}
        self.expect_zeros_carried(0xFFFFFFFF)

    def write_with_hole(self, path):
        """Writes stored members "near", "big", with a hole for its zeros, and "far" behind 4 GiB; the directory lists
        "big" first."""
        big = 4 * GIB + 3
        headers = {}
        with open(path, "wb") as file:
            for name, size in ((b"near", 1), (b"big", big), (b"far", 5)):
                offset = file.tell()
                wide = size > 0xFFFFFFFF
                plain = 0xFFFFFFFF if wide else size
                sizes = (size, size) if wide else ()
                common = struct.pack("<HHHIIIIH", 45, 0, 0, 0x210000, zeros_crc(size), plain, plain, len(name))
                local = struct.pack("<HH2Q", 1, 16, *sizes) if wide else b""
                file.write(b"PK\3\4" + common + struct.pack("<H", len(local)) + name + local)
                file.seek(size, os.SEEK_CUR)
                values = sizes + ((offset,) if offset > 0xFFFFFFFF else ())
                extra = struct.pack(f"<HH{len(values)}Q", 1, 8 * len(values), *values) if values else b""
                headers[name] = (b"PK\1\2" + struct.pack("<H", 45) + common
                                 + struct.pack("<HHHHII", len(extra), 0, 0, 0, 0, min(offset, 0xFFFFFFFF)) + name + extra)
            begin = file.tell()
            directory = headers[b"big"] + headers[b"near"] + headers[b"far"]
            file.write(directory)
            file.write(b"PK\6\6" + struct.pack("<QHHIIQQQQ", 44, 45, 45, 0, 0, 3, 3, len(directory), begin))
            file.write(b"PK\6\7" + struct.pack("<IQI", 0, begin + len(directory), 1))
            file.write(b"PK\5\6" + struct.pack("<HHHHIIH", 0, 0, 3, 3, len(directory), 0xFFFFFFFF, 0))
        return {name: (0, size, zeros_crc(size)) for name, size in (("big", big), ("near", 1), ("far", 5))}

    def test_offsets_that_get_across_the_mark_both_ways(self):
        loaded = self.scratch / "loaded.zip"
        wanted = self.write_with_hole(loaded) | {"last": (0, 3, zlib.crc32(b"xxx"))}
        del wanted["big"]
        self.carry("load", loaded, "delete", "big", "add", "last", 3, "save", self.saved)
        self.expect_sound(wanted)
        # Now "near" comes to lie behind "big".
        wanted = self.write_with_hole(loaded) | {"last": (0, 3, zlib.crc32(b"xxx"))}
        self.carry("load", loaded, "add", "last", 3, "save", self.saved)
        self.expect_sound(wanted, zip64=True)

    def test_an_added_member_beyond_4_gib(self):
        with open("/proc/meminfo", encoding="ascii") as lines:
            available = next(int(line.split()[1]) for line in lines if line.startswith("MemAvailable"))
        if available < 10 << 20:
            self.skipTest("less than 10 GiB of memory are free: an added member is held in memory")
        size = 4 * GIB + 7
        self.carry("add", "big", size, "add", "behind", 1, "save", self.saved)
        crc = 0
        for _ in range(64):
            crc = zlib.crc32(b"x" * (64 << 20), crc)
        crc = zlib.crc32(b"x" * 7, crc)
        self.expect_sound({"big": (0, size, crc), "behind": (0, 1, zlib.crc32(b"x"))}, zip64=True)


def zeros_crc(size):
    crc, block = 0, bytes(64 << 20)
    while size > 0:
        crc = zlib.crc32(block[:size], crc)
        size -= len(block)
    return crc


def main():
    parser = argparse.ArgumentParser(description="Lets other programs read what the container writes.")
    parser.add_argument("--carrier", required=True, help="the program that does with containers what it is told")
    parser.add_argument("--corpus", default="", help="archives that other programs made, with expected.tsv")
    parser.add_argument("-v", dest="verbosity", action="store_const", const=2, default=1)
    parser.add_argument("classes", nargs="*", default=["Corpus", "Shapes"])
    options = parser.parse_args(namespace=OPTIONS)
    suite = unittest.defaultTestLoader.loadTestsFromNames(options.classes, sys.modules[__name__])
    outcome = unittest.TextTestRunner(verbosity=options.verbosity).run(suite)
    return 0 if outcome.wasSuccessful() and outcome.testsRun else 1


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    sys.exit(main())
