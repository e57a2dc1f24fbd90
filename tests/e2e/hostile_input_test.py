"""Broken and hostile input: a clear line and status 1, never a crash, never a changed file."""

import random
import struct

from harness import program, zip_builder
from harness.documents import file, host_script, script, unified_manifest, version
from harness.messages import UPGRADE_FAILED, extraction_failed, injection_failed, no_member, refused
from harness.patterns import Pattern, anything, containing, located
from harness.program import EMULATOR
from harness.scenario import Scenario
from harness.zip_builder import (
    DEFLATED,
    HAS_DESCRIPTOR,
    Member,
    build,
    central_record,
    end_record,
    local_record,
)
from harness.zip_walker import walk

SCRIPT = Member("script.xml", host_script())
ONE = Member("one", b"some content of a member")


def with_local(**fields):
    return build([SCRIPT, Member("one", ONE.data, local=fields)])


def with_directory(directory, count=2, members=(SCRIPT, ONE), size=None, offset=None):
    body = b"".join(local_record(member) for member in members)
    size, offset = len(directory) if size is None else size, len(body) if offset is None else offset
    return body + directory + end_record(count, size, offset)


GOOD = build([SCRIPT, ONE])
RECORDS = central_record(SCRIPT, 0), central_record(ONE, len(local_record(SCRIPT)))
END = len(GOOD) - 22

BROKEN_ARCHIVES = {
    "cut in the end record": GOOD[:-1],
    "cut in the directory": GOOD[: END - 5],
    "cut in the data": GOOD[:40],
    "bytes behind": GOOD + b"x",
    "a zero byte behind": GOOD + b"\0",
    "bytes in front that offsets do not count": b"#!/bin/sh\n" + GOOD,
    "a second end mark in the comment": build([SCRIPT, ONE], b"x" + end_record(0, 0, 0) + b"y"),
    "a comment shorter than told": build([SCRIPT], b"comment")[:-1],
    "a doubled name": build([SCRIPT, ONE, ONE]),
    "a doubled script": build([SCRIPT, ONE, Member("script.xml", "<other/>")]),
    "an empty name": build([SCRIPT, Member("", b"x")]),
    "a zero byte in a name": build([SCRIPT, Member("a\0b", b"x")]),
    "another local name": with_local(name="two"),
    "another local method": with_local(method=DEFLATED),
    "other local flags": with_local(flags=0x0800),
    "another local time": with_local(time=1),
    "another local date": with_local(date=1),
    "another local checksum": with_local(crc=1),
    "another local packed size": with_local(packed=3),
    "another local size": with_local(size=3),
    "stored with unequal sizes": build([SCRIPT, Member("one", b"abc", size=4)]),
    "another descriptor": build([SCRIPT, Member("one", ONE.data, flags=HAS_DESCRIPTOR)]).replace(
        struct.pack("<I", ONE.crc) + struct.pack("<II", len(ONE.data), len(ONE.data)), b"\1" * 12, 1
    ),
    "extra fields that are no records": build([SCRIPT, Member("one", b"x", extra=b"UT\xff\0abc")]),
    "extra fields with a tail": build([SCRIPT, Member("one", b"x", extra=b"UT\0\0abc")]),
    "two large-size records": build(
        [SCRIPT, Member("one", b"x", extra=b"\1\0\x08\0" + bytes(8) + b"\1\0\0\0")]
    ),
    "a large-size mark without its record": with_directory(
        RECORDS[0] + RECORDS[1][:20] + b"\xff" * 4 + RECORDS[1][24:]
    ),
    "fewer members than told": with_directory(b"".join(RECORDS), count=3),
    "more members than told": with_directory(b"".join(RECORDS), count=1),
    "no members but a directory": with_directory(b"".join(RECORDS), count=0),
    "a directory size too small": with_directory(b"".join(RECORDS), size=10),
    "a directory size too large": with_directory(b"".join(RECORDS), size=0x7FFFFFFF),
    "a directory outside the file": with_directory(b"".join(RECORDS), offset=0x7FFFFFFF),
    "a directory in the data": with_directory(b"".join(RECORDS), offset=0),
    "overlapping members": with_directory(central_record(SCRIPT, 0) + central_record(Member("one", b""), 0)),
    "a member outside the file": with_directory(RECORDS[0] + central_record(ONE, 0x7FFFFFF0)),
    "a member in the directory": with_directory(
        RECORDS[0] + central_record(ONE, len(local_record(SCRIPT) + local_record(ONE)))
    ),
    "a member without local header": with_directory(RECORDS[0] + central_record(ONE, 5)),
    "a member on another disk": with_directory(RECORDS[0] + RECORDS[1][:34] + b"\1\0" + RECORDS[1][36:]),
    "several disks": GOOD[: END + 4] + b"\1\0" + GOOD[END + 6 :],
    "counts of several disks": GOOD[: END + 8] + b"\1\0" + GOOD[END + 10 :],
    "a locator that leads nowhere": GOOD[:END] + struct.pack("<IIQI", 0x07064B50, 0, 1 << 40, 1) + GOOD[END:],
    "no member at all and no directory": b"PK\5\6",
}


