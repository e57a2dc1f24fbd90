"""TaVekInspect plan: files that take a place, or a member, which belongs to somebody else."""

from harness.documents import app, entry, file, host_script, unified_manifest
from harness.planning import Planning
from harness.program import combined
from harness.zip_builder import Member


class Sensors(Planning):
    new_file = combined("pkgs/new", "a.so")

    def test_a_file_of_another_package(self):
        self.installed("sensor.pkg")
        self.trap("package Other: /a.so replaces a file of package New", [self.new_package(name="Other")])

    def test_nobody_loses_what_is_removed_before(self):
        self.installed("sensor.pkg")
        self.plan([self.new_package(name="Other")], remove=["New"], status=0)

    def test_a_package_replaces_its_own_files(self):
        self.installed("sensor.pkg")
        self.plan([self.new_package()], status=0)
        self.write("pkgs/new/a.so", "a newer one")
        self.plan(["pkgs/new"], status=0)

    def test_an_entry_of_the_host_in_other_letters(self):
        self.host_archive()
        self.trap(
            "package New: /App/HOST replaces an entry of the host software (host/app)",
            [self.new_package(entry("VekApp", "a.so", "/App/HOST"))],
        )

    def test_a_member_of_a_package_that_is_installed(self):
        self.installed("sensor.pkg")
        self.trap(
            f"package Other: {self.new_file} shares member data/12345-a.so with script entry /a.so",
            [self.new_package(entry("VekApp", "a.so", "/other/a.so"), name="Other")],
        )

    def test_a_shared_member_gets_other_content(self):
        entries = file("/a.so", "data/12345-a.so", "R2"), file("/b.so", "data/12345-a.so", "R2")
        packages = app("New", self.own), app("B", entry("VekApp", "a.so", "/b.so"))
        self.archive(
            "sensor.pkg",
            host_script("linux_arm7", *entries),
            unified_manifest("linux_arm7", *packages),
            [Member("data/12345-a.so", b"older")],
        )
        self.trap(
            f"package New: {self.new_file} shares member data/12345-a.so with script entry /b.so",
            [self.new_package()],
        )

    def test_names_that_can_be_installed_but_not_removed(self):
        self.host_archive()
        self.plan([self.new_package(entry("VekApp", "a.so", "/" + "d" * 254))], status=0)
        name = "/" + "d" * 255
        self.trap(
            f"package New: {name}: a name of more than 255 characters can be installed, but not removed",
            [self.new_package(entry("VekApp", "a.so", name))],
        )

    def test_members_that_can_be_installed_but_not_removed(self):
        self.host_archive()
        fits, too_long = "n" * 244, "n" * 245
        for name in (fits, too_long):
            self.write("pkgs/new/" + name)
        self.plan([self.new_package(entry("VekApp", fits, "/n"))], status=0)
        self.trap(
            "package New: /n: a name of more than 255 characters can be installed, but not removed",
            [self.new_package(entry("VekApp", too_long, "/n"))],
        )


class Installations(Planning):
    def new_tool(self, *destinations, name="New"):
        entries = [entry("VekApp", "a.so", destination) for destination in destinations]
        return self.new_package(*entries, name=name, key="win")

    def with_package(self, name, destination):
        self.installation()
        self.write("tools/p/a.dll")
        own = app(name, entry("VekApp", "a.so", destination))
        self.write("tools/vekPackages.xml", unified_manifest("win", own))

    def test_a_file_of_the_host(self):
        self.installation()
        self.trap(
            "package New: bin\\win64\\TaQor.exe replaces a file that no package has installed",
            [self.new_tool("bin\\win64\\TaQor.exe")],
            ["tools"],
        )

    def test_a_file_of_another_package_however_it_is_written(self):
        self.with_package("Old", "p\\A.dll")
        self.trap(
            "package New: p/./a.dll replaces a file of package Old", [self.new_tool("p/./a.dll")], ["tools"]
        )

    def test_a_file_of_its_own(self):
        self.with_package("New", "p/a.dll")
        self.plan([self.new_tool("p/a.dll")], ["tools"], status=0)

    def test_a_file_that_is_removed_before(self):
        self.with_package("Old", "p/a.dll")
        self.plan([self.new_tool("p/a.dll")], ["tools"], ["Old"], status=0)

    def test_two_spellings_of_one_destination(self):
        self.installation()
        self.write("tools/p/x")
        self.trap(
            "package New: /p\\a.dll replaces a file of package New of this run",
            [self.new_tool("p/a.dll", "/p\\a.dll")],
            ["tools"],
        )
