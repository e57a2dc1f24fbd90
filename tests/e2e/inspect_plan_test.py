"""TaVekInspect plan: what a run would do, and everything it would meet.

That plans come true is shown by every other module: the harness plans each batch before it runs.
"""

import os
import unittest

from harness import program
from harness.documents import (
    app,
    configuration,
    entry,
    file,
    host_script,
    package_manifest,
    platform,
    unified_manifest,
)
from harness.planning import Planning
from harness.program import ON_WINDOWS, combined
from harness.zip_builder import Member


class Steps(Planning):
    def test_what_would_be_added_and_saved(self):
        self.host_archive()
        told = self.plan([self.new_package()], status=0)
        self.assertEqual(
            told["packages"], [{"entry": "pkgs/new", "name": "New", "beVersion": "*", "files": 1}]
        )
        archive = told["archives"][0]
        self.assertEqual((archive["outcome"], archive["savedAs"]), ("saved", "Custom-sensor.pkg"))
        added = {"package": "New", "path": combined("pkgs/new", "a.so"), "destination": "/a.so"}
        self.assertEqual(archive["added"], [added | {"member": "data/12345-a.so"}])

    def test_as_text(self):
        self.installed("sensor.pkg")
        self.new_package(name="Other", be_version="7")
        self.plan(["pkgs/new"], remove=["New"])
        self.assertEqual(
            self.inspect("plan", "cfg.xml", status=1),
            "cfg.xml, platform all\n"
            "  load   Other from pkgs/new (1 file)\n"
            "\n"
            "sensor.pkg: linux_arm7, host version 6.1.2.57\n"
            "  remove New: /a.so\n"
            "  skip   package Other: built for 7, the archive is 6.1.2.57\n"
            "  save   Custom-sensor.pkg\n"
            "\n"
            "cfg.xml: warning: package Other goes into no archive\n"
            "sensor.pkg: warning: package Other is skipped: built for 7, the archive is 6.1.2.57\n"
            "The run would succeed, with 2 warnings.\n",
        )

    def test_an_archive_that_stays_as_it_is(self):
        self.host_archive()
        self.assertEqual(self.plan(status=0)["archives"][0]["outcome"], "unchanged")

    def test_an_installation(self):
        self.installation()
        self.new_package(entry("VekApp", "a.so", "a.dll"), key="win")
        archive = self.plan(["pkgs/new"], ["tools"], status=0)["archives"][0]
        self.assertEqual((archive["outcome"], archive["added"][0]["destination"]), ("written", "a.dll"))

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_the_temporary_directory_goes_whatever_the_tar_file_makes_of_it(self):
        self.host_archive()
        self.new_package(directory="work")
        self.write("work/deep/er/file")
        self.tar("pkgs/new.tar", "work", "--mode=a-w")
        self.plan(["pkgs/new.tar"], status=0)
        os.mkdir(self.path("temporary"))
        os.chmod(self.path("temporary"), 0o777)
        arguments = ["plan", "cfg.xml"]
        variables = {"TMPDIR": self.path("temporary")}
        program.start(self.inspector, arguments, self.root, unprivileged=True, variables=variables)
        self.assertEqual(os.listdir(self.path("temporary")), [])

    def test_a_changed_installation_is_known_however_its_path_is_written(self):
        self.installation()
        self.write("tools/vekPackages.xml", unified_manifest("win", app("Old")))
        told = self.plan(stock=["tools/", self.path("tools")], remove=["Old"])
        self.assertEqual([archive["outcome"] for archive in told["archives"]], ["written", "failed"])
        self.assertEqual(self.texts(told["archives"][1]), ["error: Package Old not found in archive"])

    def test_messages_name_the_directory_that_the_run_unpacks_to(self):
        self.host_archive()
        names = "abcdefghijk"
        for name in names:
            self.new_package(name="N" + name, directory="work/" + name)
        for name in "bk":
            self.write(f"work/{name}/vek_manifest.xml", "no document")
        for name in names:
            self.tar(f"pkgs/{name}.tar", "work/" + name)
        told = self.texts(self.plan([f"pkgs/{name}.tar" for name in names]))
        for name in "bk":
            manifest = combined("pkgs/" + name, "vek_manifest.xml")
            text = f'error: package entry "pkgs/{name}.tar": {manifest}:1:1: '
            self.assertTrue(any(each.startswith(text) for each in told), told)

    def test_what_an_earlier_entry_of_the_run_saves_is_what_a_later_one_reads(self):
        self.host_archive()
        told = self.plan([self.new_package()], ["sensor.pkg", "Custom-sensor.pkg"])
        self.assertEqual(
            [archive["savedAs"] for archive in told["archives"]],
            ["Custom-sensor.pkg", "Custom-Custom-sensor.pkg"],
        )

    def test_a_saved_archive_is_known_however_its_path_is_written(self):
        self.host_archive()
        self.write("dir/x")
        again = "dir\\..\\Custom-sensor.pkg"
        told = self.plan([self.new_package()], ["./sensor.pkg", again, "sensor.pkg"])
        outputs = [archive["savedAs"] for archive in told["archives"]]
        self.assertEqual(outputs[0::2], [combined(".", "Custom-sensor.pkg"), "Custom-sensor.pkg"])
        self.assertEqual(
            self.texts(told["archives"][0]),
            [f"warning: {outputs[0]} is itself an archive of this run"],
        )
        self.assertEqual(
            self.texts(told["archives"][2]),
            [
                "warning: Custom-sensor.pkg is saved twice",
                "warning: Custom-sensor.pkg is itself an archive of this run",
            ],
        )


