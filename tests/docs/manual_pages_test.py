"""The manual pages are made from the documents and are clean in the eyes of mandoc and groff."""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import options
from workplace import REPOSITORY

sys.path.insert(0, str(REPOSITORY / "scripts"))

import manual_pages  # noqa: E402

# What mandoc says of pages that are not installed, and of a system that it knows from its own defaults alone.
NOT_MEANT = re.compile(r"STYLE: (referenced manual not found|operating system explicitly specified)")


def project_version():
    return re.search(r"^project\(\w+ VERSION (\S+)", (REPOSITORY / "CMakeLists.txt").read_text(), re.M).group(
        1
    )


class ManualPages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.directory.cleanup)
        command = [sys.executable, REPOSITORY / "scripts/manual_pages.py"]
        subprocess.run([*command, "--version", project_version(), "--output", cls.directory.name], check=True)
        cls.pages = sorted(pathlib.Path(cls.directory.name).glob("man?/*"))

    def test_every_page_is_made(self):
        self.assertEqual(len(self.pages), len(manual_pages.PAGES))

    def test_mandoc_finds_nothing(self):
        for page in self.pages:
            done = subprocess.run(
                [options.tool("mandoc"), "-T", "lint", page], capture_output=True, text=True, check=False
            )
            findings = [line for line in done.stdout.splitlines() if not NOT_MEANT.search(line)]
            self.assertEqual(findings, [])

    def test_groff_warns_of_nothing(self):
        options.tool("groff")
        for page in self.pages:
            done = subprocess.run(
                [options.tool("man"), "--warnings", "-E", "UTF-8", "-Tutf8", "-Z", "-l", page],
                env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"},
                capture_output=True,
                text=True,
                check=True,
            )
            self.assertEqual(done.stderr, "", page.name)

    def shown(self, name):
        """The page as readers see it."""
        page = pathlib.Path(self.directory.name) / name
        command = [options.tool("mandoc"), "-T", "ascii", "-O", "width=100", page]
        done = subprocess.run(command, capture_output=True, check=True)
        return re.sub(r".\x08", "", done.stdout.decode())

    def test_tables_that_look_alike_say_what_they_are_of(self):
        text = self.shown("man5/TaVekUtil-container.5")
        for record in ("Local header", "Central header", "ZIP64 end record", "ZIP64 locator", "End record"):
            self.assertIn(f"     {record}: offset, size\n\n     0, 4    Field: signature.", text)

    def test_what_users_need_has_a_page(self):
        covered = {document for page in manual_pages.PAGES for document in page.documents}
        others = {
            "README.md",
            "architecture.md",
            "installation.md",
            "reliability.md",
            "tar.md",
            "windows.md",
            "xml.md",
        }
        manual = {
            f"docs/{path.name}" for path in (REPOSITORY / "docs").glob("*.md") if path.name not in others
        }
        self.assertEqual(covered, manual | {"SECURITY.md"})

    def test_the_page_shows_what_the_document_says(self):
        text = self.shown("man1/TaVekUtil.1")
        for expected in (
            "TaVekUtil - edit sensor upgrade archives",
            "TaVekUtil --config CONFIGURATION [--platform PLATFORM]",
            "Batch\n     --config CONFIGURATION unpacks",
            "     zext    R2, R4, R4-mc",
            "           Manifest saved at installed.xml\n",
            "EXIT STATUS",
            f"TaVekUtil {project_version()}",
        ):
            self.assertIn(expected, text)


if __name__ == "__main__":
    unittest.main()
