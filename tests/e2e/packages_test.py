"""Add-on packages: unpacking, their manifest, the files of the selected platform."""

import os
import unittest

from harness.documents import DECLARATION, HOST_VERSION, element, entry, package_manifest, platform
from harness.messages import (PACKAGES_FAILED, PLATFORM_FILES_FAILED, batch_failed, loaded, processing, saving, unchanged,
                              version_mismatch)
from harness.patterns import Pattern, anything, containing, located
from harness.program import ON_WINDOWS, combined
from harness.scenario import DIRECTORY, Scenario

MANIFEST = "TaVekUtil_Load_VekPkg_Manifest"
FILES = "TaVekUtil_Load_VekPkg_Files"
TAR_COMPLAINT = Pattern(r"(?:.*tar.*\n)+")


class Packages(Scenario):
    one_file = package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a")))

    def setUp(self):
        super().setUp()
        self.host_archive("sensor.pkg")

    def expect_loaded(self, package, directory, *names, files=None, **options):
        """Adds the package and expects its files under `directory`; `files` is what unpacking left behind."""
        progress = "".join(loaded("linux_arm7", combined(directory, name)) for name in names or ["a.so"])
        self.check_batch(load=[package], files={"Custom-sensor.pkg": None} | (files or {}),
                         stdout=processing("sensor.pkg") + progress + saving("Custom-sensor.pkg"), **options)

    def expect_failed(self, message, package="pkgs/new", before="", files=None, **options):
        self.check_batch(load=[package], stderr=before + PACKAGES_FAILED + batch_failed(message), status=1, files=files,
                         **options)

    def packed(self, name, manifest=None, *options):
        self.package("packing", manifest or self.one_file, ["a.so"])
        self.tar(name, "packing", *options)

    def unpacking(self, directory):
        return self.unpacked(directory, "a.so", "vek_manifest.xml")


class Unpacking(Packages):
    def expect_unpacked(self, archive, directory):
        self.expect_loaded(archive, directory, files=self.unpacking(directory))

    def test_an_archive_is_unpacked_beside_itself(self):
        self.packed("pkgs/app.tar")
        self.expect_unpacked("pkgs/app.tar", "pkgs/app")

    def test_only_the_last_extension_is_stripped(self):
        self.packed("pkgs/app.v1.tar")
        self.expect_unpacked("pkgs/app.v1.tar", "pkgs/app.v1")

    @unittest.skipIf(ON_WINDOWS, "the tar program of these tests does not decompress")
    def test_a_compressed_archive(self):
        self.packed("pkgs/app.tar.gz", None, "-z")
        self.expect_unpacked("pkgs/app.tar.gz", "pkgs/app.tar")

    def test_an_existing_directory_is_reused(self):
        self.packed("pkgs/app.tar")
        self.write("pkgs/app/kept.dat", "kept")
        self.write("pkgs/app/a.so", "old")
        self.expect_loaded("pkgs/app.tar", "pkgs/app", files={"pkgs/app/a.so": "content of a.so", "pkgs/app/vek_manifest.xml": None})

    def test_files_in_subdirectories(self):
        self.package("packing", package_manifest("New", platform("linux_arm7", entry("VekApp", "lib/a.so", "/a"))), ["lib/a.so"])
        self.tar("pkgs/app.tar", "packing")
        unpacked = self.unpacked("pkgs/app", "vek_manifest.xml", "lib/a.so") | {"pkgs/app/lib": DIRECTORY}
        self.expect_loaded("pkgs/app.tar", "pkgs/app", "lib/a.so", files=unpacked)

    def test_a_path_written_on_windows(self):
        self.packed("pkgs/app.tar")
        self.expect_loaded("pkgs\\app.tar", "pkgs\\app", files=self.unpacking("pkgs/app"))

    def test_several_archives_in_order(self):
        for name in ("b", "a"):
            self.package("packing", self.one_file.replace("New", name).replace("/a<", f"/{name}<").replace("a.so", name), [name])
            self.tar(f"{name}.tar", "packing")
        self.check_batch(load=["b.tar", "a.tar"], stdout=processing("sensor.pkg") + loaded("linux_arm7", combined("b", "b"))
                         + loaded("linux_arm7", combined("a", "a")) + saving("Custom-sensor.pkg"),
                         files={"Custom-sensor.pkg": None} | self.unpacked("a", "a", "vek_manifest.xml")
                         | self.unpacked("b", "b", "vek_manifest.xml"))

    @unittest.skipIf(ON_WINDOWS, "the command interpreter there has its own rules")
    def test_names_never_reach_a_shell(self):
        for name in ("a b", "it's", '"quoted"', "$(touch x)", "`touch x`", "a;touch x", "a&touch x", "a|touch x", "a>x", "$HOME",
                     "*", "-x", "--help", "größe", "new\nline", "a:b", "%PATH%", "~", "#", "tab\t", "!"):
            with self.subTest(name):
                self.packed(name + ".tar")
                self.expect_unpacked(name + ".tar", name)


