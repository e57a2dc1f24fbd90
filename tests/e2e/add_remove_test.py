"""Adding and removing whole packages."""

import os
import unittest

from harness import zip_builder
from harness.documents import (
    MODELS,
    app,
    entry,
    file,
    host_script,
    package_manifest,
    platform,
    unified_manifest,
)
from harness.executable import executable
from harness.messages import (
    UPGRADE_FAILED,
    archive_failed,
    attribute_too_long,
    copied,
    loaded,
    no_attribute,
    no_file,
    processing,
    removal_failed,
    removing,
    saving,
    unchanged,
    version_mismatch,
)
from harness.patterns import located
from harness.program import ON_WINDOWS, combined
from harness.scenario import EXECUTABLE_PATH, Scenario


class Batch(Scenario):
    def added(self, key, name, directory="pkgs/new"):
        return loaded(key, combined(directory, name))

    def expect_saved(self, after, progress, stderr="", **batch):
        self.check_batch(
            **batch,
            files={"Custom-sensor.pkg": after},
            stderr=stderr,
            stdout=processing("sensor.pkg") + progress + saving("Custom-sensor.pkg"),
        )


class Adding(Batch):
    def test_each_sensor_platform_has_its_controllers_and_its_message(self):
        for key, models in MODELS.items():
            after = self.host_archive("sensor.pkg", key)
            own = entry("VekApp", "lib/a.so", "/opt/a.so")
            self.package("pkgs/new", package_manifest("New", platform(key, own)), ["lib/a.so"])
            after.put("script.xml", host_script(key, file("/opt/a.so", "data/12345-a.so", *models)))
            after.put("data/12345-a.so", "content of lib/a.so").put(
                "vekPackages.xml", unified_manifest(key, app("New", own))
            )
            self.expect_saved(after, self.added(key, "lib/a.so"), load=["pkgs/new"])
            self.expect_saved(after, self.added(key, "lib/a.so"), load=["pkgs/new"], platform=key)

    def test_files_go_in_one_after_the_other(self):
        own = [entry("VekApp", "a.so", "/a"), entry("Resource", "b.dat", "/b"), entry("Other", "c", "/c")]
        after = self.host_archive()
        self.package(
            "pkgs/new", package_manifest("New", platform("linux_arm7", *own)), ["a.so", "b.dat", "c"]
        )
        models = MODELS["linux_arm7"]
        after.put("data/12345-a.so", "content of a.so").put("data/12345-b.dat", "content of b.dat")
        after.put(
            "script.xml",
            host_script(
                "linux_arm7",
                file("/a", "data/12345-a.so", *models),
                file("/b", "data/12345-b.dat", *models),
                file("/c", "data/12345-c", *models),
            ),
        )
        after.put("data/12345-c", "content of c").put(
            "vekPackages.xml", unified_manifest("linux_arm7", app("New", *own))
        )
        self.expect_saved(
            after,
            "".join(self.added("linux_arm7", name) for name in ("a.so", "b.dat", "c")),
            load=["pkgs/new"],
        )

    def two_files_of_one_name(self, first, second):
        own = [entry("VekApp", "x/a.so", first), entry("VekApp", "y/a.so", second)]
        self.package("pkgs/new", package_manifest("New", platform("linux_arm7", *own)), ["x/a.so", "y/a.so"])
        return own

    def test_two_files_of_one_name_and_destination_leave_the_second(self):
        after = self.host_archive()
        own = self.two_files_of_one_name("/a.so", "/A.so")
        after.put(
            "script.xml", host_script("linux_arm7", file("/A.so", "data/12345-a.so", *MODELS["linux_arm7"]))
        )
        after.put("data/12345-a.so", "content of y/a.so").put(
            "vekPackages.xml", unified_manifest("linux_arm7", app("New", *own))
        )
        self.expect_saved(
            after, self.added("linux_arm7", "x/a.so") + self.added("linux_arm7", "y/a.so"), load=["pkgs/new"]
        )

    def test_two_files_of_one_name_and_two_destinations_cannot_both_be_held(self):
        self.host_archive()
        self.two_files_of_one_name("/x/a.so", "/y/a.so")
        message = located(
            "TaVekUtil_InjectFile", -22, "sensor.pkg: there is a member data/12345-a.so already"
        )
        self.check_batch(
            load=["pkgs/new"],
            stdout=processing("sensor.pkg") + self.added("linux_arm7", "x/a.so"),
            stderr=UPGRADE_FAILED + archive_failed(message),
            status=1,
        )

    def test_a_file_that_is_missing_ends_the_run(self):
        self.host_archive()
        self.package(
            "pkgs/new", package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a")))
        )
        message = located("TaVekUtil_InjectFile", -999, no_file(combined("pkgs/new", "a.so")))
        self.check_batch(
            load=["pkgs/new"],
            stdout=processing("sensor.pkg"),
            stderr=UPGRADE_FAILED + archive_failed(message),
            status=1,
        )

    def expect_unusable_file(self, detail, **options):
        message = located("TaVekUtil_InjectFile", -5, combined("pkgs/new", "a.so") + detail)
        self.check_batch(
            load=["pkgs/new"],
            stdout=processing("sensor.pkg"),
            stderr=UPGRADE_FAILED + archive_failed(message),
            status=1,
            **options,
        )

    def test_a_directory_in_the_place_of_a_file(self):
        self.host_archive()
        self.package(
            "pkgs/new", package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a")))
        )
        os.mkdir(self.path("pkgs/new/a.so"))
        self.expect_unusable_file(": Is a directory")

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_file_that_may_not_be_read(self):
        self.host_archive()
        self.package(
            "pkgs/new",
            package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a"))),
            ["a.so"],
        )
        os.chmod(self.path("pkgs/new/a.so"), 0)
        self.expect_unusable_file(": Permission denied", unprivileged=True)

    def test_files_for_other_platforms_stay_out(self):
        self.host_archive()
        own = [
            platform(key, entry("VekApp", "a.so", "/a"))
            for key in ("linux_arm64", "ombix", "win", "solaris", "linux_arm")
        ]
        self.package("pkgs/new", package_manifest("New", *own), ["a.so"])
        self.check_batch(load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))

    def test_a_platform_that_only_begins_with_the_archives_is_passed_over(self):
        self.host_archive()
        self.package(
            "pkgs/new",
            package_manifest("New", platform("linux_arm7x", entry("VekApp", "a.so", "/a"))),
            ["a.so"],
        )
        self.check_batch(load=["pkgs/new"], stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))

    def test_a_platform_that_begins_with_win_is_copied_into_an_installation(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((1, 2, 3, 4)))
        own = entry("VekApp", "a.dll", "a.dll")
        self.package(
            "pkgs/new",
            package_manifest("New", platform("windows", own), platform("linux_arm7", own)),
            ["a.dll"],
        )
        manifest = unified_manifest("win", app("New", own), be_version="1.2.3.4")
        self.check_batch(
            stock=["tools"],
            load=["pkgs/new"],
            stdout=processing("tools") + copied("a.dll"),
            files={"tools/a.dll": "content of a.dll", "tools/vekPackages.xml": manifest},
        )


