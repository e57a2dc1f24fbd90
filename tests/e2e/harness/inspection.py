"""Runs of TaVekInspect, which must leave everything as it is."""

import json
import os

from . import json_schema, program
from .documents import app, entry, file, host_script, unified_manifest
from .scenario import Scenario
from .zip_builder import Member


class Inspection(Scenario):
    def setUp(self):
        super().setUp()
        self.assertTrue(program.INSPECTOR, "run.py needs --inspector for these tests")
        self.inspector = os.path.join(self.programs, os.path.basename(program.INSPECTOR))

    def inspect(self, *arguments, status=0, stderr="", writes=()):
        """Runs the program; answers its standard output. `writes` names the files it may write."""
        before = self.snapshot()
        result = program.start(self.inspector, arguments, self.root)
        self.assertEqual((result.stderr, result.status), (stderr, status), result.stdout)
        self.compare_files(before, self.snapshot(), {name: None for name in writes})
        return result.stdout

    def document(self, *arguments, status=0, **options):
        """The JSON document that a command prints, held against the schema."""
        document = json.loads(self.inspect(*arguments, "--json", status=status, **options))
        json_schema.validate(document)
        self.assertEqual(document["command"], "diff" if arguments[0] == "report" else arguments[0])
        return document

    # ---- Archives ----------------------------------------------------------------------------------------

    own = entry("VekApp", "a.so", "/a.so")

    def installed(self, name="new.pkg", content="content of a.so", **more):
        """An archive with the package "New" in it, as the tool leaves it behind."""
        script = host_script("linux_arm7", file("/a.so", "data/12345-a.so", "R2", "R4", "R4-mc"))
        members = [Member("data/12345-a.so", content)]
        self.archive(name, script, unified_manifest("linux_arm7", app("New", self.own)), members, **more)