class TarProgram(Packages):
    def fake(self, script):
        os.remove(self.path("host/bin/win64/tar.exe"))
        self.write("host/bin/win64/tar.exe", "#!/bin/sh\n" + script)
        os.chmod(self.path("host/bin/win64/tar.exe"), 0o755)

    def untar_failed(self, package, result):
        return f"TaVekUtil: Failed to untar: {package}\nTaVekUtil: Result: {result}\n"

    def expect_untar_fails(self, package, result, complaint="", files=None):
        self.expect_failed("failure (status 0)", package, complaint + self.untar_failed(package, result), files=files)

    @unittest.skipIf(ON_WINDOWS, "no scripts there")
    def test_it_is_the_one_beside_the_program_with_these_arguments(self):
        self.fake('printf "<%s>\\n" "$@" > arguments; exit 3\n')
        arguments = "".join(f"<{word}>\n" for word in ("--force-local", "-C", "pkgs/my app", "-xvf", "pkgs/my app.tar"))
        os.mkdir(self.path("pkgs"))
        self.expect_untar_fails("pkgs/my app.tar", 3, files={"arguments": arguments, "pkgs/my app": DIRECTORY})

    @unittest.skipIf(ON_WINDOWS, "no scripts there")
    def test_its_output_is_silenced_and_its_errors_are_not(self):
        self.fake("echo out; echo err >&2; exit 1\n")
        self.expect_untar_fails("x.tar", 1, "err\n", files={"x": DIRECTORY})

    @unittest.skipIf(ON_WINDOWS, "the command interpreter answers there")
    def test_without_one(self):
        os.remove(self.path("host/bin/win64/tar.exe"))
        self.packed("app.tar")
        self.expect_untar_fails("app.tar", 127, files={"app": DIRECTORY})

    def test_no_such_archive(self):
        self.expect_untar_fails("missing.tar", 2, TAR_COMPLAINT, files={"missing": DIRECTORY})

    def test_what_is_no_archive(self):
        self.write("broken.tar", "this is no tar archive at all, " * 40)
        self.expect_untar_fails("broken.tar", 2, TAR_COMPLAINT, files={"broken": DIRECTORY})

    def test_a_directory_whose_path_holds_tar_is_handed_to_it_all_the_same(self):
        self.package("old.tar.d/new", self.one_file, ["a.so"])
        self.expect_untar_fails("old.tar.d/new", 2, TAR_COMPLAINT)

    def test_letter_case_decides_what_is_an_archive(self):
        self.packed("APP.TAR")
        self.expect_failed(located(MANIFEST, -999, containing("vek_manifest.xml")), "APP.TAR")

    def test_an_extraction_directory_that_cannot_be_created(self):
        self.packed("pkgs/app.tar")
        self.write("pkgs/app", "a file")
        self.expect_failed(located("TaVekUtil_Untar_VekApp", -5, containing("pkgs/app")), "pkgs/app.tar")

    def test_an_archive_without_manifest_at_its_top(self):
        self.package("packing/deep", self.one_file, ["a.so"])
        self.tar("app.tar", "packing")
        unpacked = self.unpacked("app/deep", "a.so", "vek_manifest.xml") | {"app": DIRECTORY}
        self.expect_failed(located(MANIFEST, -999, containing("vek_manifest.xml")), "app.tar", files=unpacked)