class Versions(Batch):
    own = entry("VekApp", "a.so", "/a")

    def package_for(self, name, be_version):
        self.package(
            "pkgs/" + name,
            package_manifest(name, platform("linux_arm7", self.own), be_version=be_version),
            ["a.so"],
        )

    def expect_accepted(self, host, built_for):
        self.host_archive(manifest=unified_manifest("linux_arm7", be_version=host))
        self.package_for("New", built_for)
        self.check_batch(
            load=["pkgs/New"],
            files={"Custom-sensor.pkg": None},
            stdout=processing("sensor.pkg")
            + self.added("linux_arm7", "a.so", "pkgs/New")
            + saving("Custom-sensor.pkg"),
        )

    def expect_skipped(self, host, built_for):
        self.host_archive(manifest=unified_manifest("linux_arm7", be_version=host))
        self.package_for("New", built_for)
        self.check_batch(
            load=["pkgs/New"],
            stdout=processing("sensor.pkg") + unchanged("sensor.pkg"),
            stderr=version_mismatch(host, "New", built_for),
        )

    def test_the_same_version(self):
        for version in ("6.1.2.57", "beta", "a b", ""):
            self.expect_accepted(version, version)

    def test_a_star_fits_any_archive(self):
        for host in ("6.1.2.57", "", "beta"):
            self.expect_accepted(host, "*")

    def test_any_difference_skips_the_package_without_a_failure(self):
        for host, built_for in (
            ("6.1.2.57", "6.1.2.58"),
            ("6.1.2.57", "6.1.2.5"),
            ("6.1.2.5", "6.1.2.57"),
            ("Beta", "beta"),
            ("6.1.2.57", "**"),
            ("*", "6.1.2.57"),
            ("1", ""),
        ):
            self.expect_skipped(host, built_for)

    def test_the_next_package_is_processed(self):
        self.package_for("Old", "5.0")
        self.package_for("New", "6.1.2.57")
        after = self.host_archive()
        after.put(
            "script.xml", host_script("linux_arm7", file("/a", "data/12345-a.so", *MODELS["linux_arm7"]))
        )
        after.put("data/12345-a.so", "content of a.so")
        after.put("vekPackages.xml", unified_manifest("linux_arm7", app("New", self.own)))
        self.expect_saved(
            after,
            self.added("linux_arm7", "a.so", "pkgs/New"),
            load=["pkgs/Old", "pkgs/New"],
            stderr=version_mismatch("6.1.2.57", "Old", "5.0"),
        )

    def test_the_version_in_the_manifest_counts_and_not_the_scripts(self):
        self.expect_accepted("1.0", "1.0")


