"""The version of the host software in an installation directory, from its executable."""

import os

from harness.documents import unified_manifest
from harness.executable import executable
from harness.messages import extraction_failed
from harness.scenario import EXECUTABLE_PATH, Scenario

NO_VERSION = extraction_failed("TaQor version could not be established")


class HostVersion(Scenario):
    def expect_version(self, text, content):
        self.write("tools/" + EXECUTABLE_PATH, content)
        self.check(
            "--archive",
            "tools",
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files={"m.xml": unified_manifest("win", be_version=text)},
        )

    def expect_none(self, content):
        self.write("tools/" + EXECUTABLE_PATH, content)
        self.check("--archive", "tools", "--manifest", "m.xml", stderr=NO_VERSION, status=1)

    def test_four_fields_without_leading_zeros(self):
        for fields in (
            (6, 1, 2, 57),
            (10, 0, 0, 1),
            (1, 0, 0, 0),
            (0, 0, 0, 0),
            (65535, 65535, 65535, 65535),
        ):
            self.expect_version(".".join(map(str, fields)), executable(fields))

    def test_the_product_version_plays_no_part(self):
        self.expect_version("6.1.2.57", executable((6, 1, 2, 57), product_version=(0, 0, 0, 0)))
        self.expect_version("6.1.2.57", executable((6, 1, 2, 57), product_version=(7, 7, 7, 7)))

    def test_an_executable_without_version_information(self):
        self.expect_none(executable())

    def test_no_executable_at_all(self):
        for content in (
            b"",
            b"M",
            b"MZ",
            b"#!/bin/sh\n",
            bytes(4096),
            b"MZ" + bytes(58) + b"\xff" * 4,
            os.urandom(3000),
        ):
            self.expect_none(content)

    def test_a_directory_in_its_place(self):
        os.makedirs(self.path("tools/" + EXECUTABLE_PATH))
        self.check("--archive", "tools", "--manifest", "m.xml", stderr=NO_VERSION, status=1)

    def test_a_truncated_executable_ends_in_a_message(self):
        whole = executable((6, 1, 2, 57))
        for length in range(0, 0x200, 37):
            self.expect_none(whole[:length])

    def test_a_resource_that_leads_outside_the_file(self):
        whole = executable((6, 1, 2, 57))
        leaf = whole.index(b"\x58\x10\0\0")  # where the leaf says the resource lies
        self.expect_none(whole[:leaf] + b"\xff\xff\xff\x7f" + whole[leaf + 4 :])

    def test_with_a_manifest_in_the_directory_the_executable_is_not_asked(self):
        self.write("tools/vekPackages.xml", unified_manifest("win", be_version="5"))
        self.expect_version("5", b"anything")