class BrokenArchives(Scenario):
    def test_each_is_refused_by_every_mode(self):
        self.write("plugin.zext", "library")
        for damage, blob in BROKEN_ARCHIVES.items():
            with self.subTest(damage):
                self.write("sensor.pkg", blob)
                detail = containing("sensor.pkg")
                self.check(
                    "--archive",
                    "sensor.pkg",
                    "--manifest",
                    "m.xml",
                    stdout=refused(detail),
                    status=1,
                    stderr=extraction_failed("Invalid Archive Path: sensor.pkg"),
                )
                self.check(
                    "--archive",
                    "sensor.pkg",
                    "--file",
                    "plugin.zext",
                    stdout=refused(detail),
                    status=1,
                    stderr=injection_failed(located("injectLibToArchiveFile", -74, detail, 1305)),
                )

    def test_an_archive_without_members_is_an_archive(self):
        self.write("sensor.pkg", build([]))
        self.check(
            "--archive",
            "sensor.pkg",
            "--manifest",
            "m.xml",
            status=1,
            stderr=extraction_failed(located("TaVekUtils_GetArchivePlatform", -999, no_member("script.xml"))),
        )


class BrokenMembers(Scenario):
    """Damage inside a member shows when the member is looked into, or when the archive is saved."""

    def broken_streams(self):
        text = host_script().encode()
        packed = zip_builder.deflated(text)
        return {
            "no stream at all": Member("x", text, DEFLATED, raw=b"\xff" * 40),
            "a cut stream": Member("x", text, DEFLATED, raw=packed[:-9]),
            "bytes behind the stream": Member("x", text, DEFLATED, raw=packed + b"x"),
            "more content than told": Member("x", text, DEFLATED, size=len(text) - 1),
            "less content than told": Member("x", text, DEFLATED, size=len(text) + 1),
            "far less content than told": Member("x", text, DEFLATED, size=0xFFFFFFF0),
            "another checksum": Member("x", text, DEFLATED, crc=1),
            "an empty stream": Member("x", b"", DEFLATED, raw=b""),
            "reserved block type": Member("x", text, DEFLATED, raw=b"\x07" + bytes(20)),
            "distance before the start": Member("x", b"aaaa", DEFLATED, raw=b"\x63\x04\x42\x00"),
        }

    def test_a_script_that_cannot_be_unpacked(self):
        for damage, member in self.broken_streams().items():
            with self.subTest(damage):
                member.name = "script.xml"
                self.write("sensor.pkg", build([ONE, member]))
                message = located("TaVekUtils_GetArchivePlatform", -74, containing("script.xml"))
                self.check(
                    "--archive",
                    "sensor.pkg",
                    "--manifest",
                    "m.xml",
                    stderr=extraction_failed(message),
                    status=1,
                )

    def test_another_member_that_cannot_be_unpacked_forbids_saving(self):
        self.write("plugin.zext", "library")
        for damage, member in self.broken_streams().items():
            with self.subTest(damage):
                self.write("sensor.pkg", build([SCRIPT, member]))
                message = located("injectLibToArchiveFile", -74, containing("sensor.pkg"), 1309)
                self.check(
                    "--archive",
                    "sensor.pkg",
                    "--file",
                    "plugin.zext",
                    stderr=injection_failed(message),
                    status=1,
                )

    def test_a_script_of_huge_stated_size_ends_in_a_message(self):
        zeros = zip_builder.deflated(bytes(1 << 20))
        self.write("sensor.pkg", build([Member("script.xml", b"", DEFLATED, raw=zeros, size=0xFFFFFFFE)]))
        message = located("TaVekUtils_GetArchivePlatform", -74, containing("script.xml"))
        self.check(
            "--archive", "sensor.pkg", "--manifest", "m.xml", stderr=extraction_failed(message), status=1
        )


