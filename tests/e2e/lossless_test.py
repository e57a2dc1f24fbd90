"""What an edit does not touch is carried on byte for byte, whoever made the archive."""

import io
import os
import random
import shutil
import subprocess
import unittest
import zipfile

from harness import zip_builder
from harness.documents import ARM7_MODELS, file, host_script
from harness.scenario import Scenario
from harness.zip_builder import BZIP2, DEFLATED, HAS_DESCRIPTOR, IS_ENCRYPTED, IS_UTF8, Member
from harness.zip_walker import Contents

ADDED = "data/12345-vekappplugin.zext"


class Lossless(Scenario):
    """plugin.zext is put into archives; all other members must come out as they went in."""

    def setUp(self):
        super().setUp()
        self.write("plugin.zext", "library")
        self.write("files/script.xml", host_script())

    def expect_carried(self, blob, clean=None):
        """`clean` is the same archive without slack, where `blob` has some."""
        self.write("sensor.pkg", blob)
        after = Contents(clean or blob)
        after.put("script.xml", host_script("linux_arm7", file("vekappplugin.zext", ADDED, *ARM7_MODELS)))
        after.put(ADDED, "library")
        self.check("--file", "plugin.zext", "--archive", "sensor.pkg", files={"sensor.pkg": after})


class Fields(Lossless):
    script = Member("script.xml", host_script())

    def expect_member_carried(self, **fields):
        data = fields.pop("data", b"some data, some data, some data")
        for name in ("host/x", "zz"):
            self.expect_carried(
                zip_builder.build([Member(name, data, **fields), self.script, Member("last", b"")])
            )

    def test_times_of_any_kind(self):
        for date, time in ((0, 0), (0x21, 0), (0xFFFF, 0xFFFF), (0xFF9F, 0xBF7D), (0x5800, 0x003E)):
            self.expect_member_carried(date=date, time=time)

    def test_attributes_and_versions(self):
        self.expect_member_carried(external=0o104755 << 16 | 0x21, internal=1, made_by=0x0B3F)
        self.expect_member_carried(external=0xFFFFFFFF, internal=0xFFFF, made_by=0xFFFF)
        self.expect_member_carried(external=0, made_by=0)

    def test_comments(self):
        self.expect_member_carried(comment=b"a comment")
        self.expect_member_carried(comment=os.urandom(65535))

    def test_extra_fields(self):
        stamp = b"UT\5\0\3\1\2\3\4"
        self.expect_member_carried(extra=stamp + b"ux\x0b\0\1\4\0\0\0\0\4\0\0\0\0")
        self.expect_member_carried(extra=stamp, local_extra=b"UT\x09\0\7" + bytes(8))
        self.expect_member_carried(extra=b"", local_extra=stamp)
        self.expect_member_carried(extra=b"\xfe\xca\0\0" * 16000)
        self.expect_member_carried(extra=stamp + b"\0\0\0")

    def test_flags(self):
        self.expect_member_carried(method=DEFLATED, flags=6)
        self.expect_member_carried(flags=IS_UTF8)

    def test_data_descriptors(self):
        for method in (0, DEFLATED):
            self.expect_member_carried(method=method, flags=HAS_DESCRIPTOR)
            self.expect_member_carried(method=method, flags=HAS_DESCRIPTOR, descriptor_signature=False)
        self.expect_member_carried(data=b"PK\7\x08" * 8, flags=HAS_DESCRIPTOR, descriptor_signature=False)

    def test_members_that_cannot_be_read(self):
        for method in (1, 6, 9, BZIP2, 14, 95, 98, 99, 0xFFFF):
            self.expect_member_carried(method=method, raw=b"whatever this is", crc=123, size=99)
        self.expect_member_carried(method=DEFLATED, flags=IS_ENCRYPTED, raw=bytes(30), crc=123)

    def test_deflated_in_every_way(self):
        rng = random.Random(1)
        mixed = rng.randbytes(70000) + b"a" * 70000 + host_script().encode() * 50
        for data in (b"", b"a", bytes(100000), mixed):
            for level in (0, 1, 6, 9):
                self.expect_member_carried(data=data, method=DEFLATED, raw=self.packed(data, level))

    @staticmethod
    def packed(data, level):
        import zlib

        packer = zlib.compressobj(level, zlib.DEFLATED, -15)
        half = len(data) // 2
        return (
            packer.compress(data[:half])
            + packer.flush(zlib.Z_FULL_FLUSH)
            + packer.compress(data[half:])
            + packer.flush()
        )

    def test_names(self):
        names = (
            "größe",
            "a b",
            "dir/",
            "dir/x",
            "../up",
            "/root",
            "C:\\x",
            "x" * 5000,
            "$HOME;`id`",
            "\t",
            "data/12345-other",
        )
        self.expect_carried(zip_builder.build([Member(name, name) for name in names] + [self.script]))
        legacy = zip_builder.build([Member("gr??e", b"1"), self.script]).replace(b"gr??e", b"gr\x94\xe1e")
        self.expect_carried(legacy)

    def test_the_archives_comment(self):
        for comment in (b"signed", os.urandom(9), b"x" * 65535):
            self.expect_carried(zip_builder.build([self.script, Member("a", b"1")], comment))

    def test_gaps_between_members_are_not_carried(self):
        members = [Member("a", b"1"), self.script, Member("b", b"2", DEFLATED)]
        self.expect_carried(zip_builder.build(members, gap=b"slack"), zip_builder.build(members))

    def test_members_lying_in_another_order_come_out_in_the_directorys(self):
        one, two = Member("one", b"1"), Member("two", b"22")
        bodies = [zip_builder.local_record(member) for member in (two, one, self.script)]
        offsets = {"two": 0, "one": len(bodies[0]), "script.xml": len(bodies[0] + bodies[1])}
        directory = b"".join(
            zip_builder.central_record(member, offsets[member.name]) for member in (one, two, self.script)
        )
        body = b"".join(bodies)
        self.expect_carried(
            body + directory + zip_builder.end_record(3, len(directory), len(body)),
            zip_builder.build([one, two, self.script]),
        )

    def test_many_members(self):
        members = [Member(f"data/{number:05}", b"%d" % number) for number in range(5000)]
        self.expect_carried(zip_builder.build(members + [self.script]))


