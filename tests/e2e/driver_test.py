"""The batch as a whole: where the configuration is looked for, the order of the work, and progress that cannot be shown."""

import os
import signal
import subprocess
import unittest

from harness.documents import configuration, entry, package_manifest, platform
from harness.messages import (
    CONFIGURATION_FAILED,
    PACKAGES_FAILED,
    batch_failed,
    no_element,
    no_file,
    path_too_long,
    processing,
    unchanged,
)
from harness.patterns import located
from harness.program import ON_WINDOWS, SEPARATOR, combined, environment, native
from harness.scenario import Scenario


class Driver(Scenario):
    def setUp(self):
        super().setUp()
        self.host_archive("sensor.pkg")
        self.text = configuration("Custom", ["sensor.pkg"])
        self.nothing_done = processing("sensor.pkg") + unchanged("sensor.pkg")

    def beside_the_program(self, name):
        return native(self.path("host/bin/win64")) + SEPARATOR + name

    def expect_not_loaded(self, name, status, detail, line=1268, **options):
        message = located("TaVekUtil_Run", status, detail, line)
        self.check("--config", name, stderr=batch_failed(message, name), status=1, **options)


class Place(Driver):
    def test_a_relative_name_is_looked_up_beside_the_program(self):
        self.write("host/bin/win64/cfg.xml", self.text)
        self.write("cfg.xml", "never read")
        self.check("--config", "cfg.xml", stdout=self.nothing_done)

    def test_and_never_in_the_working_directory(self):
        self.write("cfg.xml", self.text)
        self.expect_not_loaded("cfg.xml", -999, no_file(self.beside_the_program("cfg.xml")))

    def test_directories_in_a_relative_name(self):
        self.write("host/config files/größe.xml", self.text)
        for name in (
            "../../config files/größe.xml",
            "./../../config files/größe.xml",
            "..\\..\\config files\\größe.xml",
        ):
            self.check("--config", name, stdout=self.nothing_done)

    def test_an_absolute_name_is_used_as_it_is(self):
        self.write("elsewhere/cfg.xml", self.text)
        self.check("--config", self.path("elsewhere/cfg.xml"), stdout=self.nothing_done)
        missing = self.path("elsewhere/missing.xml")
        self.expect_not_loaded(missing, -999, no_file(missing))

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_a_program_started_through_a_link_looks_beside_itself(self):
        self.write("host/bin/win64/cfg.xml", self.text)
        os.symlink(self.program, self.path("link"))
        self.program = self.path("link")
        self.check("--config", "cfg.xml", stdout=self.nothing_done)

    @unittest.skipIf(ON_WINDOWS, "the emulator wants a path")
    def test_a_program_found_on_the_search_path_looks_beside_itself(self):
        self.write("host/bin/win64/cfg.xml", self.text)
        os.environ["PATH"], before = (
            os.path.dirname(self.program) + ":" + os.environ["PATH"],
            os.environ["PATH"],
        )
        self.addCleanup(os.environ.__setitem__, "PATH", before)
        self.program = os.path.basename(self.program)
        self.check("--config", "cfg.xml", stdout=self.nothing_done)


class Failure(Driver):
    def test_a_name_that_is_too_long(self):
        self.expect_not_loaded(
            "./" * 250 + "c", -75, path_too_long(self.beside_the_program("./" * 250 + "c")), 1266
        )

    def test_a_directory_for_a_configuration(self):
        os.mkdir(self.path("host/bin/win64/folder"))
        self.expect_not_loaded("folder", -5, self.beside_the_program("folder") + ": Is a directory")

    def test_the_name_is_repeated_as_typed(self):
        for name in ("missing.xml", "./sub/../missing.xml", "größe & 'co'.xml", "%s%n"):
            self.expect_not_loaded(name, -999, no_file(self.beside_the_program(name)))

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_configuration_that_may_not_be_read(self):
        path = self.write("host/bin/win64/cfg.xml", self.text)
        os.chmod(path, 0)
        self.expect_not_loaded("cfg.xml", -5, path + ": Permission denied", unprivileged=True)


class Order(Driver):
    def test_the_configuration_is_checked_before_the_packages(self):
        self.check_batch(
            prefix=None,
            load=["missing"],
            status=1,
            stderr=CONFIGURATION_FAILED
            + batch_failed(located("TaVekUtil_Load_Config", -999, no_element("OutputPrefix"))),
        )

    def test_all_packages_are_loaded_before_the_first_archive_is_opened(self):
        self.package(
            "pkgs/new", package_manifest("New", platform("linux_arm7", entry("VekApp", "a", "/a"))), ["a"]
        )
        self.check_batch(
            stock=["missing.pkg"],
            load=["pkgs/new", "missing"],
            status=1,
            stderr=PACKAGES_FAILED
            + batch_failed(
                located(
                    "TaVekUtil_Load_VekPkg_Manifest", -999, no_file(combined("missing", "vek_manifest.xml"))
                )
            ),
        )

    def test_archives_in_the_order_of_the_configuration(self):
        for name in ("b.pkg", "a.pkg", "c.pkg"):
            self.host_archive(name)
        self.check_batch(
            stock=["b.pkg", "a.pkg", "c.pkg"],
            stdout="".join(processing(name) + unchanged(name) for name in ("b.pkg", "a.pkg", "c.pkg")),
        )


@unittest.skipIf(ON_WINDOWS, "no such devices and signals there")
class Progress(Driver):
    def run_with_output_to(self, output):
        """A run that saves an archive; answers its exit status and what it says on standard error."""
        self.package(
            "pkgs/new", package_manifest("New", platform("linux_arm7", entry("VekApp", "a", "/a"))), ["a"]
        )
        self.write("host/bin/win64/cfg.xml", configuration("Custom", ["sensor.pkg"], ["pkgs/new"]))
        self.before = self.snapshot()
        command = [self.program, "--config", "cfg.xml"]
        done = subprocess.run(
            command, cwd=self.root, env=environment(), stdout=output, stderr=subprocess.PIPE, check=False
        )
        return done.returncode, done.stderr.decode()

    def test_that_cannot_be_written_is_no_failure(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.run_with_output_to(full), (0, ""))
        self.compare_files(self.before, self.snapshot(), {"Custom-sensor.pkg": None})

    def test_that_nobody_reads_any_more_ends_the_run(self):
        reading, writing = os.pipe()
        os.close(reading)
        self.addCleanup(os.close, writing)
        self.assertEqual(self.run_with_output_to(writing), (-signal.SIGPIPE, ""))
        self.compare_files(self.before, self.snapshot(), {})
