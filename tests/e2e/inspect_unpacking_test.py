"""TaVekInspect plan: tar files that the run could not unpack, or unpacks for a later entry."""

import json
import os
import unittest

from harness import program
from harness.documents import configuration
from harness.planning import Planning
from harness.program import ON_WINDOWS, combined


class Unpacking(Planning):
    def setUp(self):
        super().setUp()
        self.host_archive()
        self.new_package(directory="work")
        self.write("work/deep/file")
        self.tar("pkgs/new.tar", "work")
        # Who has no rights of root may write the results.
        os.chmod(self.root, 0o777)

    def agreed(self, *load, **options):
        """The plan's own findings, when the run then ends as it says."""
        self.write("host/bin/win64/cfg.xml", configuration("Custom", ["sensor.pkg"], list(load)))
        arguments = ["plan", "cfg.xml", "--json"]
        plan = json.loads(program.start(self.inspector, arguments, self.root, **options).stdout)
        run = program.start(self.program, ["--config", "cfg.xml"], self.root, **options)
        self.assertEqual(plan["succeeds"], run.status == 0, (plan, run))
        return self.texts(plan)

    def error(self, reason, entry="pkgs/new.tar"):
        return [f'error: package entry "{entry}": {reason}']

    def test_it_happens_elsewhere(self):
        archive = self.plan(["pkgs/new.tar"], status=0)["archives"][0]
        self.assertEqual(archive["added"][0]["path"], combined("pkgs/new", "a.so"))

    @unittest.skipIf(ON_WINDOWS, "temporary files have another place there")
    def test_no_temporary_directory_is_trouble(self):
        self.plan(status=0)
        done = program.start(self.inspector, ["plan", "cfg.xml"], self.root, variables={"TMPDIR": "/none"})
        told = "TaVekInspect: no temporary directory: No such file or directory\n"
        self.assertEqual((done.stdout, done.stderr, done.status), ("", told, 2))

    def test_a_later_entry_is_the_directory_of_an_earlier_one(self):
        self.assertEqual(self.agreed("pkgs/new.tar", "pkgs/new", "./pkgs/../pkgs\\new/"), [])

    def test_an_earlier_entry_is_the_directory_of_a_later_one(self):
        where = combined("pkgs/new", "vek_manifest.xml")
        reason = f"{where}: No such file or directory"
        self.assertEqual(self.agreed("pkgs/new", "pkgs/new.tar"), self.error(reason, "pkgs/new"))

    def test_what_is_unpacked_already(self):
        self.assertEqual(self.agreed("pkgs/new.tar"), [])
        self.assertEqual(self.agreed("pkgs/new.tar"), [])

    def test_a_tar_file_that_is_missing(self):
        reason = "pkgs/none.tar: No such file or directory"
        self.assertEqual(self.agreed("pkgs/none.tar"), self.error(reason, "pkgs/none.tar"))

    def test_a_tar_file_that_is_none(self):
        self.write("pkgs/text.tar", "no tar file, " * 99)
        self.assertEqual(self.agreed("pkgs/text.tar"), self.error("tar cannot unpack it", "pkgs/text.tar"))

    def test_a_directory_where_a_file_belongs(self):
        self.write("pkgs/new/deep/file/x")
        where = combined("pkgs/new", "deep/file")
        self.assertEqual(self.agreed("pkgs/new.tar"), self.error(f"{where}: Is a directory"))

    def test_a_file_where_the_directory_belongs(self):
        self.write("pkgs/new")
        self.assertEqual(self.agreed("pkgs/new.tar"), self.error("pkgs/new: File exists"))

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_directory_that_may_not_be_made(self):
        os.chmod(self.path("pkgs"), 0o555)
        self.addCleanup(os.chmod, self.path("pkgs"), 0o755)
        told = self.agreed("pkgs/new.tar", unprivileged=True)
        self.assertEqual(told, self.error("pkgs/new: Permission denied"))

    @unittest.skipIf(ON_WINDOWS, "no such permissions there")
    def test_a_directory_that_may_not_be_written_into(self):
        os.mkdir(self.path("pkgs/new"), 0o555)
        self.addCleanup(os.chmod, self.path("pkgs/new"), 0o755)
        told = self.agreed("pkgs/new.tar", unprivileged=True)
        self.assertRegex(told[0], "pkgs/new/.*: Permission denied$")
