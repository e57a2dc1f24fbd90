"""The harness itself: a comparison that notices nothing would prove nothing. Needs no program."""

import os
import pathlib
import shutil
import struct
import unittest
import zipfile
from io import BytesIO

from harness import executable, manual, schemas, zip_builder
from harness.documents import file, host_script, script, unified_manifest, version
from harness.foresight import Foresight
from harness.messages import loaded, processing, removing, saving, version_mismatch
from harness.patterns import anything, containing, located, one_of
from harness.program import Result
from harness.scenario import GONE, Scenario
from harness.zip_builder import DEFLATED, HAS_DESCRIPTOR, Member
from harness.zip_walker import Contents, Malformed, walk


class Files(Scenario):
    def noticed(self, change, expected=None):
        self.write("a.txt", "content")
        before = self.snapshot()
        change()
        with self.assertRaises(AssertionError):
            self.compare_files(before, self.snapshot(), expected or {})

    def test_every_difference_is_noticed(self):
        self.noticed(lambda: self.write("a.txt", "CONTENT"))
        self.noticed(lambda: os.utime(self.path("a.txt"), (1, 1)))
        self.noticed(lambda: os.chmod(self.path("a.txt"), 0o600))
        self.noticed(lambda: os.remove(self.path("a.txt")))
        self.noticed(lambda: self.write(".tmp", ""))
        self.noticed(lambda: os.mkdir(self.path("empty")))
        self.noticed(lambda: None, {"new.txt": "x"})
        self.noticed(lambda: None, {"a.txt": GONE})
        self.noticed(lambda: None, {"a.txt": "other"})

    def test_a_run_without_a_difference_passes(self):
        self.write("a.txt", "content")
        self.compare_files(self.snapshot(), self.snapshot(), {"a.txt": b"content"})


class Manual(unittest.TestCase):
    def test_lines_of_the_program_are_described(self):
        failed = "TaVekUtil: Failed to inject library to archive. Error: "
        lines = [
            "",
            "\tTaVekUtil: Remove Package: a",
            "TaVekUtil:    - Saving new package as: Custom-a.pkg",
            "zArchive_Load: a.pkg: member b: checksum mismatch",
            failed + "Path not found: a.pkg",
            failed + "main: a.pkg: Is a directory (input/output error, status -5, TaVekUtil:1)",
        ]
        self.assertEqual(manual.undescribed("\n".join(lines)), [])

    def test_other_lines_are_not(self):
        failed = "TaVekUtil: Failed to inject library to archive. Error: "
        lines = [
            "TaVekUtil: Failed to inject library",
            "TaVekUtil:    - Saved new package as: Custom-a.pkg",
            "zArchive_Load: a.pkg: member b: no match",
            failed + "Path lost: a.pkg",
            failed + "main: a.pkg: Is no file (input/output error, status -5, TaVekUtil:1)",
            failed + "main: a.pkg: Is a directory (broken, status -5, TaVekUtil:1)",
        ]
        self.assertEqual(manual.undescribed("\n".join(lines)), lines)

    def test_every_module_is_told(self):
        here = pathlib.Path(__file__).parent
        told = (here / "README.md").read_text()
        self.assertEqual([path.name for path in here.glob("*_test.py") if f"`{path.name}`" not in told], [])


