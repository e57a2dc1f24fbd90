"""TaVekInspect verify: sound archives pass in silence, and of the others it names every fault."""

from harness.documents import HOST_VERSION, app, entry, file, host_script, script, unified_manifest, version
from harness.executable import executable
from harness.inspection import Inspection
from harness.scenario import EXECUTABLE_PATH
from harness.zip_builder import BZIP2, DEFLATED, IS_ENCRYPTED, Member


class Verify(Inspection):
    def finds(self, path, *findings, status=1):
        """The findings on `path`, one a line, as text and as JSON."""
        text = self.inspect("verify", path, status=status)
        self.assertEqual(text, "".join(f"{path}: {finding}\n" for finding in findings))
        told = self.document("verify", path, status=status)["upgrades"][0]["findings"]
        self.assertEqual([f"{each['severity']}: {each['text']}" for each in told], list(findings))

    def test_a_sound_archive(self):
        self.installed()
        self.finds("new.pkg", status=0)

    def test_several_at_once(self):
        self.installed("one.pkg")
        self.host_archive("two.pkg")
        self.write("three.pkg", "")
        text = self.inspect("verify", "one.pkg", "three.pkg", "two.pkg", status=1)
        reason = "neither an archive nor an installation directory: the file is empty"
        self.assertEqual(text, f"three.pkg: error: {reason}\n")

    def test_what_is_not_there(self):
        self.finds("missing.pkg", "error: Path not found: missing.pkg")

    def test_an_archive_that_is_cut_short(self):
        self.installed()
        self.write("cut.pkg", self.read("new.pkg")[:-30])
        reason = "neither an archive nor an installation directory: no end record: the archive is cut short"
        self.finds("cut.pkg", "error: " + reason)

    # ---- Members -----------------------------------------------------------------------------------------

    def test_every_damaged_member_is_named(self):
        members = [
            Member("one", b"x" * 500, DEFLATED, crc=1),
            Member("two", b"y"),
            Member("three", b"z", crc=2),
        ]
        self.host_archive("bad.pkg", members=members)
        self.finds(
            "bad.pkg", "error: member one: checksum mismatch", "error: member three: checksum mismatch"
        )

    def test_a_damaged_stream(self):
        self.host_archive("bad.pkg", members=[Member("one", b"x" * 500, DEFLATED, raw=b"\xff\xff\xff")])
        self.finds("bad.pkg", "error: member one: damaged: a block of unknown type")

    def test_a_damaged_script_is_named_once(self):
        self.archive("bad.pkg", None, members=[Member("script.xml", host_script(), DEFLATED, crc=1)])
        self.finds("bad.pkg", "error: member script.xml: checksum mismatch")

    def test_members_that_cannot_be_looked_into(self):
        members = [
            Member("b", b"x", BZIP2, raw=b"BZh"),
            Member("c", b"x", flags=IS_ENCRYPTED, raw=b"secret of thirteen"),
        ]
        self.host_archive("sensor.pkg", members=members)
        self.finds(
            "sensor.pkg",
            "warning: member b: compression method 12 is not read, so it cannot be checked",
            "warning: member c: it is encrypted, so it cannot be checked",
            status=0,
        )

    # ---- Script, members and manifest --------------------------------------------------------------------

    def test_no_script(self):
        self.archive("bad.pkg", None)
        self.finds("bad.pkg", "error: no member script.xml")

    def test_no_platform_and_no_version(self):
        self.archive("bad.pkg", script())
        self.finds(
            "bad.pkg", "error: Could not determine platform", "error: Could not retrieve Qor BE version"
        )

    def test_an_entry_without_its_member(self):
        self.host_archive("bad.pkg", "linux_arm7", file("/x", "data/x", "R2"))
        self.finds("bad.pkg", "error: script entry /x: its source data/x is no member")

    def test_a_member_without_its_entry(self):
        self.host_archive("bad.pkg", members=[Member("data/12345-x", b"x")])
        self.finds("bad.pkg", "error: member data/12345-x: no script entry installs it")

    def test_an_entry_that_is_there_twice(self):
        self.host_archive("bad.pkg", "linux_arm7", file("/app/host", "host/app", "R2"))
        self.finds("bad.pkg", "error: script entry /app/host occurs twice")

    def test_an_entry_that_no_package_records(self):
        extra = file("/x", "data/12345-x", "R2")
        self.host_archive("sensor.pkg", "linux_arm7", extra, members=[Member("data/12345-x", b"x")])
        self.finds("sensor.pkg", "warning: script entry /x: no package records it", status=0)

    def test_a_single_library_needs_no_package(self):
        extra = file("vekappx", "data/12345-vekappx", "R2")
        self.host_archive("sensor.pkg", "linux_arm7", extra, members=[Member("data/12345-vekappx", b"x")])
        self.finds("sensor.pkg", status=0)

    def test_a_package_file_without_its_entry(self):
        packages = app("New", entry("VekApp", "a.so", "/a.so"), entry("Resource", "lib/b.so", ""))
        self.host_archive("bad.pkg", manifest=unified_manifest("linux_arm7", packages))
        self.finds(
            "bad.pkg",
            "error: package New: /a.so has no script entry",
            "error: package New: /user/b.so has no script entry",
        )

    def test_a_package_that_is_recorded_twice(self):
        self.host_archive("bad.pkg", manifest=unified_manifest("linux_arm7", app("New"), app("New")))
        self.finds("bad.pkg", "error: vekPackages.xml: package New is recorded twice")

    def test_a_manifest_for_something_else(self):
        self.host_archive("bad.pkg", manifest=unified_manifest("ombix", be_version="9"))
        self.finds(
            "bad.pkg",
            f'error: vekPackages.xml: BeVersion is "9", the script says "{HOST_VERSION}"',
            'error: vekPackages.xml: Platform is "ombix", found is "linux_arm7"',
        )

    def test_a_manifest_that_cannot_be_read(self):
        self.host_archive("bad.pkg", manifest="<VekAppPackage>")
        text = self.inspect("verify", "bad.pkg", status=1)
        self.assertRegex(text, r"^bad.pkg: error: vekPackages.xml:1:\d+: .*\n$")

    def test_entries_that_are_not_whole(self):
        odd = "<File name='/x'/>\n"
        self.archive("sensor.pkg", script(version("1"), "<File source='R2'/>\n", odd))
        self.finds(
            "sensor.pkg",
            'warning: script.xml: File "" lacks its name or its source',
            'warning: script.xml: File "/x" lacks its name or its source',
            status=0,
        )

    # ---- Installation directories ------------------------------------------------------------------------

    def installation(self, *files, key="win", be_version=HOST_VERSION):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))
        own = app("New", *files)
        self.write("tools/vekPackages.xml", unified_manifest(key, own, be_version=be_version))

    def test_a_sound_installation(self):
        self.installation(entry("VekApp", "a.dll", "plugins\\a.dll"))
        self.write("tools/plugins/a.dll")
        self.finds("tools", status=0)

    def test_files_that_are_gone(self):
        self.installation(entry("VekApp", "a.dll", "plugins\\a.dll"), entry("VekApp", "b.dll", ""))
        self.finds(
            "tools",
            "error: package New: plugins\\a.dll is not on disk",
            "error: package New: file b.dll has no destination",
        )

    def test_another_host(self):
        self.installation(be_version="6.1", key="ombix")
        self.finds(
            "tools",
            f'error: vekPackages.xml: BeVersion is "6.1", the host executable says "{HOST_VERSION}"',
            'error: vekPackages.xml: Platform is "ombix", found is "win"',
        )
