"""Removing the files of a package: which entries count, where each file is, what is already gone."""

import os
import unittest

from harness import zip_builder
from harness.documents import app, element, entry, file, host_script, unified_manifest
from harness.executable import executable
from harness.messages import (
    archive_failed,
    no_attribute,
    path_too_long,
    processing,
    removal_failed,
    removing,
    saving,
    skipping,
)
from harness.patterns import located
from harness.program import ON_WINDOWS, combined
from harness.scenario import EXECUTABLE_PATH, GONE, Scenario


class FromAnArchive(Scenario):
    def expect_removed(self, entries, removed, kept=(), name="Alpha"):
        """The package holds `entries`; the script entries and members of the names in `removed` must go."""
        names = list(removed) + list(kept)
        members = [zip_builder.Member("data" + path, path.encode()) for path in names]
        manifest = unified_manifest("linux_arm7", app("Other"), app(name, *entries))
        after = self.host_archive(
            "sensor.pkg",
            "linux_arm7",
            *[file(path, "data" + path, "R2") for path in names],
            manifest=manifest,
            members=members
        )
        for path in removed:
            after.delete("data" + path)
        after.put(
            "script.xml", host_script("linux_arm7", *[file(path, "data" + path, "R2") for path in kept])
        )
        after.put("vekPackages.xml", unified_manifest("linux_arm7", app("Other")))
        self.check_batch(
            remove=[name],
            files={"Custom-sensor.pkg": after},
            stdout=processing("sensor.pkg") + removing(name) + saving("Custom-sensor.pkg"),
        )

    def test_every_file_of_the_package(self):
        self.expect_removed(
            [entry("VekApp", "a", "/a"), entry("Resource", "b", "/b")], ["/a", "/b"], kept=["/c"]
        )

    def test_letter_case_of_the_type_does_not_matter(self):
        self.expect_removed(
            [entry("vekapp", "a", "/a"), entry("RESOURCE", "b", "/b"), entry("VEKapp", "c", "/c")],
            ["/a", "/b", "/c"],
        )

    def test_other_types_are_passed_over(self):
        self.expect_removed(
            [
                entry("Library", "a", "/a"),
                entry("", "b", "/b"),
                entry("VekApp ", "c", "/c"),
                entry("Resource", "d", "/d"),
            ],
            ["/d"],
            kept=["/a", "/b", "/c"],
        )

    def test_element_names_do_not_matter(self):
        self.expect_removed(
            [entry("VekApp", "a", "/a", name="Anything"), entry("VekApp", "b", "/b", name="VekApp")],
            ["/a", "/b"],
        )

    def untyped(self, path):
        return element("File", None, [element("Source", None, path), element("Destination", None, path)])

    def test_an_entry_without_type_keeps_the_type_before_it(self):
        self.expect_removed(
            [entry("VekApp", "a", "/a"), self.untyped("/b"), entry("Library", "c", "/c"), self.untyped("/d")],
            ["/a", "/b"],
            kept=["/c", "/d"],
        )

    def test_the_first_entry_without_type_has_none(self):
        self.expect_removed([self.untyped("/a"), entry("VekApp", "b", "/b")], ["/b"], kept=["/a"])

    def test_a_type_that_is_too_long_keeps_the_one_before_it(self):
        self.expect_removed(
            [entry("VekApp", "a", "/a"), entry("x" * 32, "b", "/b"), entry("x" * 31, "c", "/c")],
            ["/a", "/b"],
            kept=["/c"],
        )

    def test_an_entry_without_destination_takes_the_default_of_the_package(self):
        without = entry("VekApp", "b", None)
        self.expect_removed([entry("VekApp", "a", "/a"), without], ["/a", "/user/Alpha"], kept=["/user/b"])
        too_long = entry("VekApp", "b", "/" + "d" * 511)
        self.expect_removed([entry("VekApp", "a", "/a"), too_long], ["/a", "/user/Alpha"])

    def test_a_destination_that_the_script_does_not_hold_is_passed_over_silently(self):
        self.expect_removed([entry("VekApp", "x", "/missing"), entry("VekApp", "a", "/a")], ["/a"])

    def test_two_entries_for_one_destination(self):
        self.expect_removed([entry("VekApp", "a", "/a"), entry("VekApp", "b", "/a")], ["/a"])

    def test_a_package_without_files(self):
        manifest = unified_manifest("linux_arm7", app("Alpha"))
        after = self.host_archive(manifest=manifest).put("vekPackages.xml", unified_manifest("linux_arm7"))
        self.check_batch(
            remove=["Alpha"],
            files={"Custom-sensor.pkg": after},
            stdout=processing("sensor.pkg") + removing("Alpha") + saving("Custom-sensor.pkg"),
        )

    def test_the_first_failing_file_ends_the_removal(self):
        manifest = unified_manifest(
            "linux_arm7", app("Alpha", entry("VekApp", "a", "/a"), entry("VekApp", "b", "/b"))
        )
        self.host_archive("sensor.pkg", "linux_arm7", element("File", {"name": "/a"}), manifest=manifest)
        message = located("TaVekUtils_ScriptXmlRemoveAndGetSource", -999, no_attribute("File", "source"))
        self.check_batch(
            remove=["Alpha"],
            stdout=processing("sensor.pkg") + removing("Alpha"),
            stderr=removal_failed("/a") + archive_failed(message),
            status=1,
        )


