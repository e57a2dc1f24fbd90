"""TaVekInspect diff and report: what tells two archives, or two installation directories, apart."""

import os
import subprocess
import unittest
from html.parser import HTMLParser

from harness.documents import app, entry, file, host_script, unified_manifest
from harness.executable import executable
from harness.inspection import Inspection
from harness.program import ON_WINDOWS
from harness.scenario import EXECUTABLE_PATH
from harness.zip_builder import DEFLATED, Member


class Diff(Inspection):
    def test_equal_archives(self):
        self.installed("one.pkg")
        self.installed("two.pkg")
        self.assertEqual(self.inspect("diff", "one.pkg", "two.pkg"), "")
        self.assertTrue(self.document("diff", "one.pkg", "two.pkg")["equal"])

    def test_what_a_run_adds(self):
        self.host_archive("old.pkg")
        self.installed()
        text = self.inspect("diff", "old.pkg", "new.pkg", status=1)
        self.assertTrue(
            text.startswith(
                "--- old.pkg\n+++ new.pkg\n"
                "Packages\n  + New (1 file)\n"
                "Script entries\n  + /a.so <- data/12345-a.so (R2, R4, R4-mc)\n"
                "Members\n  ~ script.xml, 424 bytes -> 638 bytes\n"
                "  + vekPackages.xml, 278 bytes\n  + data/12345-a.so, 15 bytes\n"
            ),
            text,
        )
        self.assertIn("\n--- old.pkg/script.xml\n+++ new.pkg/script.xml\n@@ -13,4 +13,11 @@\n", text)
        self.assertIn("\n--- /dev/null\n+++ new.pkg/vekPackages.xml\n@@ -0,0 +1,11 @@\n", text)

    def test_what_a_run_removes_and_changes(self):
        self.installed("old.pkg")
        self.archive("new.pkg", host_script("linux_arm64"), unified_manifest("linux_arm64", be_version="7"))
        told = self.document("diff", "old.pkg", "new.pkg", status=1)
        self.assertEqual(told["equal"], False)
        self.assertEqual(
            {each["name"]: each["after"]["value"] for each in told["properties"]},
            {"platform": "linux_arm64", "beVersion": "7", "manifestPlatform": "linux_arm64"},
        )
        self.assertEqual([(each["change"], each["name"]) for each in told["packages"]], [("removed", "New")])
        kinds = [(each["change"], each["name"]) for each in told["scriptEntries"]]
        self.assertEqual(kinds, [("changed", "/app/host"), ("changed", "/app/lib.so"), ("removed", "/a.so")])
        self.assertIn(("removed", "data/12345-a.so"), [(m["change"], m["name"]) for m in told["members"]])

    def test_members_that_are_no_text(self):
        self.host_archive("old.pkg", members=[Member("x", b"\0one")])
        self.host_archive("new.pkg", members=[Member("x", b"\0two"), Member("y", b"\xff")])
        members = self.document("diff", "old.pkg", "new.pkg", status=1)["members"]
        self.assertEqual([(each["text"], each["hunks"]) for each in members], [(False, [])] * 2)

    def test_a_member_packed_anew(self):
        self.host_archive("old.pkg", members=[Member("x", b"same " * 9)])
        self.host_archive("new.pkg", members=[Member("x", b"same " * 9, DEFLATED)])
        text = self.inspect("diff", "old.pkg", "new.pkg", status=1)
        self.assertIn("  ~ x, same content, packed or dated anew\n", text)

    def test_two_states_of_an_installation(self):
        for name, manifest in (("old", unified_manifest("win")), ("new", unified_manifest("win", app("N")))):
            self.write(f"{name}/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
            self.write(f"{name}/vekPackages.xml", manifest)
        text = self.inspect("diff", "old", "new", status=1)
        self.assertIn("Packages\n  + N (0 files)\n", text)
        self.assertIn('+  <VekApp name="N"/>\n', text)

    def test_trouble(self):
        self.installed()
        stderr = "missing: error: Path not found: missing\n"
        self.assertEqual(self.inspect("diff", "missing", "new.pkg", status=2, stderr=stderr), "")
        told = self.document("diff", "new.pkg", "missing", status=2)
        self.assertEqual((told["equal"], len(told["new"]["problems"])), (False, 1))

    @unittest.skipUnless(__import__("shutil").which("patch"), "patch is not installed")
    def test_the_unified_diff_is_one_that_patch_takes(self):
        before = "".join(f"line {number}\n" for number in range(60)) + "no end"
        after = (
            before.replace("line 3\n", "").replace("line 30\n", "other\nlines\n").replace("no end", "end\n")
        )
        self.host_archive("old.pkg", members=[Member("t", before)])
        self.host_archive("new.pkg", members=[Member("t", after)])
        text = self.inspect("diff", "old.pkg", "new.pkg", status=1)
        self.write("t", before)
        patch = text[text.index("--- old.pkg/t") :].encode()
        subprocess.run(["patch", "-s", self.path("t")], input=patch, check=True, cwd=self.root)
        self.assertEqual(self.read("t").decode(), after)


class Page(HTMLParser):
    """The elements, the text and the attributes of a page; complains of elements that do not nest."""

    EMPTY = ("meta", "br")

    def __init__(self, text):
        super().__init__()
        self.open, self.tags, self.text, self.attributes = [], [], "", []
        self.feed(text)
        assert not self.open, self.open

    def handle_starttag(self, tag, attrs):
        self.tags.append(tag)
        self.attributes += attrs
        if tag not in self.EMPTY:
            self.open.append(tag)

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag

    def handle_data(self, data):
        self.text += data


class Report(Inspection):
    def page(self, *arguments, **options):
        self.inspect("report", *arguments, "--html", "page.html", writes=["page.html"], **options)
        return Page(self.read("page.html").decode())

    def test_a_page_tells_what_changed(self):
        self.host_archive("old.pkg")
        self.installed()
        page = self.page("old.pkg", "new.pkg")
        for expected in ("Changes from old.pkg to new.pkg", "1 added", "linux_arm7", "data/12345-a.so"):
            self.assertIn(expected, page.text)
        self.assertIn('+  <File name="/a.so" source="data/12345-a.so">', page.text)

    def test_it_needs_nothing_from_anywhere(self):
        self.host_archive("old.pkg")
        self.installed()
        page = self.page("old.pkg", "new.pkg")
        self.assertEqual({"script", "img", "link", "iframe", "object", "a"} & set(page.tags), set())
        self.assertEqual({"src", "href", "onclick", "onload"} & {name for name, _ in page.attributes}, set())
        self.assertNotIn("url(", self.read("page.html").decode())

    def test_nothing_from_an_archive_becomes_markup(self):
        hostile = "<script>alert('1')</script>&amp;\"><img src=x>"
        own = entry(hostile, hostile, hostile)
        self.host_archive("old.pkg")
        self.archive(
            "new.pkg",
            host_script("linux_arm7", file(hostile, hostile, hostile)),
            unified_manifest("linux_arm7", app(hostile, own), be_version=hostile),
            [Member(hostile, hostile)],
        )
        page = self.page("old.pkg", "new.pkg")
        self.assertEqual({"script", "img"} & set(page.tags), set())
        self.assertIn(hostile, page.text)

    def test_equal_archives(self):
        self.installed("one.pkg")
        self.installed("two.pkg")
        self.assertIn("Nothing has changed.", self.page("one.pkg", "two.pkg").text)

    def test_json_beside_it(self):
        self.installed()
        self.host_archive("old.pkg")
        arguments = ("report", "old.pkg", "new.pkg", "--html", "page.html")
        told = self.document(*arguments, writes=["page.html"])
        self.assertEqual(len(told["packages"]), 1)

    def test_trouble(self):
        self.installed()
        stderr = "missing: error: Path not found: missing\n"
        self.assertIn("Path not found", self.page("missing", "new.pkg", status=2, stderr=stderr).text)
        stderr = "TaVekInspect: no/page.html: No such file or directory\n"
        self.inspect("report", "new.pkg", "new.pkg", "--html", "no/page.html", status=2, stderr=stderr)

    def test_a_page_never_takes_the_place_of_an_archive(self):
        self.installed()
        self.host_archive("old.pkg")
        for name in ("old.pkg", "./new.pkg"):
            stderr = f"TaVekInspect: {name}: that is one of the archives\n"
            self.inspect("report", "old.pkg", "new.pkg", "--html", name, status=2, stderr=stderr)

    def test_a_page_never_takes_the_place_of_what_makes_an_installation(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        self.host_archive("old.pkg")
        for name in ("tools/" + EXECUTABLE_PATH, "tools/./vekPackages.xml"):
            stderr = f"TaVekInspect: {name}: that is one of the archives\n"
            self.inspect("report", "old.pkg", "tools", "--html", name, status=2, stderr=stderr)

    def test_no_name_turns_the_order_of_the_page_round(self):
        self.host_archive("old.pkg")
        self.host_archive("new.pkg", members=[Member("evil\u202egnp.so", b"x")])
        self.assertIn("evil?gnp.so", self.page("old.pkg", "new.pkg").text)

    @unittest.skipIf(ON_WINDOWS, "no pipes among files there")
    def test_a_pipe_for_an_archive_is_not_waited_for(self):
        self.installed()
        os.mkfifo(self.path("pipe"))
        stderr = "pipe: error: neither an archive nor an installation directory: not a plain file\n"
        self.page("pipe", "new.pkg", status=2, stderr=stderr)