class OtherMakers(Lossless):
    """Archives made by the programs people use; theirs must also find the results sound."""

    def setUp(self):
        super().setUp()
        rng = random.Random(2)
        self.write("files/host/app", rng.randbytes(30000) + bytes(30000))
        self.write("files/host/größe.txt", "text\n" * 1000)
        self.write("files/host/empty", "")

    def made_by(self, *command):
        if shutil.which(command[0]) is None:
            self.skipTest(f"{command[0]} is not installed")
        subprocess.run(
            command, cwd=self.path("files"), check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
        )
        blob = self.read("made.zip")
        os.remove(self.path("made.zip"))
        return blob

    def expect_sound(self, blob):
        self.expect_carried(blob)
        with zipfile.ZipFile(self.path("sensor.pkg")) as archive:
            self.assertIsNone(archive.testzip())
        for command in (["unzip", "-tqq"], ["7z", "t", "-bd"]):
            if shutil.which(command[0]):
                done = subprocess.run(command + [self.path("sensor.pkg")], capture_output=True, check=False)
                self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_zip(self):
        for options in ([], ["-0"], ["-9"], ["-X"], ["-D"], ["-n", ".txt"], ["-fd"], ["-fz"]):
            self.expect_sound(self.made_by("zip", "-r", *options, "../made.zip", "."))

    def test_zip_with_comment_and_encryption(self):
        self.expect_carried(
            self.made_by("sh", "-c", "zip -r ../made.zip . && echo the comment | zip -z ../made.zip")
        )
        self.expect_carried(
            self.made_by("sh", "-c", "zip -r ../made.zip host -P secret && zip ../made.zip script.xml")
        )

    def test_zip_as_a_stream(self):
        self.expect_sound(self.made_by("sh", "-c", "zip -r - script.xml host | cat > ../made.zip"))

    def test_7z(self):
        for options in ([], ["-mx0"], ["-mx9"], ["-mtc=on"]):
            self.expect_sound(self.made_by("7z", "a", "-tzip", *options, "../made.zip", "."))

    def test_7z_with_other_methods_beside_the_script(self):
        for method in ("BZip2", "LZMA", "Deflate64", "PPMd"):
            self.expect_carried(
                self.made_by(
                    "sh",
                    "-c",
                    "7z a -tzip ../made.zip script.xml && " f"7z a -tzip -mm={method} ../made.zip host",
                )
            )

    def test_7z_with_encryption(self):
        self.expect_carried(
            self.made_by(
                "sh",
                "-c",
                "7z a -tzip ../made.zip script.xml && " "7z a -tzip -psecret -mem=AES256 ../made.zip host",
            )
        )

    def test_bsdtar(self):
        self.expect_sound(
            self.made_by("bsdtar", "--format", "zip", "-cf", "../made.zip", "script.xml", "host")
        )

    def test_python(self):
        for method in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
            for large in (False, True):
                self.expect_sound(self.written(io.BytesIO(), method, large))

    def test_python_writing_a_stream(self):
        class Stream(io.BytesIO):
            def seekable(self):
                return False

            def tell(self):
                raise OSError

        for large in (False, True):
            self.expect_sound(self.written(Stream(), zipfile.ZIP_DEFLATED, large))

    @staticmethod
    def written(target, method, large):
        with zipfile.ZipFile(target, "w", method) as archive:
            for name, content in (("a", b"1" * 999), ("script.xml", host_script().encode()), ("ö/b", b"")):
                with archive.open(name, "w", force_zip64=large) as member:
                    member.write(content)
            archive.comment = b"python"
        return target.getvalue()

    def test_more_members_than_the_short_end_record_can_count(self):
        target = io.BytesIO()
        with zipfile.ZipFile(target, "w") as archive:
            for number in range(66000):
                archive.writestr(zipfile.ZipInfo(f"data/{number}"), b"")
            archive.writestr("script.xml", host_script())
        self.expect_sound(target.getvalue())

    @unittest.skipUnless(os.environ.get("TAVEK_LARGE"), "needs 9 GiB of disk; set TAVEK_LARGE to run it")
    def test_more_than_4_gib(self):
        with zipfile.ZipFile(self.path("sensor.pkg"), "w") as archive:
            with archive.open("big", "w", force_zip64=True) as member:
                for _ in range(4200):
                    member.write(bytes(1 << 20))
            archive.writestr("script.xml", host_script())
        self.addCleanup(os.remove, self.path("sensor.pkg"))
        subprocess.run(
            [self.program, "--file", "plugin.zext", "--archive", "sensor.pkg"], cwd=self.root, check=True
        )
        with zipfile.ZipFile(self.path("sensor.pkg")) as archive:
            self.assertEqual(archive.namelist(), ["big", "script.xml", ADDED])
            self.assertIsNone(archive.testzip())