class HostileDocuments(Scenario):
    def expect_script_refused(self, text, status=-74, detail=None):
        self.write("plugin.zext", "library")
        self.archive("sensor.pkg", text)
        message = located(
            "TaVekUtil_InjectFile", status, anything() if detail is None else containing(detail)
        )
        self.check(
            "--file",
            "plugin.zext",
            "--archive",
            "sensor.pkg",
            status=1,
            stderr=UPGRADE_FAILED + injection_failed(message),
        )

    def test_entities_are_never_expanded(self):
        bomb = (
            "<!DOCTYPE S ["
            + "".join(f'<!ENTITY e{level + 1} "{f"&e{level};" * 10}">' for level in range(20))
            + ']><S><File name="&e20;"/></S>'
        )
        self.expect_script_refused(bomb)

    def test_files_are_never_read(self):
        self.write("secret", "secret")
        self.expect_script_refused(
            '<!DOCTYPE S [<!ENTITY x SYSTEM "secret">]><S><File name="a">&x;</File></S>'
        )

    def test_a_document_type_is_kept(self):
        self.write("plugin.zext", "library")
        text = (
            '<!DOCTYPE Startup SYSTEM "startup.dtd" [<!-- none -->]>\n'
            + script(file("/a", "a")).split("\n", 1)[1]
        )
        self.archive("sensor.pkg", text)
        self.check("--file", "plugin.zext", "--archive", "sensor.pkg", files={"sensor.pkg": None})
        self.assertIn(b'<!DOCTYPE Startup SYSTEM "startup.dtd" [<!-- none -->]>\n', self.read("sensor.pkg"))

    def test_deep_nesting(self):
        depth = 1_000_000
        self.expect_script_refused("<a>" * depth)
        self.write("plugin.zext", "library")
        nested = "<S><File name='/a' source='a'/>" + "<a>" * depth + "</a>" * depth + "</S>"
        self.archive("sensor.pkg", nested)
        self.check("--file", "plugin.zext", "--archive", "sensor.pkg", files={"sensor.pkg": None})

    def test_zero_bytes_and_forbidden_characters(self):
        for character in ("\0", "\x01", "\x1f", "\ufffe", "&#0;", "&#xD800;", "&#x110000;"):
            self.expect_script_refused(f"<S><File name='{character}'/></S>")

    def test_very_many_attributes_and_very_long_values(self):
        self.write("plugin.zext", "library")
        attributes = "".join(f" a{number}='x'" for number in range(20000))
        self.archive("sensor.pkg", f"<S><File{attributes} name='{'n' * 1000000}'/></S>")
        self.check("--file", "plugin.zext", "--archive", "sensor.pkg", files={"sensor.pkg": None})

    def test_hostile_text_is_printed_as_it_is_and_formats_nothing(self):
        self.archive("sensor.pkg", script(version("%s%n%x"), file("/a", "a", "R2")))
        self.check(
            "--archive",
            "sensor.pkg",
            "--manifest",
            "%s%n.xml",
            stdout="Manifest saved at %s%n.xml\n",
            files={"%s%n.xml": unified_manifest("linux_arm7", be_version="%s%n%x")},
        )


class Mutations(Scenario):
    """Archives with random bytes changed: whatever comes, the program ends with 0 or 1 and all files stay sound."""

    def test_changed_bytes(self):
        rng = random.Random(3)
        self.write("plugin.zext", "library")
        good = build(
            [
                Member("script.xml", host_script(), DEFLATED),
                ONE,
                Member("vekPackages.xml", unified_manifest("linux_arm7")),
            ]
        )
        for round_number in range(20 if EMULATOR else 300):
            blob = bytearray(good)
            for _ in range(rng.randint(1, 4)):
                blob[rng.randrange(len(blob))] = rng.randrange(256)
            with self.subTest(round_number):
                self.expect_survived(bytes(blob))

    def test_cut_files(self):
        self.write("plugin.zext", "library")
        good = build([Member("script.xml", host_script(), DEFLATED), ONE])
        for length in range(0, len(good), 97 if EMULATOR else 7):
            with self.subTest(length):
                self.expect_survived(good[:length])

    def expect_survived(self, blob):
        self.write("sensor.pkg", blob)
        before = self.snapshot()
        result = program.start(self.program, ["--file", "plugin.zext", "--archive", "sensor.pkg"], self.root)
        self.assertIn(result.status, (0, 1), result.stderr)
        if result.status == 1:
            self.assertEqual(Pattern("(?:TaVekUtil: [^\n]*\n)+"), result.stderr)
            self.compare_files(before, self.snapshot(), {})
        else:
            self.compare_files(before, self.snapshot(), {"sensor.pkg": None})
            walk(self.read("sensor.pkg"))