@unittest.skipUnless(schemas.XMLLINT, "xmllint is not installed")
class Schemas(Scenario):
    def complaints_after(self, script_text, manifest=None):
        """What is found when an archive with these documents is made beside a sound one."""
        shutil.rmtree(self.path("results"), ignore_errors=True)
        self.host_archive("in.pkg")
        before = self.snapshot()
        self.archive("results/out.pkg", script_text, manifest)
        return schemas.complaints(before, self.snapshot())

    def test_results_that_keep_to_the_schemas_pass(self):
        self.assertEqual(self.complaints_after(host_script(), unified_manifest("win")), [])

    def test_results_that_do_not_are_noticed(self):
        self.assertEqual(len(self.complaints_after(script('<File name="no source"/>'))), 1)
        self.assertEqual(len(self.complaints_after(host_script(), unified_manifest("Ombix"))), 1)

    def test_an_extracted_manifest_is_looked_at_whatever_its_name(self):
        self.write("results/any.xml", unified_manifest("win"))
        self.assertEqual(schemas.complaints({}, self.snapshot()), [])
        self.write("results/any.xml", unified_manifest("Ombix"))
        self.assertEqual(len(schemas.complaints({}, self.snapshot())), 1)

    def test_results_of_inputs_that_do_not_are_passed_over(self):
        self.write("vek_manifest.xml", "<VekAppPackage/>")
        self.assertEqual(self.complaints_after(script('<File name="no source"/>')), [])


class Plans(Scenario):
    file = {"package": "New", "path": "p/a.so", "destination": "/a.so", "member": "data/12345-a.so"}
    archive = {
        "path": "a.pkg",
        "platform": "linux_arm7",
        "outcome": "saved",
        "savedAs": "C-a.pkg",
        "removed": [{"package": "Old", "destinations": []}],
        "added": [file, file | {"path": "p/b.so"}],
        "skipped": [{"subject": "package Z", "reason": "built for 7, the archive is 6"}],
        "findings": [{"severity": "warning", "text": "package Z is skipped"}],
    }
    other = archive | {"path": "b.pkg", "outcome": "notReached"}
    happened = (
        processing("a.pkg")
        + removing("Old")
        + version_mismatch("6", "Z", "7")
        + loaded("linux_arm7", "p/a.so")
        + loaded("linux_arm7", "p/b.so")
        + saving("C-a.pkg")
    )

    def compare(self, text, succeeds=True, **change):
        foresight = Foresight(self, [])
        archives = [self.archive | change] + ([] if succeeds else [self.other])
        foresight.plan = {"succeeds": succeeds, "archives": archives, "findings": []}
        foresight.status, foresight.sound_inputs = 1, {"a.pkg": False}
        foresight.compare(Result(text, "", 0 if succeeds else 1))

    def test_what_was_foretold_passes(self):
        self.compare(self.happened)
        failed = self.happened.replace(saving("C-a.pkg"), "")
        self.compare(failed, False, outcome="failed")
        self.compare(failed.replace(loaded("linux_arm7", "p/b.so"), ""), False, outcome="failed")

    def test_every_difference_is_noticed(self):
        for change in (
            {"path": "other.pkg"},
            {"savedAs": "other.pkg"},
            {"removed": []},
            {"added": [self.file]},
            {"added": [self.file | {"path": "p/b.so"}, self.file]},
            {"skipped": []},
            {
                "skipped": self.archive["skipped"]
                + [{"subject": "p", "reason": "the directory of x is missing"}]
            },
            {"outcome": "unchanged", "savedAs": ""},
            {"outcome": "notReached"},
            {"outcome": "failed"},
        ):
            with self.subTest(change), self.assertRaises(AssertionError):
                self.compare(self.happened, **change)
        more = self.happened.replace(saving("C-a.pkg"), loaded("linux_arm7", "p/c.so"))
        with self.assertRaises(AssertionError):
            self.compare(more, False, outcome="failed")


