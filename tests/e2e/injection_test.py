"""Putting one library into one archive."""

import os
import unittest

from harness import zip_builder
from harness.documents import ARM64_MODELS, ARM7_MODELS, OMBIX_MODELS, file, host_script, unified_manifest
from harness.messages import UPGRADE_FAILED, injection_failed, no_file, no_member, refused
from harness.patterns import located
from harness.program import ON_WINDOWS
from harness.scenario import Scenario

NO_ARCHIVE = "sensor.pkg: no end record: not a ZIP archive"


class Injection(Scenario):
    def inject(self, library, archive="sensor.pkg", **expected):
        self.check("--file", library, "--archive", archive, **expected)

    def expect_injected(self, library, models, platform="linux_arm7", **archive):
        """Injects `library` and expects its member and its entry in the script, and nothing else."""
        name = os.path.basename(library)
        member, install_name = f"data/12345-vekapp{name}", f"vekapp{name}"
        self.write(library, "bytes of " + name)
        after = self.host_archive("sensor.pkg", platform, **archive)
        after.put("script.xml", host_script(platform, file(install_name, member, *models)))
        after.put(member, "bytes of " + name)
        self.inject(library, files={"sensor.pkg": after})


class Controllers(Injection):
    def test_a_zext_library_goes_to_the_arm7_controllers(self):
        self.expect_injected("plugin.zext", ARM7_MODELS)

    def test_a_so_library_goes_to_the_arm64_controllers_and_then_the_ombix_modules(self):
        self.expect_injected("libfoo.so", ARM64_MODELS + OMBIX_MODELS)

    def test_the_archives_own_platform_plays_no_part(self):
        self.expect_injected("plugin.zext", ARM7_MODELS, platform="ombix")

    def test_any_other_extension_goes_to_no_controller(self):
        for library in ("tool.dll", "PLUGIN.ZEXT", "lib.SO", "libfoo.so.1", "plain", ".so", "dot."):
            if ON_WINDOWS and library.endswith("."):
                continue  # Windows drops a dot at the end, so no file has such a name
            self.expect_injected(library, ())

    def test_only_the_file_name_is_taken_over(self):
        self.expect_injected("deep/er/libfoo.so", ARM64_MODELS + OMBIX_MODELS)


class Archive(Injection):
    def test_the_manifest_is_not_touched(self):
        self.expect_injected("plugin.zext", ARM7_MODELS, manifest=unified_manifest("linux_arm7"))

    def test_the_archives_comment_stays(self):
        self.expect_injected("plugin.zext", ARM7_MODELS, comment=b"signed off")

    def test_injecting_again_leaves_one_entry_and_one_member(self):
        self.expect_injected("plugin.zext", ARM7_MODELS)
        again = self.read("sensor.pkg")
        self.inject("plugin.zext", files={"sensor.pkg": again})

    def test_a_new_build_of_the_library_replaces_the_old_one(self):
        entry = file("vekappplugin.zext", "data/12345-vekappplugin.zext", *ARM7_MODELS)
        old = zip_builder.Member("data/12345-vekappplugin.zext", b"old")
        after = self.host_archive("sensor.pkg", "linux_arm7", entry, members=[old])
        after.put("script.xml", host_script("linux_arm7", entry)).put("data/12345-vekappplugin.zext", "new")
        self.write("plugin.zext", "new")
        self.inject("plugin.zext", files={"sensor.pkg": after})

    def test_a_second_library_goes_behind_the_first(self):
        first = file("vekappa.zext", "data/12345-vekappa.zext", *ARM7_MODELS)
        second = file("vekappb.zext", "data/12345-vekappb.zext", *ARM7_MODELS)
        after = self.host_archive()
        after.put("data/12345-vekappa.zext", "1")
        after.put("script.xml", host_script("linux_arm7", first, second)).put("data/12345-vekappb.zext", "2")
        self.write("a.zext", "1")
        self.write("b.zext", "2")
        self.inject("a.zext", files={"sensor.pkg": None})
        self.inject("b.zext", files={"sensor.pkg": after})

    def test_an_archive_without_platform_or_version_will_do(self):
        script = (
            host_script()
            .replace("R2", "X")
            .replace("R4", "Y")
            .replace('<Version value="6.1.2.57"/>', "<Other/>")
        )
        entry = file("vekapptool.dll", "data/12345-vekapptool.dll")
        after = self.archive("sensor.pkg", script)
        after.put(
            "script.xml",
            script.replace("</Startup>", "  " + entry.replace("\n", "\n  ").rstrip(" ") + "</Startup>"),
        )
        after.put("data/12345-vekapptool.dll", "tool")
        self.write("tool.dll", "tool")
        self.inject("tool.dll", files={"sensor.pkg": after})

    def test_an_empty_library_becomes_an_empty_member(self):
        after = self.host_archive()
        entry = file("vekappe.zext", "data/12345-vekappe.zext", *ARM7_MODELS)
        after.put("script.xml", host_script("linux_arm7", entry)).put("data/12345-vekappe.zext", b"")
        self.write("e.zext")
        self.inject("e.zext", files={"sensor.pkg": after})

    def test_a_large_library_arrives_whole(self):
        content = os.urandom(1 << 20) * 5
        after = self.host_archive()
        entry = file("vekappbig.zext", "data/12345-vekappbig.zext", *ARM7_MODELS)
        after.put("script.xml", host_script("linux_arm7", entry)).put("data/12345-vekappbig.zext", content)
        self.write("big.zext", content)
        self.inject("big.zext", files={"sensor.pkg": after})

    def test_names_with_special_characters(self):
        for library in ("a b.zext", "it's & <so>.zext", "$HOME;`id`.zext", "größe.zext"):
            if not (ON_WINDOWS and "<" in library):
                self.expect_injected(library, ARM7_MODELS)

    @unittest.skipIf(ON_WINDOWS, "no such names, modes or links there")
    def test_names_that_other_systems_do_not_allow(self):
        self.expect_injected('say "hi"\t.zext', ARM7_MODELS)

    @unittest.skipIf(ON_WINDOWS, "no such names, modes or links there")
    def test_permissions_stay(self):
        self.host_archive()
        self.write("plugin.zext", "x")
        for mode in (0o600, 0o664, 0o755):
            os.chmod(self.path("sensor.pkg"), mode)
            self.inject("plugin.zext", files={"sensor.pkg": None})

    @unittest.skipIf(ON_WINDOWS, "no such names, modes or links there")
    def test_a_link_stays_and_its_target_changes(self):
        self.host_archive("store/real.pkg")
        os.symlink("store/real.pkg", self.path("sensor.pkg"))
        self.write("plugin.zext", "x")
        self.inject("plugin.zext", files={"store/real.pkg": None})
        self.assertTrue(os.path.islink(self.path("sensor.pkg")))


