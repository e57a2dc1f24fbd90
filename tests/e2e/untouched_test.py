"""What a run leaves alone: everything when nothing changes or a step fails, and what a file is besides its bytes."""

import os
import unittest

from harness.documents import app, entry, package_manifest, platform, unified_manifest
from harness.executable import executable
from harness.messages import (
    archive_failed,
    copied,
    copy_failed,
    loaded,
    no_file,
    processing,
    refused,
    saving,
    unchanged,
)
from harness.patterns import located
from harness.program import ABNORMAL_END, NOBODY, ON_WINDOWS, combined
from harness.scenario import EXECUTABLE_PATH, Scenario

OWN = entry("VekApp", "a.so", "/a.so")


class Untouched(Scenario):
    def setUp(self):
        super().setUp()
        self.package("pkgs/new", package_manifest("New", platform("linux_arm7", OWN)), ["a.so"])
        self.package("pkgs/other", package_manifest("Other", platform("ombix", OWN)), ["a.so"])

    def directory_times(self):
        """The times of all directories but the program's, where configurations are written."""
        walked = [directory for directory, _, _ in os.walk(self.root)]
        return {name: os.stat(name).st_mtime_ns for name in walked if not name.endswith("win64")}

    def expect_no_write(self, run):
        """A temporary file, even one that is gone again, would leave its mark on the directory's time."""
        for name in self.directory_times():
            os.utime(name, (1_400_000_000, 1_400_000_000))
        before = self.directory_times()
        run()
        self.assertEqual(self.directory_times(), before)