class Archives(unittest.TestCase):
    members = [Member("a", b"1" * 50, DEFLATED), Member("b", b"2", comment=b"c", extra=b"UT\0\0")]

    def differences(self, **change):
        fields = {"name": "b", "data": b"2", "comment": b"c", "extra": b"UT\0\0"} | change
        return Contents(zip_builder.build(self.members)).differences(
            zip_builder.build([self.members[0], Member(**fields)])
        )

    def test_every_difference_of_a_member_is_noticed(self):
        self.assertEqual(self.differences(), [])
        for change in (
            {"data": b"3"},
            {"time": 1},
            {"date": 1},
            {"external": 1},
            {"internal": 1},
            {"made_by": 1},
            {"comment": b""},
            {"extra": b""},
            {"local_extra": b""},
            {"flags": 2},
            {"name": "c"},
            {"needed": 45},
            {"method": DEFLATED},
            {"flags": HAS_DESCRIPTOR},
        ):
            self.assertNotEqual(self.differences(**change), [], change)

    def test_order_and_count_are_noticed(self):
        contents = Contents(zip_builder.build(self.members))
        self.assertNotEqual(contents.differences(zip_builder.build(self.members[::-1])), [])
        self.assertNotEqual(contents.differences(zip_builder.build(self.members[:1])), [])
        self.assertNotEqual(contents.differences(zip_builder.build(self.members, b"comment")), [])

    def test_an_added_member_has_its_fixed_fields(self):
        added = {"date": 0x21, "time": 0, "made_by": 0x0314}
        contents = Contents(zip_builder.build([])).put("größe", b"x")
        self.assertEqual(contents.differences(zip_builder.build([Member("größe", b"x", **added)])), [])
        for change in (
            {"date": 0x22},
            {"made_by": 0x14},
            {"external": 0},
            {"flags": 0},
            {"extra": b"UT\0\0"},
            {"data": b"y"},
        ):
            self.assertNotEqual(
                contents.differences(
                    zip_builder.build([Member(**({"name": "größe", "data": b"x"} | added | change))])
                ),
                [],
            )

    def test_gaps_and_bytes_that_belong_to_nothing_are_refused(self):
        good = zip_builder.build(self.members)
        for blob in (zip_builder.build(self.members, gap=b"x"), good + b"x", b"x" + good, good[:-1]):
            with self.assertRaises((Malformed, struct.error)):
                walk(blob)

    def test_the_builder_and_the_walker_agree_with_the_standard_library(self):
        blob = zip_builder.build(
            self.members + [Member("d", b"3" * 9, DEFLATED, flags=HAS_DESCRIPTOR)], b"comment"
        )
        with zipfile.ZipFile(BytesIO(blob)) as archive:
            self.assertIsNone(archive.testzip())
            comment, entries = walk(blob)
            self.assertEqual(archive.comment, comment)
            self.assertEqual(
                [archive.read(name) for name in archive.namelist()], [entry.data() for entry in entries]
            )


class Texts(unittest.TestCase):
    def test_open_parts_match_within_one_line(self):
        self.assertEqual(
            "Error: " + located("f", -999, containing("x.xml"), 7) + "\n",
            "Error: f: a x.xml b (not found, status -999, TaVekUtil:7)\n",
        )
        self.assertEqual(located("f", -5), "f (input/output error, status -5, TaVekUtil:12)")
        self.assertNotEqual(located("f", -5, None, 12), "f (input/output error, status -5, TaVekUtil:13)")
        self.assertNotEqual("a" + anything(), "a\n")
        self.assertEqual(one_of("a.c", anything() + "b") + "!", "xb!")
        self.assertNotEqual(one_of("a.c", "b"), "abc")

    def test_documents_are_laid_out(self):
        self.assertEqual(
            script(version("1"), file("/a&b", "m", "R2")),
            """\
<?xml version="1.0" encoding="UTF-8"?>
<Startup>
  <Version value="1"/>
  <File name="/a&amp;b" source="m">
    <Or>
      <Eq property="Controller" value="R2"/>
    </Or>
  </File>
</Startup>
""",
        )
        self.assertIn('value="R4-mc"', host_script())

    def test_an_executable_is_one(self):
        blob = executable.executable((1, 2, 3, 4))
        self.assertEqual(blob[:2], b"MZ")
        self.assertEqual(blob[64:68], b"PE\0\0")
        self.assertIn(struct.pack("<II", 0x10002, 0x30004), blob)