class Failures(Planning):
    def test_all_of_them_and_not_just_the_first(self):
        self.host_archive("bad.pkg", members=[Member("x", b"x", crc=1)])
        self.host_archive("good.pkg")
        self.write("text.pkg", "no archive")
        entries = [self.own, entry("VekApp", "one.so", "/one"), entry("VekApp", "two.so", "/two")]
        self.new_package(*entries)
        told = self.plan(["pkgs/new", "pkgs/none", ""], ["missing.pkg", "text.pkg", "good.pkg"], ["P", "Q"])
        self.assertFalse(told["succeeds"])
        self.assertEqual(
            self.texts(told),
            [
                f"error: package entry \"pkgs/none\": {combined('pkgs/none', 'vek_manifest.xml')}:"
                " No such file or directory",
                'error: package entry "": the package entry is empty',
            ],
        )
        missing, text, good = told["archives"]
        self.assertEqual(self.texts(missing), ["error: Path not found: missing.pkg"])
        self.assertRegex(self.texts(text)[0], "Invalid Archive Path: text.pkg .*not a ZIP archive")
        self.assertEqual(
            self.texts(good),
            [
                "error: Package P not found in archive",
                "error: Package Q not found in archive",
                f"error: package New: one.so: {combined('pkgs/new', 'one.so')}: No such file or directory",
                f"error: package New: two.so: {combined('pkgs/new', 'two.so')}: No such file or directory",
            ],
        )
        self.assertEqual({archive["outcome"] for archive in told["archives"]}, {"notReached"})

    def test_a_damaged_member(self):
        self.host_archive(members=[Member("x", b"x", crc=1)])
        archive = self.plan([self.new_package()])["archives"][0]
        self.assertEqual(archive["outcome"], "failed")
        self.assertRegex(self.texts(archive)[0], "member x: checksum mismatch")

    def test_nothing_to_process(self):
        told = self.plan(stock=())
        self.assertRegex(self.texts(told)[0], "^error: there are no archives to process")

    def test_configurations_that_cannot_be_read(self):
        self.write("host/bin/win64/cfg.xml", "<a>\n<b>")
        told = self.document("plan", "cfg.xml", status=1)
        self.assertRegex(self.texts(told)[0], r"cfg.xml:2:\d+: ")
        self.write("host/bin/win64/cfg.xml", configuration(None, ["x" * 600]))
        texts = self.texts(self.document("plan", "cfg.xml", status=1))
        self.assertEqual(texts[0], "error: there is no element OutputPrefix")
        self.assertRegex(texts[1], "the text of <Path>")

    def test_files_without_destination(self):
        self.host_archive("sensor.pkg", "ombix")
        self.installation()
        own = entry("VekApp", "a.so", "")
        self.package(
            "pkgs/new", package_manifest("New", platform("ombix", own), platform("win", own)), ["a.so"]
        )
        told = self.plan(["pkgs/new"], ["sensor.pkg", "tools"])
        for archive, key in zip(told["archives"], ("ombix", "win")):
            self.assertIn(
                f"error: package New: a.so: no Destination, and {key} has no default", self.texts(archive)
            )

    def test_a_directory_that_is_sent_to_tar(self):
        self.host_archive()
        text = self.texts(self.plan([self.new_package(directory="old.tar.d/new")]))[0]
        self.assertRegex(text, 'error: package entry "old.tar.d/new" is a directory, but ".tar" in it')

    def test_a_name_that_cannot_be_recorded(self):
        self.host_archive()
        told = self.plan([self.new_package(name="N" * 128)])
        self.assertRegex(self.texts(told)[0], "more than 127 characters")
        self.assertFalse(told["succeeds"])

    def test_different_files_of_one_name(self):
        self.host_archive()
        self.new_package(self.own, entry("VekApp", "b/a.so", "/b"))
        self.write("pkgs/new/b/a.so", "other")
        archive = self.plan(["pkgs/new"])["archives"][0]
        self.assertRegex(self.texts(archive)[0], "error: package New: b/a.so: .*data/12345-a.so")

    def test_all_that_is_wrong_with_one_archive(self):
        self.host_archive("14.dat", members=[Member("x", b"x", crc=1), Member("y", b"y", crc=2)])
        self.write("0-14.dat/x")
        self.new_package(entry("VekApp", "none.so", "/none"))
        archive = self.plan(["pkgs/new"], ["14.dat"], prefix="0")["archives"][0]
        self.assertEqual(
            self.texts(archive),
            [
                f"error: package New: none.so: {combined('pkgs/new', 'none.so')}: No such file or directory",
                "error: member x: checksum mismatch",
                "error: member y: checksum mismatch",
                "error: 0-14.dat: Is a directory",
                "warning: 0-14.dat has the name of a stock archive: a later run may take it for one",
            ],
        )
        self.assertEqual((archive["outcome"], archive["savedAs"]), ("failed", ""))

    def test_removing_files_without_destination(self):
        packages = app("Old", entry("VekApp", "a.so", "")), app("Odd", entry("Other", "b.so", ""))
        self.archive("sensor.pkg", host_script("ombix"), unified_manifest("ombix", *packages))
        self.installation()
        self.write("tools/vekPackages.xml", unified_manifest("win", *packages))
        told = self.plan(stock=["sensor.pkg", "tools"], remove=["Old", "Odd"])
        for archive, key in zip(told["archives"], ("ombix", "win")):
            reason = f"no Destination, and {key} has no default, so it cannot be removed"
            self.assertEqual(
                self.texts(archive),
                [
                    f"error: package Old: a.so: {reason}",
                    "warning: package Odd: b.so is of type Other and stays",
                ],
            )

    def test_a_target_that_is_a_directory(self):
        self.host_archive()
        self.write("Custom-sensor.pkg/x")
        self.assertRegex(
            self.texts(self.plan([self.new_package()])["archives"][0])[0], "error: .*Custom-sensor"
        )