class WhenNothingChanges(Untouched):
    def test_a_batch_writes_nothing(self):
        self.host_archive("pkg/sensor.pkg")
        self.write("pkg/Custom-sensor.pkg", "the result of an earlier run")
        lines = processing("pkg/sensor.pkg") + unchanged("pkg/sensor.pkg")
        self.expect_no_write(
            lambda: self.check_batch(stock=["pkg/sensor.pkg"], load=["pkgs/other"], stdout=lines)
        )

    def test_a_batch_writes_nothing_into_an_installation(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        self.write("tools/vekPackages.xml", unified_manifest("win", app("Old", OWN)))
        lines = processing("tools") + unchanged("tools")
        self.expect_no_write(lambda: self.check_batch(stock=["tools"], load=["pkgs/new"], stdout=lines))

    def test_only_the_archives_that_change_get_a_result(self):
        self.host_archive("one.pkg", "ombix")
        self.host_archive("two.pkg", "linux_arm7")
        self.check_batch(
            stock=["one.pkg", "two.pkg"],
            load=["pkgs/new"],
            stdout=processing("one.pkg")
            + unchanged("one.pkg")
            + processing("two.pkg")
            + loaded("linux_arm7", combined("pkgs/new", "a.so"))
            + saving("Custom-two.pkg"),
            files={"Custom-two.pkg": None},
        )

    def test_extracting_does_not_touch_the_archives_directory(self):
        self.host_archive("pkg/sensor.pkg")
        os.mkdir(self.path("out"))
        os.utime(self.path("pkg"), (1_400_000_000, 1_400_000_000))
        said = "Manifest saved at out/m.xml\n"
        words = ("--manifest", "out/m.xml", "--archive", "pkg/sensor.pkg")
        self.check(*words, stdout=said, files={"out/m.xml": None})
        first = self.read("out/m.xml")
        self.check(*words, stdout=said, files={"out/m.xml": first})
        self.assertEqual(os.stat(self.path("pkg")).st_mtime, 1_400_000_000)

    def test_the_same_run_again_gives_the_same_bytes(self):
        self.host_archive()
        self.write("plugin.zext", "library")
        words = ("--file", "plugin.zext", "--archive", "sensor.pkg")
        self.check(*words, files={"sensor.pkg": None})
        first = self.read("sensor.pkg")
        self.check(*words, files={"sensor.pkg": first})


class WhenAStepFails(Untouched):
    def test_before_the_save_nothing_is_written(self):
        self.write("sensor.pkg", "no archive")
        self.write("plugin.zext", "library")
        detail = "sensor.pkg: no end record: not a ZIP archive"
        message = located("injectLibToArchiveFile", -74, detail, 1305)
        self.expect_no_write(
            lambda: self.check(
                "--file",
                "plugin.zext",
                "--archive",
                "sensor.pkg",
                stdout=refused(detail),
                stderr="TaVekUtil: Failed to inject library to archive. Error: " + message + "\n",
                status=1,
            )
        )

    def test_without_any_archive_nothing_is_written(self):
        stdout = "TaVekUtil: No Stock packages specified. Using default stock images.\n"
        os.mkdir(self.path("host/pkg"))
        self.expect_no_write(
            lambda: self.check_batch(
                stock=[],
                load=["pkgs/new"],
                stdout=stdout,
                stderr="TaVekUtil: Could not find any packages to process.\n",
                status=ABNORMAL_END,
            )
        )

    def test_files_that_were_copied_stay_and_the_manifest_is_the_old_one(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        self.write("tools/vekPackages.xml", unified_manifest("win"))
        files = [entry("VekApp", name, name) for name in ("a.dll", "missing.dll", "c.dll")]
        self.package("pkgs/new", package_manifest("New", platform("win", *files)), ["a.dll", "c.dll"])
        message = located("TaVekUtil_InjectFile", -999, no_file(combined("pkgs/new", "missing.dll")))
        self.check_batch(
            stock=["tools"],
            load=["pkgs/new"],
            stdout=processing("tools") + copied("a.dll"),
            stderr=copy_failed(message) + archive_failed(message),
            status=1,
            files={"tools/a.dll": "content of a.dll"},
        )


@unittest.skipIf(ON_WINDOWS, "no links or owners there")
class WhatAFileIs(Untouched):
    def setUp(self):
        super().setUp()
        self.host_archive("store/real.pkg")
        self.write("plugin.zext", "library")

    def inject(self, archive):
        self.check("--file", "plugin.zext", "--archive", archive, files={"store/real.pkg": None})
        self.assertIn(b"data/12345-vekappplugin.zext", self.read("store/real.pkg"))

    def test_an_archive_is_saved_over_itself_whatever_it_was_called(self):
        os.symlink("store", self.path("shop"))
        os.symlink("../store/real.pkg", self.path("pkgs/link.pkg"))
        os.symlink("link.pkg", self.path("pkgs/link-to-link.pkg"))
        for name in ("./store/../store/real.pkg", "shop/real.pkg", "pkgs/link-to-link.pkg", "store\\real.pkg"):
            with self.subTest(name):
                self.inject(name)

    def test_a_result_goes_where_a_dangling_link_points(self):
        self.host_archive("sensor.pkg")
        os.symlink("store/result.pkg", self.path("Custom-sensor.pkg"))
        self.check_batch(
            load=["pkgs/new"],
            stdout=processing("sensor.pkg")
            + loaded("linux_arm7", combined("pkgs/new", "a.so"))
            + saving("Custom-sensor.pkg"),
            files={"store/result.pkg": None},
        )
        self.assertTrue(os.path.islink(self.path("Custom-sensor.pkg")))

    @unittest.skipIf(os.name != "posix" or os.getuid() != 0, "only root may give files away")
    def test_the_owner_and_every_permission_stay(self):
        os.chown(self.path("store/real.pkg"), NOBODY, NOBODY)
        os.chmod(self.path("store/real.pkg"), 0o2750)
        self.inject("store/real.pkg")
        status = os.stat(self.path("store/real.pkg"))
        self.assertEqual((status.st_uid, status.st_gid), (NOBODY, NOBODY))
        self.assertEqual(status.st_mode & 0o7777, 0o2750)

    def test_other_names_of_a_replaced_file_keep_the_old_one(self):
        os.link(self.path("store/real.pkg"), self.path("store/other-name.pkg"))
        old = self.read("store/real.pkg")
        self.inject("store/real.pkg")
        self.assertEqual(self.read("store/other-name.pkg"), old)
