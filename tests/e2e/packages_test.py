"""Add-on packages: their directory, their manifest, the files of the selected platform."""

import os
import unittest

from harness.documents import HOST_VERSION, element, entry, package_manifest, platform
from harness.messages import (
    PACKAGES_FAILED,
    PLATFORM_FILES_FAILED,
    attribute_too_long,
    batch_failed,
    loaded,
    no_attribute,
    no_element,
    no_file,
    path_too_long,
    processing,
    saving,
    text_too_long,
    unchanged,
    version_mismatch,
)
from harness.patterns import located
from harness.program import ON_WINDOWS, combined
from harness.scenario import Scenario

MANIFEST = "TaVekUtil_Load_VekPkg_Manifest"
FILES = "TaVekUtil_Load_VekPkg_Files"


class Packages(Scenario):
    one_file = package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a")))

    def setUp(self):
        super().setUp()
        self.host_archive("sensor.pkg")

    def expect_loaded(self, package, directory, *names, files=None, **options):
        """Adds the package and expects its files under `directory`; `files` is what the run left besides."""
        progress = "".join(loaded("linux_arm7", combined(directory, name)) for name in names or ["a.so"])
        self.check_batch(
            load=[package],
            files={"Custom-sensor.pkg": None} | (files or {}),
            stdout=processing("sensor.pkg") + progress + saving("Custom-sensor.pkg"),
            **options,
        )

    def expect_failed(self, message, package="pkgs/new", before="", files=None, **options):
        self.check_batch(
            load=[package],
            stderr=before + PACKAGES_FAILED + batch_failed(message),
            status=1,
            files=files,
            **options,
        )