class Traps(Planning):
    def test_a_record_that_is_dropped(self):
        self.installed("sensor.pkg")
        self.new_package(entry("VekApp", "b.so", "/b.so"), name="Newer")
        self.write("pkgs/new/b.so")
        self.trap(
            "package Newer drops the record of package New, with whose name its own begins; the files stay",
            ["pkgs/new"],
        )

    def test_equal_files_of_one_name(self):
        self.host_archive()
        self.new_package(self.own, entry("VekApp", "b/a.so", "/b"))
        self.write("pkgs/new/b/a.so", "content of a.so")
        paths = combined("pkgs/new", "b/a.so"), combined("pkgs/new", "a.so")
        expected = f"package New: {paths[0]} shares member data/12345-a.so with {paths[1]}"
        self.trap(expected, ["pkgs/new"])

    def test_two_files_for_one_destination(self):
        self.host_archive()
        self.new_package(self.own, entry("VekApp", "b.so", "/A.so"))
        self.write("pkgs/new/b.so")
        told = self.plan(["pkgs/new"])
        self.assertIn(
            "warning: package New: /A.so replaces a file of package New of this run",
            self.texts(told["archives"][0]),
        )

    def test_an_entry_of_the_host(self):
        self.host_archive()
        self.new_package(entry("VekApp", "a.so", "/app/lib.so"))
        self.trap(
            "package New: /app/lib.so replaces an entry of the host software (host/lib.so)", ["pkgs/new"]
        )

    def test_paths_that_leave_their_directory(self):
        self.host_archive()
        self.new_package(entry("VekApp", "../new/a.so", "/user/../a.so"))
        told = self.trap("package New: Destination /user/../a.so leaves its directory", ["pkgs/new"])
        self.assertEqual(
            self.texts(told), ["warning: package New: Source ../new/a.so leaves the package's directory"]
        )

    def test_paths_that_stay_although_they_look_otherwise(self):
        self.host_archive()
        self.installation()
        self.new_package(entry("VekApp", "/a.so", "/user/a..b.so"))
        self.plan(["pkgs/new"], status=0)
        self.new_package(entry("VekApp", "/a.so", "/a.dll"), key="win")
        self.plan(["pkgs/new"], ["tools"], status=0)

    def test_a_missing_target_directory(self):
        self.installation()
        self.new_package(entry("VekApp", "a.so", "plugins\\a.dll"), key="win")
        told = self.trap(
            f"package New: {combined('pkgs/new', 'a.so')} is skipped: the directory of plugins\\a.dll is missing",
            ["pkgs/new"],
            ["tools"],
        )
        self.assertEqual(len(told["archives"][0]["skipped"]), 1)

    def test_a_resource_makes_its_directory(self):
        self.installation()
        resource, library = entry("Resource", "a.so", "p\\a"), entry("VekApp", "a.so", "p\\b")
        self.new_package(resource, library, key="win")
        self.assertEqual(len(self.plan(["pkgs/new"], ["tools"], status=0)["archives"][0]["added"]), 2)

    def test_a_prefix_that_makes_stock_archives(self):
        self.host_archive("sensor.dat")
        expected = "14-sensor.dat has the name of a stock archive: a later run may take it for one"
        self.trap(expected, [self.new_package()], ["sensor.dat"], prefix="14")

    def test_a_platform_from_outside_any_entry(self):
        self.archive("sensor.pkg", host_script("linux_arm64").replace("<Startup>", "<Startup><!-- R2D2 -->"))
        self.trap(
            "script.xml: platform linux_arm7 is decided by a model name outside any entry;"
            " the entries tell linux_arm64"
        )

    def test_a_package_without_files_for_the_archive(self):
        self.host_archive()
        told = self.trap(
            "package New has no file for linux_arm7; as nothing else changes, it is not recorded",
            [self.new_package(key="linux_arm64")],
        )
        self.assertEqual(self.texts(told), ["warning: package New goes into no archive"])

    def test_a_package_without_files_for_the_platform_of_the_run(self):
        self.host_archive()
        texts = self.texts(self.plan([self.new_package()], key="ombix"))
        self.assertEqual(
            texts, ['warning: package entry "pkgs/new" has no file for platform ombix and is left out']
        )

    def test_a_manifest_without_version_when_nobody_asks_for_it(self):
        manifest = unified_manifest("linux_arm7", app("Old")).replace("BeVersion", "Version")
        self.archive("sensor.pkg", host_script("linux_arm7"), manifest)
        self.trap("there is no element BeVersion", remove=["Old"])
        told = self.plan([self.new_package()], remove=["Old"])
        self.assertIn("error: there is no element BeVersion", self.texts(told["archives"][0]))

    def test_a_platform_that_only_begins_like_one(self):
        self.host_archive()
        told = self.plan([self.new_package(key="linux_arm7x")])
        reason = "there is no platform linux_arm7x"
        path = combined("pkgs/new", "a.so")
        self.assertEqual(told["archives"][0]["skipped"], [{"subject": path, "reason": reason}])
        self.assertIn(f"warning: package New: {path} is skipped: {reason}", self.texts(told["archives"][0]))

    def test_a_type_is_that_of_the_file_before(self):
        untyped = entry("VekApp", "b.so", "/b.so").replace(' type="VekApp"', "")
        manifest = unified_manifest("linux_arm7", app("Old", entry("Other", "a.so", "/a.so"), untyped))
        self.archive("sensor.pkg", host_script("linux_arm7"), manifest)
        self.assertEqual(
            self.texts(self.plan(remove=["Old"])["archives"][0]),
            [f"warning: package Old: {name} is of type Other and stays" for name in ("a.so", "b.so")],
        )

    def test_a_removal_that_misses_its_file(self):
        manifest = unified_manifest("linux_arm7", app("New", entry("VekApp", "a.so", "")))
        script = host_script("linux_arm7", file("/user/a.so", "data/12345-a.so", "R2"))
        self.archive("sensor.pkg", script, manifest, [Member("data/12345-a.so", b"x")])
        self.trap(
            "package New: no script entry /user/New, so nothing is removed for a.so",
            remove=["New"],
        )

    def test_a_removal_that_leaves_the_archive_inconsistent(self):
        entries = file("/a", "data/12345-x", "R2"), file("/b", "data/12345-x", "R2")
        packages = app("A", entry("VekApp", "x", "/a")), app("B", entry("VekApp", "x", "/b"))
        self.archive(
            "sensor.pkg",
            host_script("linux_arm7", *entries),
            unified_manifest("linux_arm7", *packages),
            [Member("data/12345-x", b"x")],
        )
        self.trap(
            "Custom-sensor.pkg would not be consistent: script entry /b: its source data/12345-x is no member",
            remove=["A"],
        )

    def test_a_file_of_an_installation_that_is_gone(self):
        self.installation()
        own = entry("VekApp", "a.dll", "a.dll")
        self.write("tools/vekPackages.xml", unified_manifest("win", app("Old", own)))
        where = combined("tools", "a.dll")
        self.trap(f"package Old: {where} is not there any more", stock=["tools"], remove=["Old"])
