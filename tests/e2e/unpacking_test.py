"""Packages that are tar files: where they are unpacked, by what, and what happens when that fails."""

import os
import unittest

from harness.documents import entry, package_manifest, platform
from harness.messages import loaded, processing, saving
from harness.patterns import Pattern, located
from harness.program import ON_WINDOWS, combined
from harness.scenario import DIRECTORY
from packages_test import MANIFEST, Packages

TAR_COMPLAINT = Pattern(r"(?:.*tar.*\n)+")


class TarFiles(Packages):
    def packed(self, name, manifest=None, *options):
        self.package("packing", manifest or self.one_file, ["a.so"])
        self.tar(name, "packing", *options)

    def unpacking(self, directory):
        return self.unpacked(directory, "a.so", "vek_manifest.xml")


class Unpacking(TarFiles):
    def expect_unpacked(self, archive, directory):
        self.expect_loaded(archive, directory, files=self.unpacking(directory))

    def test_an_archive_is_unpacked_beside_itself(self):
        self.packed("pkgs/app.tar")
        self.expect_unpacked("pkgs/app.tar", "pkgs/app")

    def test_only_the_last_extension_is_stripped(self):
        self.packed("pkgs/app.v1.tar")
        self.expect_unpacked("pkgs/app.v1.tar", "pkgs/app.v1")

    def test_a_compressed_archive(self):
        self.packed("pkgs/app.tar.gz", None, "-z")
        self.expect_unpacked("pkgs/app.tar.gz", "pkgs/app.tar")

    def test_an_existing_directory_is_reused(self):
        self.packed("pkgs/app.tar")
        self.write("pkgs/app/kept.dat", "kept")
        self.write("pkgs/app/a.so", "old")
        self.expect_loaded(
            "pkgs/app.tar",
            "pkgs/app",
            files={"pkgs/app/a.so": "content of a.so", "pkgs/app/vek_manifest.xml": None},
        )

    def test_files_in_subdirectories(self):
        self.package(
            "packing",
            package_manifest("New", platform("linux_arm7", entry("VekApp", "lib/a.so", "/a"))),
            ["lib/a.so"],
        )
        self.tar("pkgs/app.tar", "packing")
        unpacked = self.unpacked("pkgs/app", "vek_manifest.xml", "lib/a.so") | {"pkgs/app/lib": DIRECTORY}
        self.expect_loaded("pkgs/app.tar", "pkgs/app", "lib/a.so", files=unpacked)

    def test_a_path_written_on_windows(self):
        self.packed("pkgs/app.tar")
        self.expect_loaded("pkgs\\app.tar", "pkgs\\app", files=self.unpacking("pkgs/app"))

    def test_several_archives_in_order(self):
        for name in ("b", "a"):
            self.package(
                "packing",
                self.one_file.replace("New", name).replace("/a<", f"/{name}<").replace("a.so", name),
                [name],
            )
            self.tar(f"{name}.tar", "packing")
        self.check_batch(
            load=["b.tar", "a.tar"],
            stdout=processing("sensor.pkg")
            + loaded("linux_arm7", combined("b", "b"))
            + loaded("linux_arm7", combined("a", "a"))
            + saving("Custom-sensor.pkg"),
            files={"Custom-sensor.pkg": None}
            | self.unpacked("a", "a", "vek_manifest.xml")
            | self.unpacked("b", "b", "vek_manifest.xml"),
        )

    @unittest.skipIf(ON_WINDOWS, "the command interpreter there has its own rules")
    def test_names_never_reach_a_shell(self):
        for name in (
            "a b",
            "it's",
            '"quoted"',
            "$(touch x)",
            "`touch x`",
            "a;touch x",
            "a&touch x",
            "a|touch x",
            "a>x",
            "$HOME",
            "*",
            "-x",
            "--help",
            "größe",
            "new\nline",
            "a:b",
            "%PATH%",
            "~",
            "#",
            "tab\t",
            "!",
        ):
            with self.subTest(name):
                self.described = "\n" not in name
                self.packed(name + ".tar")
                self.expect_unpacked(name + ".tar", name)


class TarProgram(TarFiles):
    def fake(self, script):
        self.foreseeable = False  # planning would run it, too
        os.remove(self.path("host/bin/win64/tar.exe"))
        self.write("host/bin/win64/tar.exe", "#!/bin/sh\n" + script)
        os.chmod(self.path("host/bin/win64/tar.exe"), 0o755)

    def untar_failed(self, package, result):
        return f"TaVekUtil: Failed to untar: {package}\nTaVekUtil: Result: {result}\n"

    def expect_untar_fails(self, package, result, complaint="", files=None):
        self.expect_failed(
            "failure (status 0)", package, complaint + self.untar_failed(package, result), files=files
        )

    @unittest.skipIf(ON_WINDOWS, "no scripts there")
    def test_it_is_the_one_beside_the_program_with_these_arguments(self):
        self.fake('printf "<%s>\\n" "$@" > arguments; exit 3\n')
        arguments = "".join(
            f"<{word}>\n" for word in ("--force-local", "-C", "pkgs/my app", "-xvf", "pkgs/my app.tar")
        )
        os.mkdir(self.path("pkgs"))
        self.expect_untar_fails(
            "pkgs/my app.tar", 3, files={"arguments": arguments, "pkgs/my app": DIRECTORY}
        )

    @unittest.skipIf(ON_WINDOWS, "no scripts there")
    def test_its_output_is_silenced_and_its_errors_are_not(self):
        self.fake("echo out; echo tar: err >&2; exit 1\n")
        self.expect_untar_fails("x.tar", 1, "tar: err\n", files={"x": DIRECTORY})

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
        self.expect_failed(
            located(MANIFEST, -999, combined("APP.TAR", "vek_manifest.xml") + ": Not a directory"), "APP.TAR"
        )

    def test_an_extraction_directory_that_cannot_be_created(self):
        self.packed("pkgs/app.tar")
        self.write("pkgs/app", "a file")
        self.expect_failed(located("TaVekUtil_Untar_VekApp", -5, "pkgs/app: File exists"), "pkgs/app.tar")

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_an_extraction_directory_that_may_not_be_created(self):
        self.packed("pkgs/app.tar")
        self.expect_failed(
            located("TaVekUtil_Untar_VekApp", -5, "pkgs/app: Permission denied"),
            "pkgs/app.tar",
            unprivileged=True,
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_an_archive_that_may_not_be_read(self):
        self.packed("app.tar")
        os.mkdir(self.path("app"))
        os.chmod(self.path("app.tar"), 0)
        complaint = TAR_COMPLAINT + self.untar_failed("app.tar", 2)
        self.expect_failed("failure (status 0)", "app.tar", complaint, unprivileged=True)

    def test_an_archive_without_manifest_at_its_top(self):
        self.package("packing/deep", self.one_file, ["a.so"])
        self.tar("app.tar", "packing")
        unpacked = self.unpacked("app/deep", "a.so", "vek_manifest.xml") | {"app": DIRECTORY}
        self.expect_failed(
            located(MANIFEST, -999, combined("app.tar", "vek_manifest.xml") + ": Not a directory"),
            "app.tar",
            files=unpacked,
        )
