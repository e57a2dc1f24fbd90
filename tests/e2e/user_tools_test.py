"""Copying the Windows files of a package into an installation directory."""

import os
import unittest

from harness.documents import app, entry, package_manifest, platform, unified_manifest
from harness.executable import executable
from harness.messages import (
    archive_failed,
    copied,
    copy_failed,
    directory_missing,
    no_file,
    path_too_long,
    processing,
)
from harness.patterns import located
from harness.program import ON_WINDOWS, combined
from harness.scenario import DIRECTORY, EXECUTABLE_PATH, Scenario


class UserTools(Scenario):
    def setUp(self):
        super().setUp()
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))

    def add(self, *entries, sources=("a.dll",), tools="tools"):
        self.package("pkgs/new", package_manifest("New", platform("win", *entries)), sources)
        return {"stock": [tools], "load": ["pkgs/new"], "platform": "win"}

    def expect_added(self, entries, progress, files, **more):
        manifest = {"tools/vekPackages.xml": unified_manifest("win", app("New", *entries))}
        batch = self.add(*entries, **more)
        self.check_batch(**batch, stdout=processing(batch["stock"][0]) + progress, files=manifest | files)

    def expect_failed(self, entries, message, **options):
        self.check_batch(
            **self.add(*entries),
            stdout=processing("tools"),
            status=1,
            stderr=copy_failed(message) + archive_failed(message),
            **options,
        )


class Copying(UserTools):
    def test_into_a_directory_that_exists(self):
        os.makedirs(self.path("tools/plugins"))
        self.expect_added(
            [entry("VekApp", "a.dll", "plugins/b.dll")],
            copied("plugins/b.dll"),
            {"tools/plugins/b.dll": "content of a.dll"},
        )

    def test_a_destination_of_a_file_name_alone(self):
        self.expect_added(
            [entry("VekApp", "a.dll", "a.dll")], copied("a.dll"), {"tools/a.dll": "content of a.dll"}
        )

    def test_a_destination_that_begins_with_a_separator(self):
        self.expect_added(
            [entry("VekApp", "a.dll", "/a.dll")], copied("/a.dll"), {"tools/a.dll": "content of a.dll"}
        )

    def test_a_destination_written_on_windows(self):
        os.makedirs(self.path("tools/plugins"))
        self.expect_added(
            [entry("VekApp", "a.dll", "plugins\\a.dll")],
            copied("plugins\\a.dll"),
            {"tools/plugins/a.dll": "content of a.dll"},
        )

    def test_an_older_file_is_replaced(self):
        self.write("tools/a.dll", "old and longer than what replaces it")
        self.expect_added(
            [entry("VekApp", "a.dll", "a.dll")], copied("a.dll"), {"tools/a.dll": "content of a.dll"}
        )

    def test_a_missing_directory_skips_the_file_and_goes_on(self):
        entries = [entry("VekApp", "a.dll", "plugins/a.dll"), entry("VekApp", "a.dll", "b.dll")]
        self.expect_added(
            entries,
            directory_missing(combined("tools", "plugins/a.dll")) + copied("b.dll"),
            {"tools/b.dll": "content of a.dll"},
        )

    def test_a_run_that_only_skipped_counts_as_a_change(self):
        self.expect_added(
            [entry("VekApp", "a.dll", "plugins/a.dll")],
            directory_missing(combined("tools", "plugins/a.dll")),
            {},
        )

    def test_a_source_that_is_missing_does_not_matter_when_the_file_is_skipped(self):
        self.expect_added(
            [entry("VekApp", "missing.dll", "plugins/a.dll")],
            directory_missing(combined("tools", "plugins/a.dll")),
            {},
        )

    def test_the_directory_of_a_resource_is_created(self):
        for number, kind in enumerate(("Resource", "RESOURCE", "resource")):
            deep = f"{number}-x/deep"
            self.expect_added(
                [entry(kind, "a.dll", deep + "/a.dat")],
                copied(deep + "/a.dat"),
                {
                    f"tools/{number}-x": DIRECTORY,
                    "tools/" + deep: DIRECTORY,
                    f"tools/{deep}/a.dat": "content of a.dll",
                },
            )

    def test_a_file_in_the_place_of_a_directory_skips_the_file(self):
        self.write("tools/plugins", "a file")
        self.expect_added(
            [entry("VekApp", "a.dll", "plugins/a.dll")],
            directory_missing(combined("tools", "plugins/a.dll")),
            {},
        )

    def test_names_with_special_characters(self):
        name = "größe & $HOME;`id` 'x'.dll"
        self.expect_added(
            [entry("VekApp", name, name)],
            copied(name),
            {"tools/" + name: "content of " + name},
            sources=[name],
        )

    @unittest.skipIf(ON_WINDOWS, "no modes there")
    def test_permissions_are_those_of_the_source(self):
        batch = self.add(entry("VekApp", "a.dll", "a.dll"))
        os.chmod(self.path("pkgs/new/a.dll"), 0o755)
        self.check_batch(
            **batch,
            stdout=processing("tools") + copied("a.dll"),
            files={"tools/a.dll": None, "tools/vekPackages.xml": None},
        )
        self.assertEqual(os.stat(self.path("tools/a.dll")).st_mode & 0o777, 0o755)


