"""What opens as an archive, and which platform and version it turns out to have."""

import os
import unittest

from harness import zip_builder
from harness.documents import (
    ARM7_MODELS,
    HOST_VERSION,
    element,
    file,
    host_script,
    script,
    unified_manifest,
    version,
)
from harness.executable import executable
from harness.messages import (
    archive_failed,
    attribute_too_long,
    extraction_failed,
    no_attribute,
    no_member,
    processing,
    refused,
    unchanged,
)
from harness.patterns import containing, located
from harness.program import ON_WINDOWS
from harness.scenario import EXECUTABLE_PATH, Scenario


class Loading(Scenario):
    def expect_manifest(self, manifest, archive="sensor.pkg"):
        self.check(
            "--archive",
            archive,
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files={"m.xml": manifest},
        )

    def expect_failed(self, message, archive="sensor.pkg", stdout="", **options):
        self.check(
            "--archive",
            archive,
            "--manifest",
            "m.xml",
            stdout=stdout,
            stderr=extraction_failed(message),
            status=1,
            **options
        )


class Platform(Loading):
    def expect_platform(self, platform, text):
        self.archive("sensor.pkg", text)
        self.expect_manifest(unified_manifest(platform))

    def test_each_model_decides(self):
        for model, platform in (
            ("R2", "linux_arm7"),
            ("R4", "linux_arm7"),
            ("R4-mc", "linux_arm7"),
            ("TX2", "ombix"),
            ("Xavier NX", "ombix"),
            ("Orin NX", "ombix"),
            ("AGX Orin", "ombix"),
            ("R6", "linux_arm64"),
            ("R8", "linux_arm64"),
        ):
            self.expect_platform(platform, script(version(HOST_VERSION), file("/a", "a", model)))

    def test_with_models_of_two_lists_arm7_goes_first_and_ombix_second(self):
        for platform, *models in (
            ("linux_arm7", "Orin NX", "R4"),
            ("ombix", "R6", "Orin NX"),
            ("linux_arm7", "R8", "R2"),
            ("linux_arm7", "AGX Orin", "R6", "R4-mc"),
        ):
            self.expect_platform(platform, script(version(HOST_VERSION), file("/a", "a", *models)))

    def test_a_model_name_counts_wherever_it_stands(self):
        for text in (
            "<!-- for R8 -->\n",
            element("Note", {"for": "R8"}),
            element("Note", None, "xR8x"),
            "<R8/>\n",
        ):
            self.expect_platform("linux_arm64", script(version(HOST_VERSION), text))

    def test_a_model_name_is_matched_with_its_letter_case(self):
        self.archive(
            "sensor.pkg", script(version(HOST_VERSION), file("/a", "a", "r2", "xavier nx", "ORIN NX"))
        )
        self.expect_failed("Could not determine platform")

    def test_no_model_at_all(self):
        self.archive("sensor.pkg", script(version(HOST_VERSION)))
        self.expect_failed("Could not determine platform")
        self.archive("sensor.pkg", "")
        self.expect_failed("Could not determine platform")

    def test_a_script_is_searched_up_to_its_first_zero_byte(self):
        self.archive("sensor.pkg", script(version(HOST_VERSION)) + "\0 R2")
        self.expect_failed("Could not determine platform")

    def test_the_platform_in_the_manifest_is_not_asked(self):
        manifest = unified_manifest("ombix")
        self.archive("sensor.pkg", script(version(HOST_VERSION)), manifest)
        self.expect_failed("Could not determine platform")

    def test_no_script(self):
        self.archive("sensor.pkg", manifest=unified_manifest("linux_arm7"))
        self.expect_failed(located("TaVekUtils_GetArchivePlatform", -999, no_member("script.xml")))

    def test_a_script_that_is_damaged_or_cannot_be_read(self):
        text = host_script()
        damaged = zip_builder.Member("script.xml", text, crc=1)
        self.archive("sensor.pkg", members=[damaged])
        self.expect_failed(
            located("TaVekUtils_GetArchivePlatform", -74, "sensor.pkg: member script.xml: checksum mismatch")
        )
        foreign = zip_builder.Member("script.xml", text, zip_builder.LZMA)
        self.archive("sensor.pkg", members=[foreign])
        self.expect_failed(
            located(
                "TaVekUtils_GetArchivePlatform",
                -95,
                "sensor.pkg: member script.xml: compression method 14 is not read",
            )
        )


class Version(Loading):
    def expect_version(self, value, *entries):
        self.archive("sensor.pkg", script(*entries, file("/a", "a", "R2")))
        self.expect_manifest(unified_manifest("linux_arm7", be_version=value))

    def expect_no_version(self, message, *entries):
        self.archive("sensor.pkg", script(*entries, file("/a", "a", "R2")))
        self.expect_failed(message)

    def test_it_stands_in_the_script(self):
        self.expect_version("6.1.2.57", version("6.1.2.57"))

    def test_it_is_taken_as_it_stands(self):
        for value in ("v7-beta", " 1 ", "größe", "007.000", "a & b", "x" * 127):
            self.expect_version(value, version(value))

    def test_the_first_of_several_counts(self):
        self.expect_version("1", version("1"), version("2"))

    def test_no_version(self):
        message = "Could not retrieve Qor BE version"
        self.expect_no_version(message)
        self.expect_no_version(message, element("version", {"value": "1"}))
        self.expect_no_version(message, element("Group", None, [version("1")]))

    def test_a_version_without_value(self):
        self.expect_no_version(
            located("TaVekUtils_GetArchiveVersion", -999, no_attribute("Version", "value")),
            element("Version", {"Value": "1"}),
        )

    def test_a_version_that_is_too_long(self):
        self.expect_no_version(
            located("TaVekUtils_GetArchiveVersion", -75, attribute_too_long("Version", "value", 128)),
            version("x" * 128),
        )

    def test_a_script_that_is_no_document(self):
        self.archive("sensor.pkg", "<Startup>\n  <File name='R2'>\n</Startup>")
        self.expect_failed(
            located("TaVekUtils_GetArchiveVersion", -74, "script.xml:3:1: </Startup> closes <File>")
        )

    def test_with_a_manifest_in_the_archive_the_version_is_not_asked(self):
        manifest = unified_manifest("linux_arm7", be_version="of its own")
        self.archive("sensor.pkg", "no document, but R2", manifest)
        self.expect_manifest(manifest)


