"""Files that are hard to reach or to replace: open in another program, read-only, or at the end of a long path."""

import os

from harness.documents import ARM7_MODELS, entry, file, host_script, package_manifest, platform
from harness.messages import archive_failed, injection_failed, loaded, processing, saving
from harness.patterns import located
from harness.program import ON_WINDOWS, combined, holding
from harness.scenario import Scenario

IN_USE = "The file is in use by another program"
READ_ONLY = "The file is read-only"


class Injection(Scenario):
    """The library goes into the archive itself, so the archive is what is replaced."""

    def setUp(self):
        super().setUp()
        self.write("plugin.zext", "library")
        self.after = self.host_archive("sensor.pkg")
        self.after.put("script.xml", host_script("linux_arm7", self.script_entry()))
        self.after.put("data/12345-vekappplugin.zext", "library")

    def script_entry(self):
        return file("vekappplugin.zext", "data/12345-vekappplugin.zext", *ARM7_MODELS)

    def expect_refused_on_windows(self, fault):
        """Elsewhere the name of a file is what is replaced, whatever becomes of the file."""
        words = ("--file", "plugin.zext", "--archive", "sensor.pkg")
        if ON_WINDOWS:
            fault = located("injectLibToArchiveFile", -5, "sensor.pkg: " + fault, 1309)
            self.check(*words, stderr=injection_failed(fault), status=1)
        else:
            self.check(*words, files={"sensor.pkg": self.after})

    def test_an_archive_that_another_program_has_open(self):
        with holding("sensor.pkg", self.root):
            self.expect_refused_on_windows(IN_USE)

    def test_an_archive_that_is_read_only(self):
        os.chmod(self.path("sensor.pkg"), 0o444)
        self.expect_refused_on_windows(READ_ONLY)

    def test_a_library_that_another_program_has_open_can_be_read(self):
        with holding("plugin.zext", self.root):
            words = ("--file", "plugin.zext", "--archive", "sensor.pkg")
            self.check(*words, files={"sensor.pkg": self.after})


class Batch(Scenario):
    """The result of an earlier run stands where the new one is to go."""

    def setUp(self):
        super().setUp()
        manifest = package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a.so")))
        self.package("new", manifest, ["a.so"])
        self.host_archive("sensor.pkg", "linux_arm7")
        self.write("Custom-sensor.pkg", "the result of an earlier run")
        self.lines = processing("sensor.pkg") + loaded("linux_arm7", combined("new", "a.so"))

    def expect_refused_on_windows(self, fault):
        # Nobody can foretell what other programs do.
        self.foreseeable = False
        if ON_WINDOWS:
            fault = located("TaVekUtil_ModifyVekPkgs", -5, "Custom-sensor.pkg: " + fault)
            self.check_batch(load=["new"], stdout=self.lines, stderr=archive_failed(fault), status=1)
        else:
            self.expect_saved()

    def expect_saved(self):
        lines = self.lines + saving("Custom-sensor.pkg")
        self.check_batch(load=["new"], stdout=lines, files={"Custom-sensor.pkg": None})

    def test_a_result_that_another_program_has_open(self):
        with holding("Custom-sensor.pkg", self.root):
            self.expect_refused_on_windows(IN_USE)

    def test_a_result_that_is_read_only(self):
        os.chmod(self.path("Custom-sensor.pkg"), 0o444)
        self.expect_refused_on_windows(READ_ONLY)

    def test_an_archive_that_another_program_reads_can_be_processed(self):
        with holding("sensor.pkg", self.root):
            self.expect_saved()


class LongPaths(Scenario):
    """Windows once allowed 260 characters."""

    DEEP = "/".join([letter * 90 for letter in "abcd"])

    def test_injection(self):
        self.write(self.DEEP + "/plugin.zext", "library")
        after = self.host_archive(self.DEEP + "/sensor.pkg")
        entry_added = file("vekappplugin.zext", "data/12345-vekappplugin.zext", *ARM7_MODELS)
        after.put("script.xml", host_script("linux_arm7", entry_added))
        after.put("data/12345-vekappplugin.zext", "library")
        self.check(
            "--file",
            self.DEEP + "/plugin.zext",
            "--archive",
            self.DEEP + "/sensor.pkg",
            files={self.DEEP + "/sensor.pkg": after},
        )

    def test_extraction(self):
        self.host_archive(self.DEEP + "/sensor.pkg")
        target = self.DEEP + "/manifest.xml"
        words = ("--manifest", target, "--archive", self.DEEP + "/sensor.pkg")
        self.check(*words, stdout=f"Manifest saved at {target}\n", files={target: None})

    def test_a_batch_with_a_packed_package(self):
        manifest = package_manifest("New", platform("linux_arm7", entry("VekApp", "a.so", "/a.so")))
        self.package("packing", manifest, ["a.so"])
        self.tar(self.DEEP + "/new.tar", "packing")
        self.host_archive(self.DEEP + "/sensor.pkg", "linux_arm7")
        self.check_batch(
            stock=[self.DEEP + "/sensor.pkg"],
            load=[self.DEEP + "/new.tar"],
            stdout=processing(self.DEEP + "/sensor.pkg")
            + loaded("linux_arm7", combined(self.DEEP + "/new", "a.so"))
            + saving(combined(self.DEEP, "Custom-sensor.pkg")),
            files=self.unpacked(self.DEEP + "/new", "a.so", "vek_manifest.xml")
            | {self.DEEP + "/Custom-sensor.pkg": None},
        )