class FromAnInstallation(Scenario):
    def setUp(self):
        super().setUp()
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))

    def manifest(self, *entries):
        self.write("tools/vekPackages.xml", unified_manifest("win", app("Alpha", *entries)))

    def remove(self, stdout="", tools="tools", **expected):
        files = {"tools/vekPackages.xml": unified_manifest("win")} | expected.pop("files", {})
        self.check_batch(
            stock=[tools],
            remove=["Alpha"],
            stdout=processing(tools) + removing("Alpha") + stdout,
            files=files,
            **expected
        )

    def test_the_files_are_deleted(self):
        self.write("tools/plugins/a.dll", "a")
        self.write("tools/b.dat", "b")
        self.write("tools/kept.dat", "c")
        self.manifest(
            entry("VekApp", "a.dll", "plugins/a.dll"),
            entry("resource", "b.dat", "b.dat"),
            entry("Library", "x", "kept.dat"),
        )
        self.remove(files={"tools/plugins/a.dll": GONE, "tools/b.dat": GONE})

    def test_a_file_that_is_gone_already_is_reported_and_the_others_go(self):
        self.write("tools/b.dat", "b")
        self.manifest(entry("VekApp", "a.dll", "plugins/a.dll"), entry("VekApp", "b.dat", "b.dat"))
        self.remove(skipping(combined("tools", "plugins/a.dll")), files={"tools/b.dat": GONE})

    def test_separators_between_directory_and_destination_are_one(self):
        self.manifest(entry("VekApp", "a", "/a.dll"))
        for tools in ("tools", "tools/", "tools\\"):
            self.manifest(entry("VekApp", "a", "/a.dll"))
            self.remove(skipping(combined("tools", "a.dll")), tools=tools)

    def test_destinations_written_on_windows(self):
        self.write("tools/plugins/a.dll", "a")
        self.manifest(entry("VekApp", "a.dll", "plugins\\a.dll"))
        self.remove(files={"tools/plugins/a.dll": GONE})

    def test_a_directory_is_never_removed(self):
        os.makedirs(self.path("tools/folder"))
        self.manifest(entry("VekApp", "a", "folder"))
        message = located("TaVekUtil_RemoveFile", -5, combined("tools", "folder") + ": Is a directory")
        self.check_batch(
            stock=["tools"],
            remove=["Alpha"],
            stdout=processing("tools") + removing("Alpha"),
            stderr=removal_failed("folder") + archive_failed(message),
            status=1,
        )

    def test_a_path_that_is_too_long(self):
        self.manifest(entry("VekApp", "a", "d" * 507))
        message = located("TaVekUtil_RemoveFile", -75, path_too_long(combined("tools", "d" * 507)))
        self.check_batch(
            stock=["tools"],
            remove=["Alpha"],
            stdout=processing("tools") + removing("Alpha"),
            stderr=removal_failed("d" * 507) + archive_failed(message),
            status=1,
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_file_that_may_not_be_deleted(self):
        self.write("tools/a.dll", "a")
        self.manifest(entry("VekApp", "a", "a.dll"))
        message = located("TaVekUtil_RemoveFile", -5, "tools/a.dll: Permission denied")
        self.check_batch(
            stock=["tools"],
            remove=["Alpha"],
            stdout=processing("tools") + removing("Alpha"),
            stderr=removal_failed("a.dll") + archive_failed(message),
            status=1,
            unprivileged=True,
        )

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_of_a_link_only_the_link_goes(self):
        self.write("outside.dat", "kept")
        os.symlink("../outside.dat", self.path("tools/a.dat"))
        self.manifest(entry("Resource", "a", "a.dat"))
        self.remove(files={"tools/a.dat": GONE})