class Path(Loading):
    def test_a_path_that_names_nothing(self):
        for path in ("missing.pkg", "missing/sensor.pkg", "missing dir"):
            self.expect_failed("Path not found: " + path, archive=path)

    def test_a_path_that_leads_through_a_file(self):
        self.host_archive()
        self.expect_failed("Path not found: sensor.pkg/x", archive="sensor.pkg/x")

    def test_a_file_that_is_no_archive(self):
        for content in (b"", b"x", b"<xml/>", bytes(5000), b"PK\3\4" + bytes(100)):
            self.write("sensor.pkg", content)
            self.expect_failed("Invalid Archive Path: sensor.pkg", stdout=refused(containing("sensor.pkg")))

    @unittest.skipIf(ON_WINDOWS, "no such files there")
    def test_what_is_no_plain_file(self):
        os.mkfifo(self.path("pipe"))
        for path in ("pipe", "/dev/null", "/dev/zero"):
            self.expect_failed("Invalid Archive Path: " + path, archive=path)

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_links_are_followed(self):
        self.host_archive("store/real.pkg")
        os.symlink("store/real.pkg", self.path("sensor.pkg"))
        self.expect_manifest(unified_manifest("linux_arm7"))
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))
        os.symlink("tools", self.path("shop"))
        self.expect_manifest(unified_manifest("win", be_version="1.2.3.4"), archive="shop")

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_links_that_lead_nowhere(self):
        os.symlink("missing", self.path("dangling"))
        os.symlink("circle", self.path("circle"))
        for path in ("dangling", "circle", "circle/x"):
            self.expect_failed("Path not found: " + path, archive=path)
        os.mkdir(self.path("tools"))
        os.symlink("bin", self.path("tools/bin"))
        self.expect_failed("Invalid Archive Path: tools", archive="tools")

    def test_a_name_that_is_longer_than_any_file_has(self):
        name = "s" * 300
        self.expect_failed("Path not found: " + name, archive=name)

    def test_a_directory_without_the_host_executable(self):
        os.makedirs(self.path("tools/bin/win64"))
        for path in ("tools", "tools/", ".", "tools/bin"):
            self.expect_failed("Invalid Archive Path: " + path, archive=path)

    def test_a_directory_with_the_host_executable_is_the_windows_platform(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))
        for path in ("tools", "tools/", "./tools", "tools\\"):
            self.expect_manifest(unified_manifest("win", be_version="1.2.3.4"), archive=path)

    def test_the_host_executable_may_be_of_any_type(self):
        os.makedirs(self.path("tools/" + EXECUTABLE_PATH))
        self.write("tools/vekPackages.xml", unified_manifest("win"))
        self.expect_manifest(unified_manifest("win"), archive="tools")

    def test_a_name_of_255_characters(self):
        name = "s" * 251 + ".pkg"
        self.host_archive(name)
        self.expect_manifest(unified_manifest("linux_arm7"), archive=name)

    def test_names_with_spaces_and_other_letters(self):
        for name in ("my sensor.pkg", "größe/ünï.pkg", "$HOME;`x`'.pkg", " .pkg"):
            self.host_archive(name)
            self.expect_manifest(unified_manifest("linux_arm7"), archive=name)

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_an_archive_that_may_not_be_read(self):
        self.host_archive()
        os.chmod(self.path("sensor.pkg"), 0)
        os.chmod(self.root, 0o777)
        self.expect_failed(
            "Invalid Archive Path: sensor.pkg",
            unprivileged=True,
            stdout=refused("sensor.pkg: Permission denied"),
        )


class InABatch(Loading):
    def test_the_same_messages_end_a_batch(self):
        self.check_batch(
            stdout=processing("sensor.pkg"), stderr=archive_failed("Path not found: sensor.pkg"), status=1
        )
        self.write("sensor.pkg", "x")
        self.check_batch(
            stdout=processing("sensor.pkg") + refused(containing("sensor.pkg")),
            stderr=archive_failed("Invalid Archive Path: sensor.pkg"),
            status=1,
        )
        self.archive("sensor.pkg", script(version("1")))
        self.check_batch(
            stdout=processing("sensor.pkg"), stderr=archive_failed("Could not determine platform"), status=1
        )
        self.archive("sensor.pkg", script(file("/a", "a", *ARM7_MODELS)))
        self.check_batch(
            stdout=processing("sensor.pkg"),
            stderr=archive_failed("Could not retrieve Qor BE version"),
            status=1,
        )

    def test_an_installation_directory_without_a_change(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))
        self.check_batch(stock=["tools"], stdout=processing("tools") + unchanged("tools"))
