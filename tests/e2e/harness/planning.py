"""Plans of TaVekInspect, and what they are made for."""

from .documents import configuration, entry, package_manifest, platform
from .executable import executable
from .inspection import Inspection
from .scenario import EXECUTABLE_PATH


class Planning(Inspection):
    def plan(self, load=(), stock=("sensor.pkg",), remove=(), prefix="Custom", key="all", status=1):
        self.write("host/bin/win64/cfg.xml", configuration(prefix, list(stock), list(load), list(remove)))
        return self.document("plan", "cfg.xml", "--platform", key, status=status)

    def new_package(self, *entries, name="New", be_version="*", key="linux_arm7", directory="pkgs/new"):
        files = entries or (self.own,)
        manifest = package_manifest(name, platform(key, *files), be_version=be_version)
        self.package(directory, manifest, ["a.so"])
        return directory

    def installation(self):
        self.write("tools/" + EXECUTABLE_PATH, executable((6, 1, 2, 57)))

    def texts(self, part):
        return [f"{each['severity']}: {each['text']}" for each in part["findings"]]

    def trap(self, expected, *arguments, **options):
        """The plan, in which some archive has just this warning, and which would succeed."""
        told = self.plan(*arguments, **options)
        self.assertTrue(told["succeeds"], told)
        texts = [text for archive in told["archives"] for text in self.texts(archive)]
        self.assertEqual(texts, ["warning: " + expected])
        return told