class Directories(Packages):
    def test_an_unpacked_package(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        self.expect_loaded("pkgs/new", "pkgs/new")

    def test_the_path_is_kept_as_written_but_for_separators_at_its_end(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        for written, printed in (
            ("./pkgs/../pkgs/new", "./pkgs/../pkgs/new"),
            ("pkgs/new/", "pkgs/new"),
            ("pkgs\\new\\", "pkgs\\new"),
        ):
            self.expect_loaded(written, printed)

    def test_one_without_manifest(self):
        os.makedirs(self.path("pkgs/new"))
        for package in ("pkgs/new", "pkgs/missing"):
            self.expect_failed(
                located(MANIFEST, -999, no_file(combined(package, "vek_manifest.xml"))), package
            )

    def test_an_empty_entry_is_never_the_working_directory(self):
        self.package(".", self.one_file, ["a.so"])
        self.expect_failed(located(MANIFEST, -999, "the package entry is empty"), "")

    def test_a_directory_in_place_of_the_manifest(self):
        os.makedirs(self.path("pkgs/new/vek_manifest.xml"))
        self.expect_failed(
            located(MANIFEST, -5, combined("pkgs/new", "vek_manifest.xml") + ": Is a directory")
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_manifest_that_may_not_be_read(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        os.chmod(self.path("pkgs/new/vek_manifest.xml"), 0)
        self.expect_failed(
            located(MANIFEST, -5, "pkgs/new/vek_manifest.xml: Permission denied"), unprivileged=True
        )

    def test_a_path_that_is_too_long(self):
        self.expect_failed(
            located(MANIFEST, -75, path_too_long(combined("p" * 500, "vek_manifest.xml"))), "p" * 500
        )


class Manifests(Packages):
    path_of_manifest = combined("pkgs/new", "vek_manifest.xml")

    def expect_manifest_refused(self, text, status, detail):
        self.package("pkgs/new", text, ["a.so"])
        self.expect_failed(located(MANIFEST, status, detail))

    def test_one_that_is_no_document(self):
        self.expect_manifest_refused(
            "<VekAppPackage>\n</VekApp>",
            -74,
            self.path_of_manifest + ":2:1: </VekApp> closes <VekAppPackage>",
        )
        self.expect_manifest_refused(
            "", -74, self.path_of_manifest + ":1:1: the document has no root element"
        )

    def test_what_must_be_there(self):
        self.expect_manifest_refused(
            self.one_file.replace("<BeVersion>*</BeVersion>", ""), -999, no_element("BeVersion")
        )
        self.expect_manifest_refused(
            self.one_file.replace(' name="New"', ""), -999, no_attribute("VekApp", "name")
        )
        self.expect_manifest_refused(
            self.one_file.replace("VekApp ", "Other ").replace("/VekApp>", "/Other>"),
            -999,
            no_element("VekApp"),
        )
        self.expect_manifest_refused("<VekAppPackage/>", -999, no_element("BeVersion"))

    def test_the_version_has_up_to_31_characters(self):
        self.expect_manifest_refused(
            self.one_file.replace("*", "9" * 32), -75, text_too_long("BeVersion", 32)
        )
        self.package("pkgs/new", self.one_file.replace("*", "9" * 31), ["a.so"])
        self.check_batch(
            load=["pkgs/new"],
            stdout=processing("sensor.pkg") + unchanged("sensor.pkg"),
            stderr=version_mismatch(HOST_VERSION, "New", "9" * 31),
        )

    def test_the_name_has_up_to_255_characters(self):
        self.expect_manifest_refused(
            self.one_file.replace("New", "n" * 256), -75, attribute_too_long("VekApp", "name", 256)
        )
        self.package("pkgs/new", self.one_file.replace("New", "n" * 255).replace("*", "5"), ["a.so"])
        self.check_batch(
            load=["pkgs/new"],
            stdout=processing("sensor.pkg") + unchanged("sensor.pkg"),
            stderr=version_mismatch(HOST_VERSION, "n" * 255, "5"),
        )


class Files(Packages):
    def expect_file_refused(self, status, detail, *children, name="linux_arm7"):
        self.package("pkgs/new", package_manifest("New", platform(name, *children)), ["a.so"])
        self.expect_failed(located(FILES, status, detail), before=PLATFORM_FILES_FAILED)

    def test_what_must_be_there(self):
        source, destination = element("Source", None, "a.so"), element("Destination", None, "/a")
        self.expect_file_refused(
            -999, no_attribute("File", "type"), element("File", None, [source, destination])
        )
        self.expect_file_refused(
            -999, no_element("Source"), element("File", {"type": "VekApp"}, [destination])
        )
        self.expect_file_refused(
            -999, no_element("Destination"), element("File", {"type": "VekApp"}, [source])
        )
        self.expect_file_refused(-999, no_element("Source"), element("File", {"type": "VekApp"}))

    def test_a_platform_without_name(self):
        self.package("pkgs/new", self.one_file.replace(' name="linux_arm7"', ""), ["a.so"])
        self.expect_failed(
            located(FILES, -999, no_attribute("Platform", "name")), before=PLATFORM_FILES_FAILED
        )

    def test_lengths(self):
        self.expect_file_refused(-75, attribute_too_long("File", "type", 32), entry("t" * 32, "a.so", "/a"))
        self.expect_file_refused(-75, text_too_long("Source", 512), entry("VekApp", "s" * 512, "/a"))
        self.expect_file_refused(
            -75, path_too_long(combined("pkgs/new", "s" * 505)), entry("VekApp", "s" * 505, "/a")
        )
        self.expect_file_refused(-75, text_too_long("Destination", 512), entry("VekApp", "a.so", "/" * 512))
        self.expect_file_refused(
            -75, attribute_too_long("Platform", "name", 512), entry("VekApp", "a.so", "/a"), name="p" * 512
        )

    def test_the_longest_that_fit(self):
        long_source = "./" * 240 + "a.so"
        self.package(
            "pkgs/new",
            package_manifest(
                "New",
                platform("p" * 511),
                platform("linux_arm7", entry("t" * 31, long_source, "/" + "d" * 510)),
            ),
            ["a.so"],
        )
        self.expect_loaded("pkgs/new", "pkgs/new", long_source)

    def test_names_of_platform_and_file_elements_do_not_matter(self):
        text = self.one_file.replace("<Platform", "<Any").replace("/Platform", "/Any")
        self.package("pkgs/new", text.replace("<File", "<Thing").replace("/File", "/Thing"), ["a.so"])
        self.expect_loaded("pkgs/new", "pkgs/new")

    def test_a_failure_in_a_later_package_ends_the_run_before_any_archive(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        self.check_batch(
            load=["pkgs/new", "pkgs/missing"],
            status=1,
            stderr=PACKAGES_FAILED
            + batch_failed(located(MANIFEST, -999, no_file(combined("pkgs/missing", "vek_manifest.xml")))),
        )


class SelectedPlatform(Packages):
    def expect_nothing(self, selected, *platforms):
        self.package("pkgs/new", package_manifest("New", *platforms), ["a.so"])
        self.check_batch(
            selected, load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg")
        )

    def test_its_files_and_no_others(self):
        files = [
            platform("linux_arm7", entry("VekApp", "a.so", "/a")),
            platform("linux_arm64", entry("VekApp", "a.so", "/b")),
        ]
        self.package("pkgs/new", package_manifest("New", *files), ["a.so"])
        for selected in (None, "all", "linux_arm7"):
            self.expect_loaded("pkgs/new", "pkgs/new", platform=selected)

    def test_a_package_without_files_for_it_is_dropped_silently(self):
        own = entry("VekApp", "a.so", "/a")
        for selected in ("linux_arm64", "ombix", "win"):
            self.expect_nothing(selected, platform("linux_arm7", own), platform(selected))
            self.expect_nothing(selected, platform("linux_arm7", own))
        self.expect_nothing("all")
        self.expect_nothing(
            "linux_arm7",
            platform("linux_arm7x", own),
            platform("Linux_arm7", own),
            platform("linux_arm", own),
        )

    def test_a_dropped_package_is_not_checked_for_its_version(self):
        self.package("pkgs/new", self.one_file.replace("*", "5"), ["a.so"])
        self.check_batch("win", load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))

    def test_the_elements_of_other_platforms_are_not_checked(self):
        broken = platform("linux_arm64", element("File"))
        self.package(
            "pkgs/new",
            package_manifest("New", broken, platform("linux_arm7", entry("VekApp", "a.so", "/a"))),
            ["a.so"],
        )
        self.expect_loaded("pkgs/new", "pkgs/new", platform="linux_arm7")
        self.expect_failed(located(FILES, -999, no_attribute("File", "type")), before=PLATFORM_FILES_FAILED)