class Directories(Packages):
    def test_an_unpacked_package(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        self.expect_loaded("pkgs/new", "pkgs/new")

    def test_the_path_is_kept_as_written_but_for_separators_at_its_end(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        for written, printed in (("./pkgs/../pkgs/new", "./pkgs/../pkgs/new"), ("pkgs/new/", "pkgs/new"), ("pkgs\\new\\", "pkgs\\new")):
            self.expect_loaded(written, printed)

    def test_one_without_manifest(self):
        os.makedirs(self.path("pkgs/new"))
        for package in ("pkgs/new", "pkgs/missing", "sensor.pkg"):
            self.expect_failed(located(MANIFEST, -999, containing(combined(package, "vek_manifest.xml"))), package)

    def test_an_empty_entry_is_never_the_working_directory(self):
        self.package(".", self.one_file, ["a.so"])
        self.expect_failed(located(MANIFEST, -999, anything()), "")

    def test_a_directory_in_place_of_the_manifest(self):
        os.makedirs(self.path("pkgs/new/vek_manifest.xml"))
        self.expect_failed(located(MANIFEST, -5, combined("pkgs/new", "vek_manifest.xml") + ": Is a directory"))

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_manifest_that_may_not_be_read(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        os.chmod(self.path("pkgs/new/vek_manifest.xml"), 0)
        self.expect_failed(located(MANIFEST, -5, "pkgs/new/vek_manifest.xml: Permission denied"), unprivileged=True)

    def test_a_path_that_is_too_long(self):
        self.expect_failed(located(MANIFEST, -75, anything()), "p" * 500)


class Manifests(Packages):
    def expect_manifest_refused(self, text, status, detail=None):
        self.package("pkgs/new", text, ["a.so"])
        self.expect_failed(located(MANIFEST, status, anything() if detail is None else containing(detail)))

    def test_one_that_is_no_document(self):
        self.expect_manifest_refused("<VekAppPackage>\n</VekApp>", -74, "vek_manifest.xml:2:")
        self.expect_manifest_refused("", -74, "vek_manifest.xml:1:1")

    def test_what_must_be_there(self):
        for missing in ("<BeVersion>*</BeVersion>", ' name="New"'):
            self.expect_manifest_refused(self.one_file.replace(missing, ""), -999)
        self.expect_manifest_refused(DECLARATION + "<VekAppPackage><BeVersion>*</BeVersion></VekAppPackage>", -999)

    def test_the_version_has_up_to_31_characters(self):
        self.expect_manifest_refused(self.one_file.replace("*", "9" * 32), -75)
        self.package("pkgs/new", self.one_file.replace("*", "9" * 31), ["a.so"])
        self.check_batch(load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"),
                         stderr=version_mismatch(HOST_VERSION, "New", "9" * 31))

    def test_the_name_has_up_to_255_characters(self):
        self.expect_manifest_refused(self.one_file.replace("New", "n" * 256), -75)
        self.package("pkgs/new", self.one_file.replace("New", "n" * 255).replace("*", "5"), ["a.so"])
        self.check_batch(load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"),
                         stderr=version_mismatch(HOST_VERSION, "n" * 255, "5"))


class Files(Packages):
    def expect_file_refused(self, status, *children, name="linux_arm7"):
        self.package("pkgs/new", package_manifest("New", platform(name, *children)), ["a.so"])
        self.expect_failed(located(FILES, status, anything()), before=PLATFORM_FILES_FAILED)

    def test_what_must_be_there(self):
        source, destination = element("Source", None, "a.so"), element("Destination", None, "/a")
        self.expect_file_refused(-999, element("File", None, [source, destination]))
        self.expect_file_refused(-999, element("File", {"type": "VekApp"}, [destination]))
        self.expect_file_refused(-999, element("File", {"type": "VekApp"}, [source]))

    def test_a_platform_without_name(self):
        self.package("pkgs/new", self.one_file.replace(' name="linux_arm7"', ""), ["a.so"])
        self.expect_failed(located(FILES, -999, anything()), before=PLATFORM_FILES_FAILED)

    def test_lengths(self):
        self.expect_file_refused(-75, entry("t" * 32, "a.so", "/a"))
        self.expect_file_refused(-75, entry("VekApp", "s" * 512, "/a"))
        self.expect_file_refused(-75, entry("VekApp", "s" * 505, "/a"))
        self.expect_file_refused(-75, entry("VekApp", "a.so", "/" * 512))
        self.expect_file_refused(-75, entry("VekApp", "a.so", "/a"), name="p" * 512)

    def test_the_longest_that_fit(self):
        long_source = "./" * 240 + "a.so"
        self.package("pkgs/new", package_manifest("New", platform("p" * 511), platform(
            "linux_arm7", entry("t" * 31, long_source, "/" + "d" * 510))), ["a.so"])
        self.expect_loaded("pkgs/new", "pkgs/new", long_source)

    def test_names_of_platform_and_file_elements_do_not_matter(self):
        text = self.one_file.replace("<Platform", "<Any").replace("/Platform", "/Any")
        self.package("pkgs/new", text.replace("<File", "<Thing").replace("/File", "/Thing"), ["a.so"])
        self.expect_loaded("pkgs/new", "pkgs/new")

    def test_a_failure_in_a_later_package_ends_the_run_before_any_archive(self):
        self.package("pkgs/new", self.one_file, ["a.so"])
        self.check_batch(load=["pkgs/new", "pkgs/missing"], status=1, stderr=PACKAGES_FAILED + batch_failed(
            located(MANIFEST, -999, containing("pkgs/missing"))))


class SelectedPlatform(Packages):
    def expect_nothing(self, selected, *platforms):
        self.package("pkgs/new", package_manifest("New", *platforms), ["a.so"])
        self.check_batch(selected, load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))

    def test_its_files_and_no_others(self):
        files = [platform("linux_arm7", entry("VekApp", "a.so", "/a")), platform("linux_arm64", entry("VekApp", "a.so", "/b"))]
        self.package("pkgs/new", package_manifest("New", *files), ["a.so"])
        for selected in (None, "all", "linux_arm7"):
            self.expect_loaded("pkgs/new", "pkgs/new", platform=selected)

    def test_a_package_without_files_for_it_is_dropped_silently(self):
        own = entry("VekApp", "a.so", "/a")
        for selected in ("linux_arm64", "ombix", "win"):
            self.expect_nothing(selected, platform("linux_arm7", own), platform(selected))
            self.expect_nothing(selected, platform("linux_arm7", own))
        self.expect_nothing("all")
        self.expect_nothing("linux_arm7", platform("linux_arm7x", own), platform("Linux_arm7", own), platform("linux_arm", own))

    def test_a_dropped_package_is_not_checked_for_its_version(self):
        self.package("pkgs/new", self.one_file.replace("*", "5"), ["a.so"])
        self.check_batch("win", load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))

    def test_the_elements_of_other_platforms_are_not_checked(self):
        broken = platform("linux_arm64", element("File"))
        self.package("pkgs/new", package_manifest("New", broken, platform("linux_arm7", entry("VekApp", "a.so", "/a"))), ["a.so"])
        self.expect_loaded("pkgs/new", "pkgs/new", platform="linux_arm7")
        self.expect_failed(located(FILES, -999, anything()), before=PLATFORM_FILES_FAILED)
