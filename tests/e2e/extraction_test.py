"""Writing the manifest of an archive to a file."""

import os
import unittest

from harness.documents import app, entry, unified_manifest
from harness.executable import executable
from harness.messages import extraction_failed, no_file, refused
from harness.patterns import located
from harness.program import ON_WINDOWS
from harness.scenario import EXECUTABLE_PATH, Scenario


class Extraction(Scenario):
    def extract(self, archive="sensor.pkg", name="m.xml", **expected):
        self.check("--archive", archive, "--manifest", name, **expected)

    def expect_saved(self, manifest, archive="sensor.pkg", name="m.xml"):
        self.extract(
            archive, name, stdout=f"Manifest saved at {name}\n", files={os.path.normpath(name): manifest}
        )

    def expect_failed(self, message, stdout="", archive="sensor.pkg", name="m.xml", **options):
        self.extract(archive, name, stdout=stdout, stderr=extraction_failed(message), status=1, **options)


class Saved(Extraction):
    def test_an_archive_without_manifest_gives_a_fresh_one_and_stays_without(self):
        for platform in ("linux_arm7", "linux_arm64", "ombix"):
            self.host_archive("sensor.pkg", platform)
            self.expect_saved(unified_manifest(platform))

    def test_a_manifest_in_the_archive_is_given_byte_for_byte(self):
        manifest = unified_manifest(
            "linux_arm7", app("Alpha", entry("VekApp", "a.so", "/user/a.so")), be_version="1.0"
        )
        manifest = manifest.replace("\n", "\r\n").replace("<VekApp ", "<!-- kept --><VekApp\t")
        self.host_archive(manifest=manifest)
        self.expect_saved(manifest.encode())

    def test_an_installation_directory_without_manifest_gives_a_fresh_one(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        self.expect_saved(unified_manifest("win"), archive="tools")

    def test_the_manifest_of_an_installation_directory(self):
        manifest = unified_manifest("win", app("Alpha"), be_version="any")
        self.write("tools/" + EXECUTABLE_PATH, "no executable")
        self.write("tools/vekPackages.xml", manifest)
        self.expect_saved(manifest, archive="tools")

    def test_the_name_is_repeated_as_typed_and_taken_from_the_working_directory(self):
        self.host_archive()
        os.mkdir(self.path("out"))
        self.expect_saved(unified_manifest("linux_arm7"), name="./out/../m.xml")
        self.expect_saved(unified_manifest("linux_arm7"), name="out/größe & co.xml")

    def test_an_old_file_is_replaced(self):
        self.host_archive()
        self.write("m.xml", "x" * 100000)
        if not ON_WINDOWS:
            os.chmod(self.path("m.xml"), 0o640)
        self.expect_saved(unified_manifest("linux_arm7"))

    def test_a_name_of_255_characters(self):
        self.host_archive()
        self.expect_saved(unified_manifest("linux_arm7"), name="m" * 255)

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_a_link_is_followed(self):
        self.host_archive()
        self.write("target.xml")
        os.symlink("target.xml", self.path("m.xml"))
        self.extract(stdout="Manifest saved at m.xml\n", files={"target.xml": unified_manifest("linux_arm7")})

    @unittest.skipIf(ON_WINDOWS, "no such device there")
    def test_a_device_is_written_directly(self):
        self.described = False  # the manifest is printed
        self.host_archive()
        self.extract(
            name="/dev/stdout", stdout=unified_manifest("linux_arm7") + "Manifest saved at /dev/stdout\n"
        )
        self.extract(name="/dev/null", stdout="Manifest saved at /dev/null\n")


class Failure(Extraction):
    def test_no_archive(self):
        self.expect_failed("Path not found: sensor.pkg")

    def test_no_container(self):
        self.write("sensor.pkg", "plain text, and long enough for an end record")
        self.expect_failed(
            "Invalid Archive Path: sensor.pkg", stdout=refused("sensor.pkg: no end record: not a ZIP archive")
        )

    def test_a_directory_that_does_not_exist(self):
        self.host_archive()
        self.expect_failed(located("extractManifest", -999, no_file("out/m.xml"), 1329), name="out/m.xml")

    def test_the_archive_itself(self):
        self.host_archive()
        for name in ("sensor.pkg", "./sensor.pkg"):
            message = located("extractManifest", -22, name + ": that is the archive itself", 1329)
            self.expect_failed(message, name=name)

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_a_link_to_the_archive(self):
        self.host_archive()
        os.symlink("sensor.pkg", self.path("m.xml"))
        self.expect_failed(located("extractManifest", -22, "m.xml: that is the archive itself", 1329))

    def test_a_directory_for_a_file(self):
        self.host_archive()
        os.mkdir(self.path("out"))
        self.expect_failed(located("extractManifest", -5, "out: Is a directory", 1329), name="out")

    @unittest.skipIf(ON_WINDOWS, "no such device there")
    def test_a_full_disk(self):
        self.host_archive()
        self.expect_failed(
            located("extractManifest", -5, "/dev/full: No space left on device", 1329), name="/dev/full"
        )

    @unittest.skipIf(ON_WINDOWS, "no such limit there")
    def test_a_full_disk_leaves_the_old_file(self):
        self.host_archive()
        self.write("m.xml", "old")
        self.expect_failed(located("extractManifest", -5, "m.xml: File too large", 1329), file_size=20)

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_directory_that_may_not_be_written(self):
        self.host_archive()
        self.expect_failed(
            located("extractManifest", -5, "m.xml: Permission denied", 1329), unprivileged=True
        )