class Failure(Injection):
    def setUp(self):
        super().setUp()
        self.write("plugin.zext", "library")

    def expect_failed(
        self, message, library="plugin.zext", archive="sensor.pkg", inside=False, stdout="", **options
    ):
        stderr = (UPGRADE_FAILED if inside else "") + injection_failed(message)
        self.inject(library, archive, stdout=stdout, stderr=stderr, status=1, **options)

    def test_no_archive(self):
        self.expect_failed(located("injectLibToArchiveFile", -999, no_file("sensor.pkg"), 1305))

    def test_a_directory_for_an_archive(self):
        os.mkdir(self.path("folder"))
        self.expect_failed(
            located("injectLibToArchiveFile", -5, "folder: Is a directory", 1305), archive="folder"
        )

    @unittest.skipIf(ON_WINDOWS, "no such files there")
    def test_a_device_for_an_archive(self):
        detail = "/dev/zero: not a plain file"
        self.expect_failed(located("injectLibToArchiveFile", -95, detail, 1305), archive="/dev/zero")

    def test_no_container(self):
        self.write("sensor.pkg", "plain text, and long enough for an end record")
        self.expect_failed(
            located("injectLibToArchiveFile", -74, NO_ARCHIVE, 1305), stdout=refused(NO_ARCHIVE)
        )

    def test_no_library(self):
        self.host_archive()
        self.expect_failed(
            located("TaVekUtil_InjectFile", -999, no_file("missing.zext")),
            library="missing.zext",
            inside=True,
        )

    def test_a_directory_for_a_library(self):
        self.host_archive()
        os.mkdir(self.path("folder.zext"))
        self.expect_failed(
            located("TaVekUtil_InjectFile", -5, "folder.zext: Is a directory"),
            library="folder.zext",
            inside=True,
        )

    def test_an_archive_without_script(self):
        self.archive("sensor.pkg")
        self.expect_failed(located("TaVekUtil_InjectFile", -999, no_member("script.xml")), inside=True)

    def test_a_damaged_member_is_never_saved_on_as_a_good_one(self):
        self.host_archive(members=[zip_builder.Member("host/bad", b"damaged", crc=1)])
        self.expect_failed(
            located("injectLibToArchiveFile", -74, "sensor.pkg: member host/bad: checksum mismatch", 1309)
        )

    @unittest.skipIf(ON_WINDOWS, "no such limit there")
    def test_a_full_disk_leaves_the_archive_as_it_was(self):
        self.write("plugin.zext", b"x" * 20000)
        self.host_archive()
        self.expect_failed(
            located("injectLibToArchiveFile", -5, "sensor.pkg: File too large", 1309), file_size=10000
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_directory_that_may_not_be_written(self):
        self.host_archive()
        self.expect_failed(
            located("injectLibToArchiveFile", -5, "sensor.pkg: Permission denied", 1309), unprivileged=True
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_library_that_may_not_be_read(self):
        self.host_archive()
        os.chmod(self.path("plugin.zext"), 0)
        self.expect_failed(
            located("TaVekUtil_InjectFile", -5, "plugin.zext: Permission denied"),
            unprivileged=True,
            inside=True,
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_an_archive_that_may_not_be_read(self):
        self.host_archive()
        os.chmod(self.path("sensor.pkg"), 0)
        self.expect_failed(
            located("injectLibToArchiveFile", -5, "sensor.pkg: Permission denied", 1305),
            unprivileged=True,
            stdout=refused("sensor.pkg: Permission denied"),
        )