class Removing(Batch):
    def archive_with(self, *apps, names=()):
        """An archive whose manifest holds `apps`, with an entry and a member for each of the install `names`."""
        members = [zip_builder.Member("data" + name, name.encode()) for name in names]
        return self.host_archive(
            "sensor.pkg",
            "linux_arm7",
            *[file(name, "data" + name, "R2") for name in names],
            manifest=unified_manifest("linux_arm7", *apps),
            members=members,
        )

    alpha, beta = app("Alpha", entry("VekApp", "a", "/a")), app("Beta", entry("VekApp", "b", "/b"))

    def test_several_packages(self):
        after = (
            self.archive_with(self.alpha, app("Kept"), self.beta, names=["/a", "/b"])
            .delete("data/a")
            .delete("data/b")
        )
        after.put("script.xml", host_script()).put(
            "vekPackages.xml", unified_manifest("linux_arm7", app("Kept"))
        )
        self.expect_saved(after, removing("Beta") + removing("Alpha"), remove=["Beta", "Alpha"])

    def test_every_entry_of_the_name_goes(self):
        twin = app("Alpha", entry("VekApp", "b", "/b"))
        after = (
            self.archive_with(self.alpha, app("Kept"), twin, names=["/a", "/b"])
            .delete("data/a")
            .delete("data/b")
        )
        after.put("script.xml", host_script()).put(
            "vekPackages.xml", unified_manifest("linux_arm7", app("Kept"))
        )
        self.expect_saved(after, removing("Alpha") * 2, remove=["Alpha"])

    def test_a_name_listed_twice(self):
        after = self.archive_with(self.alpha, names=["/a"]).delete("data/a")
        after.put("script.xml", host_script()).put("vekPackages.xml", unified_manifest("linux_arm7"))
        self.expect_saved(after, removing("Alpha") * 2, remove=["Alpha", "Alpha"])

    def two_entries(self, second):
        """An archive with the package Alpha and two script entries for its file, the other with the source `second`."""
        entries = file("/a", "data/a", "R2"), file("/a", second, "R2")
        members = [zip_builder.Member("data/a", b"a"), zip_builder.Member("data/b", b"b")]
        manifest = unified_manifest("linux_arm7", self.alpha)
        return self.host_archive("sensor.pkg", "linux_arm7", *entries, manifest=manifest, members=members)

    def test_a_name_listed_twice_takes_a_second_entry(self):
        after = self.two_entries("data/b").delete("data/a").delete("data/b")
        after.put("script.xml", host_script()).put("vekPackages.xml", unified_manifest("linux_arm7"))
        self.expect_saved(after, removing("Alpha") * 2, remove=["Alpha", "Alpha"])

    def test_a_name_listed_twice_whose_second_entry_cannot_be_removed(self):
        self.two_entries("d" * 300)
        detail = 'the attribute "source" of <File> needs 300 bytes, 255 are allowed'
        message = located("TaVekUtils_ScriptXmlRemoveAndGetSource", -75, detail)
        self.check_batch(
            remove=["Alpha", "Alpha"],
            stdout=processing("sensor.pkg") + removing("Alpha") * 2,
            status=1,
            stderr=removal_failed("/a") + archive_failed(message),
        )

    def expect_not_found(self, name, progress="", remove=None):
        self.check_batch(
            remove=remove or [name],
            stdout=processing("sensor.pkg") + progress,
            status=1,
            stderr=archive_failed(f"Package {name} not found in archive"),
        )

    def test_a_name_that_is_not_there(self):
        self.archive_with(self.alpha, names=["/a"])
        for name in ("Beta", "alpha", "Alph", "Alphabet", "", "%s%n"):
            self.expect_not_found(name)

    def test_a_name_that_is_not_there_after_one_that_is(self):
        self.archive_with(self.alpha, names=["/a"])
        self.expect_not_found("Beta", removing("Alpha"), remove=["Alpha", "Beta"])

    def test_an_archive_without_manifest_holds_no_package(self):
        self.host_archive()
        self.expect_not_found("Alpha")

    def test_only_entries_of_that_element_name_count(self):
        self.archive_with(self.alpha.replace("VekApp ", "vekapp ").replace("/VekApp", "/vekapp"))
        self.expect_not_found("Alpha")

    def test_a_name_too_long_for_the_message(self):
        self.archive_with(self.alpha)
        room = 127 - len("Package  not found in archive")
        self.expect_not_found("n" * room)
        message = located("TaVekUtils_RemovePackages", -75, "the text needs 128 characters, 127 are allowed")
        self.check_batch(
            remove=["n" * (room + 1)],
            stdout=processing("sensor.pkg"),
            stderr=archive_failed(message),
            status=1,
        )

    def test_an_entry_without_a_readable_name(self):
        for broken, status, detail in (
            (app("x").replace(' name="x"', ""), -999, no_attribute("VekApp", "name")),
            (app("n" * 128), -75, attribute_too_long("VekApp", "name", 128)),
        ):
            self.archive_with(broken, self.alpha, names=["/a"])
            message = located("TaVekUtils_RemovePackages", status, detail)
            self.check_batch(
                remove=["Alpha"], stdout=processing("sensor.pkg"), stderr=archive_failed(message), status=1
            )

    def test_nothing_to_remove_prints_nothing(self):
        self.archive_with(self.alpha, names=["/a"])
        for none in (None, []):
            self.check_batch(remove=none, stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))

    def test_removing_goes_before_adding(self):
        own = entry("VekApp", "a", "/a")
        self.package("pkgs/new", package_manifest("Alpha", platform("linux_arm7", own)), ["a"])
        after = self.archive_with(app("Alpha", entry("VekApp", "old", "/a")), names=["/a"]).delete("data/a")
        after.put("script.xml", host_script("linux_arm7", file("/a", "data/12345-a", *MODELS["linux_arm7"])))
        after.put("data/12345-a", "content of a").put(
            "vekPackages.xml", unified_manifest("linux_arm7", app("Alpha", own))
        )
        self.expect_saved(
            after, removing("Alpha") + self.added("linux_arm7", "a"), load=["pkgs/new"], remove=["Alpha"]
        )