class Failure(UserTools):
    def test_no_source(self):
        message = located("TaVekUtil_InjectFile", -999, no_file(combined("pkgs/new", "missing.dll")))
        self.expect_failed([entry("VekApp", "missing.dll", "a.dll")], message)

    def test_a_directory_in_the_place_of_the_file(self):
        os.makedirs(self.path("tools/a.dll"))
        message = located("TaVekUtil_InjectFile", -5, combined("tools", "a.dll") + ": Is a directory")
        self.expect_failed([entry("VekApp", "a.dll", "a.dll")], message)

    def test_a_target_path_that_is_too_long(self):
        message = located("TaVekUtil_InjectFile", -75, path_too_long(combined("tools", "d" * 507)))
        self.expect_failed([entry("VekApp", "a.dll", "d" * 507)], message)

    def test_a_resource_path_of_256_characters_is_too_long(self):
        batch = self.add(entry("Resource", "a.dll", "d" * 250))
        message = located("TaVekUtils_AddPackages", -75, path_too_long(combined("tools", "d" * 250), 256))
        self.check_batch(**batch, stdout=processing("tools"), stderr=archive_failed(message), status=1)
        name = "d/" * 124 + "d"
        folders = {"tools/" + "d/" * depth + "d": DIRECTORY for depth in range(124)}
        self.expect_added(
            [entry("Resource", "a.dll", name)], copied(name), folders | {"tools/" + name: "content of a.dll"}
        )

    def test_a_resource_whose_directory_cannot_be_created(self):
        self.write("tools/plugins", "a file")
        batch = self.add(entry("Resource", "a.dll", "plugins/a.dat"))
        message = located("TaVekUtils_AddPackages", -5, combined("tools", "plugins") + ": File exists")
        self.check_batch(**batch, stdout=processing("tools"), status=1, stderr=archive_failed(message))

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_resource_whose_directory_may_not_be_created(self):
        batch = self.add(entry("Resource", "a.dll", "plugins/a.dat"))
        message = located("TaVekUtils_AddPackages", -5, "tools/plugins: Permission denied")
        self.check_batch(
            **batch, stdout=processing("tools"), status=1, stderr=archive_failed(message), unprivileged=True
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_resource_whose_directory_may_not_be_created_in_one_that_exists(self):
        os.mkdir(self.path("tools/closed"))
        os.chmod(self.path("tools"), 0o777)
        batch = self.add(entry("Resource", "a.dll", "closed/new/a.dat"))
        message = located("TaVekUtils_AddPackages", -5, "tools/closed/new: Permission denied")
        self.check_batch(
            **batch, stdout=processing("tools"), status=1, stderr=archive_failed(message), unprivileged=True
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_source_that_may_not_be_read(self):
        batch = self.add(entry("VekApp", "a.dll", "a.dll"))
        os.chmod(self.path("pkgs/new/a.dll"), 0)
        message = located("TaVekUtil_InjectFile", -5, "pkgs/new/a.dll: Permission denied")
        self.check_batch(
            **batch,
            stdout=processing("tools"),
            stderr=copy_failed(message) + archive_failed(message),
            status=1,
            unprivileged=True,
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_directory_that_may_not_be_written(self):
        message = located("TaVekUtil_InjectFile", -5, "tools/a.dll: Permission denied")
        self.expect_failed([entry("VekApp", "a.dll", "a.dll")], message, unprivileged=True)

    @unittest.skipIf(ON_WINDOWS, "no such limit there")
    def test_a_full_disk_leaves_the_old_file(self):
        self.write("tools/a.dll", "old")
        batch = self.add(entry("VekApp", "a.dll", "a.dll"))
        self.write("pkgs/new/a.dll", b"x" * 5000)
        message = located("TaVekUtil_InjectFile", -5, "tools/a.dll: File too large")
        self.check_batch(
            **batch,
            stdout=processing("tools"),
            stderr=copy_failed(message) + archive_failed(message),
            status=1,
            file_size=4000,
        )
