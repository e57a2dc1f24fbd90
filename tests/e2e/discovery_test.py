"""The stock archives of the host software, which a configuration without archives falls back to."""

import os
import unittest

from harness.documents import entry, package_manifest, platform
from harness.messages import (
    DISCOVERY_FAILED,
    NOTHING_TO_PROCESS,
    NO_STOCK,
    archive_failed,
    loaded,
    processing,
    saving,
    unchanged,
)
from harness.program import ABNORMAL_END, ON_WINDOWS, SEPARATOR, combined, native
from harness.scenario import Scenario


class Discovery(Scenario):
    def stock(self, name):
        """The path of a file in the host software's package directory as the program prints it."""
        return native(self.path("host")) + SEPARATOR + "pkg" + SEPARATOR + name

    def expect_found(self, *names, stock=None):
        lines = "".join(processing(self.stock(name)) + unchanged(self.stock(name)) for name in names)
        self.check_batch(stock=stock, stdout=NO_STOCK + lines)

    def expect_abnormal_end(self, before=""):
        self.check_batch(stock=None, stdout=NO_STOCK, stderr=before + NOTHING_TO_PROCESS, status=ABNORMAL_END)


class Found(Discovery):
    def test_by_the_beginning_of_their_name_and_their_extension(self):
        for name in ("14-2.dat", "0-base.dat", "140.dat", "14.dat", "0-.dat"):
            self.host_archive("host/pkg/" + name)
        for name in (
            "1-x.dat",
            "01.dat",
            "14-2.bin",
            "14-2.dat.bak",
            "04.dat",
            "15-1.dat",
            "14",
            "0-",
            "14-2.DAT",
            "x14-2.dat",
            " 14-2.dat",
            "14dat",
            "14-2.dat.",
            ".dat",
        ):
            if not (ON_WINDOWS and name in ("14-2.DAT", "14-2.dat.")):
                self.write("host/pkg/" + name, "never opened")
        self.expect_found("0-.dat", "0-base.dat", "14-2.dat", "14.dat", "140.dat")

    def test_directories_are_none(self):
        self.host_archive("host/pkg/14-2.dat")
        self.host_archive("host/pkg/14-sub.dat/14-3.dat")
        self.expect_found("14-2.dat")

    def test_whenever_no_archive_is_configured(self):
        self.host_archive("host/pkg/14-2.dat")
        for none in (None, [], [""], ["", " "]):
            self.expect_found("14-2.dat", stock=none)

    def test_never_when_one_is(self):
        self.host_archive("host/pkg/14-2.dat")
        self.host_archive("sensor.pkg")
        self.check_batch(stdout=processing("sensor.pkg") + unchanged("sensor.pkg"))

    def test_the_results_lie_beside_them(self):
        own = entry("VekApp", "a.so", "/a")
        self.host_archive("host/pkg/14-2.dat")
        self.package("pkgs/new", package_manifest("New", platform("linux_arm7", own)), ["a.so"])
        self.check_batch(
            stock=None,
            load=["pkgs/new"],
            files={"host/pkg/Custom-14-2.dat": None},
            stdout=NO_STOCK
            + processing(self.stock("14-2.dat"))
            + loaded("linux_arm7", combined("pkgs/new", "a.so"))
            + saving(self.stock("Custom-14-2.dat")),
        )

    @unittest.skipIf(ON_WINDOWS, "no links there")
    def test_links_to_files_count(self):
        self.host_archive("store.dat")
        os.makedirs(self.path("host/pkg"))
        os.symlink("../../store.dat", self.path("host/pkg/14-2.dat"))
        os.symlink("nowhere", self.path("host/pkg/14-3.dat"))
        self.expect_found("14-2.dat")

    def test_an_extension_of_31_characters_is_just_another(self):
        self.host_archive("host/pkg/14-2.dat")
        self.write("host/pkg/14-x." + "e" * 31)
        self.expect_found("14-2.dat")

    def test_a_file_with_a_good_name_that_is_no_archive_ends_the_batch(self):
        self.host_archive("host/pkg/14-2.dat")
        path = self.stock("14-1.dat")
        self.archive("host/pkg/14-1.dat", "<Startup/>")
        self.check_batch(
            stock=None,
            stdout=NO_STOCK + processing(path),
            status=1,
            stderr=archive_failed("Could not determine platform"),
        )


class NoneFound(Discovery):
    def test_without_a_package_directory(self):
        self.expect_abnormal_end(DISCOVERY_FAILED)

    def test_with_a_file_in_its_place(self):
        self.write("host/pkg", "a file")
        self.expect_abnormal_end(DISCOVERY_FAILED)

    def test_with_nothing_that_qualifies_there_is_one_line_of_error(self):
        os.makedirs(self.path("host/pkg"))
        self.expect_abnormal_end()
        self.write("host/pkg/15-1.dat")
        self.expect_abnormal_end()

    def test_an_extension_of_32_characters_spoils_the_search(self):
        self.host_archive("host/pkg/14-2.dat")
        self.write("host/pkg/x." + "e" * 32)
        self.expect_abnormal_end(DISCOVERY_FAILED)

    def test_packages_are_never_looked_at(self):
        os.makedirs(self.path("host/pkg"))
        self.check_batch(
            stock=None,
            load=["missing.tar", ""],
            remove=["x" * 512],
            stdout=NO_STOCK,
            stderr=NOTHING_TO_PROCESS,
            status=ABNORMAL_END,
        )

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_directory_that_may_not_be_read(self):
        self.host_archive("host/pkg/14-2.dat")
        os.chmod(self.path("host/pkg"), 0o111)
        self.check_batch(
            stock=None,
            stdout=NO_STOCK,
            stderr=DISCOVERY_FAILED + NOTHING_TO_PROCESS,
            status=ABNORMAL_END,
            unprivileged=True,
        )
