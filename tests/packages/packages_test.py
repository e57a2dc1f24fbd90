#!/usr/bin/env python3
"""Tries the packages: what they hold, and that they install, run and go again, each in a directory of its own.

    packages_test.py --linux build/release/packages --windows build/windows/packages [--wine WINE]

The Debian package is installed by dpkg in a root of its own, the Windows package runs under Wine where that is there.
"""

import argparse
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tarfile
import tempfile
import unittest
import zipfile

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(REPOSITORY / "tests/docs"), str(REPOSITORY / "scripts")]

import manual_pages  # noqa: E402
import markdown  # noqa: E402
import workplace  # noqa: E402

OPTIONS = argparse.Namespace()
VERSION = re.search(r"^project\(\w+ VERSION (\S+)", (REPOSITORY / "CMakeLists.txt").read_text(), re.M).group(
    1
)
PROGRAMS = [name for name in ("TaVekUtil", "TaVekInspect") if (REPOSITORY / name / "CMakeLists.txt").exists()]
TOP_DOCUMENTS = [
    name
    for name in ("CHANGELOG.md", "CONTRIBUTING.md", "LICENSE", "README.md", "SECURITY.md")
    if (REPOSITORY / name).exists()
]


def tree(directory, *patterns):
    """The files of a directory of the repository that go into packages, relative to the repository."""
    paths = (
        path for pattern in patterns for path in (REPOSITORY / directory).rglob(pattern) if path.is_file()
    )
    return [path.relative_to(REPOSITORY).as_posix() for path in paths]


def home_files():
    """What lies beside the programs, above them and below, in every package."""
    samples = [name for name in tree("samples", "*") if name != "samples/sample_config.xml"]
    completions = [f"completions/{name}.ps1" for name in PROGRAMS]
    return ["bin/sample_config.xml", "bin/tar.exe"] + completions + tree("schemas", "*") + samples


def manual():
    return tree("docs", "*.md", "*.svg", "*.json")


def linux_files():
    pages = [
        page for page in manual_pages.PAGES if all((REPOSITORY / name).exists() for name in page.documents)
    ]
    return sorted(
        [f"bin/{name}" for name in PROGRAMS]
        + [f"lib/tavekutil/bin/{name}" for name in PROGRAMS]
        + [f"lib/tavekutil/{name}" for name in home_files()]
        + [f"share/doc/tavekutil/{name}" for name in manual() + TOP_DOCUMENTS + ["changelog.gz", "copyright"]]
        + [f"share/man/{page.path}.gz" for page in pages]
        + [f"share/bash-completion/completions/{name}" for name in PROGRAMS]
        + [f"share/zsh/vendor-completions/_{name}" for name in PROGRAMS]
    )


def windows_files():
    return sorted([f"bin/{name}.exe" for name in PROGRAMS] + home_files() + manual() + TOP_DOCUMENTS)


def files_below(directory):
    """Every file and link below, relative to it."""
    found = (pathlib.Path(place) / name for place, _, names in os.walk(directory) for name in names)
    return sorted(path.relative_to(directory).as_posix() for path in found)


def file_version(path):
    """The file version in the version resource of a Windows program."""
    content = path.read_bytes()
    mark = struct.pack("<II", 0xFEEF04BD, 0x10000)
    high, low = struct.unpack_from("<II", content, content.index(mark) + len(mark))
    return f"{high >> 16}.{high & 0xFFFF}.{low >> 16}.{low & 0xFFFF}"


class PackageTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)

    def package(self, directory, name):
        path = pathlib.Path(directory) / name
        self.assertTrue(path.is_file(), f"{path} was not made")
        return path

    def run_batch(self, *program, **options):
        """Runs the sample configuration, which unpacks both sample packages, as its users would."""
        work = self.root / "work"
        workplace.lay_out(work)
        command = [*program, "--config", "sample_config.xml"]
        done = subprocess.run(command, cwd=work, capture_output=True, text=True, check=False, **options)
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        for name in workplace.ARCHIVES:
            with zipfile.ZipFile(work / "archives" / f"Custom-{name}") as archive:
                self.assertIn("vekPackages.xml", archive.namelist())
        self.assertEqual(done.stdout.count("Saving new package as"), 3)

    def check_programs(self, *paths, **options):
        for program in paths:
            done = subprocess.run([*program, "--help"], capture_output=True, text=True, check=True, **options)
            self.assertIn("usage", done.stdout.lower())


class DebianPackage(PackageTest):
    def setUp(self):
        super().setUp()
        self.file = self.package(OPTIONS.linux, f"tavekutil_{VERSION}_{architecture()}.deb")
        self.system = self.root / "system"
        for name in ("", "admin/updates", "admin/info"):
            (self.system / name).mkdir(parents=True, exist_ok=True)

    def dpkg(self, *arguments, check=True):
        command = ["dpkg", "--force-not-root", "--force-script-chrootless", "--log=/dev/null"]
        command += [f"--instdir={self.system}/root", f"--admindir={self.system}/admin", *arguments]
        return subprocess.run(command, capture_output=True, text=True, check=check)

    def make_system(self, *packages):
        """A system on which dpkg knows `packages` as installed, and nothing else."""
        query = [
            "dpkg-query",
            "-W",
            "-f",
            "Package: ${Package}\nStatus: install ok installed\nMaintainer: x\n"
            "Architecture: ${Architecture}\nVersion: ${Version}\nDescription: x\n\n",
            *packages,
        ]
        status = subprocess.run(query, capture_output=True, text=True, check=True).stdout if packages else ""
        (self.system / "admin/status").write_text(status)
        (self.system / "root").mkdir()

    def test_is_installed_run_and_removed(self):
        self.make_system("tar", "libc6")
        self.dpkg("--install", str(self.file))
        usr = self.system / "root/usr"
        self.assertEqual(files_below(self.system / "root"), [f"usr/{name}" for name in linux_files()])
        self.check_programs(*([usr / "bin" / name] for name in PROGRAMS))
        self.run_batch(usr / "bin/TaVekUtil")
        self.dpkg("--remove", "tavekutil")
        self.assertEqual(files_below(self.system / "root"), [])
        self.assertEqual(list((self.system / "root").iterdir()), [])

    def test_wants_tar(self):
        self.make_system("libc6")
        refused = self.dpkg("--install", str(self.file), check=False)
        self.assertNotEqual(refused.returncode, 0)
        self.assertIn("tavekutil depends on tar", refused.stderr)

    def test_manual_pages_are_found(self):
        self.make_system("tar", "libc6")
        self.dpkg("--install", str(self.file))
        pages = self.system / "root/usr/share/man"
        for name in (path.name.split(".")[0] for path in pages.glob("man?/*")):
            command = ["man", "-M", str(pages), name]
            shown = subprocess.run(command, capture_output=True, text=True, check=True).stdout
            self.assertIn(f"TaVekUtil {VERSION}", shown)


class TarPackage(PackageTest):
    def test_is_unpacked_and_run(self):
        name = f"TaVekUtil-{VERSION}-linux-{os.uname().machine}"
        with tarfile.open(self.package(OPTIONS.linux, name + ".tar.gz")) as archive:
            archive.extractall(self.root / "opt")
        self.assertEqual(os.listdir(self.root / "opt"), [name])
        home = self.root / "opt" / name
        self.assertEqual(files_below(home), linux_files())
        self.check_programs(*([home / "bin" / name] for name in PROGRAMS))
        self.run_batch(home / "bin/TaVekUtil")
        self.assertEqual(files_below(home), linux_files(), "a run leaves nothing in the program's directory")

    def test_completion_is_set_up_as_the_manual_says(self):
        with tarfile.open(
            self.package(OPTIONS.linux, f"TaVekUtil-{VERSION}-linux-{os.uname().machine}.tar.gz")
        ) as archive:
            archive.extractall(self.root)
        home = next(self.root.iterdir())
        lines = [
            line.replace("/opt/tavekutil", str(home))
            for block in markdown.blocks(REPOSITORY / "docs/installation.md")
            for line in block.lines
            if "/opt/tavekutil" in line
        ]
        self.assertEqual(len(lines), 2)
        bash = ["bash", "--norc", "-c", f"{lines[0]}\ncomplete -p {' '.join(PROGRAMS)}"]
        known = subprocess.run(bash, capture_output=True, text=True, check=True).stdout
        self.assertEqual(known, "".join(f"complete -F _{name} {name}\n" for name in PROGRAMS))
        if not shutil.which("zsh"):
            self.skipTest("zsh is not installed")
        asked = "\n".join(f"print $_comps[{name}]" for name in PROGRAMS)
        zsh = ["zsh", "-f", "-c", f"{lines[1]}\nautoload -Uz compinit && compinit -u -D\n{asked}"]
        known = subprocess.run(zsh, capture_output=True, text=True, check=True).stdout
        self.assertEqual(known, "".join(f"_{name}\n" for name in PROGRAMS))


class WindowsPackage(PackageTest):
    def setUp(self):
        super().setUp()
        name = f"TaVekUtil-{VERSION}-win64"
        with zipfile.ZipFile(self.package(OPTIONS.windows, name + ".zip")) as archive:
            archive.extractall(self.root / "tools")
        self.assertEqual(os.listdir(self.root / "tools"), [name])
        self.home = self.root / "tools" / name

    def test_holds_what_it_should(self):
        self.assertEqual(files_below(self.home), windows_files())

    def test_programs_carry_the_version(self):
        for program in self.home.glob("bin/*.exe"):
            self.assertEqual(file_version(program), VERSION + ".0", program.name)
            for key in ("FileVersion", "ProductVersion"):
                shown = (
                    (key + "\0").encode("utf-16-le")
                    + b"(\0\0)?"
                    + re.escape((VERSION + "\0").encode("utf-16-le"))
                )
                self.assertRegex(program.read_bytes(), shown, program.name)

    def test_runs(self):
        if not OPTIONS.wine:
            self.skipTest("Wine is not installed")
        environment = dict(os.environ, WINEDEBUG="-all", WINEPREFIX=str(self.root / "wine"))
        programs = [[OPTIONS.wine, self.home / f"bin/{name}.exe"] for name in PROGRAMS]
        self.check_programs(*programs, env=environment)
        self.run_batch(*programs[0], env=environment)
        self.assertEqual(
            files_below(self.home), windows_files(), "a run leaves nothing in the program's directory"
        )


def architecture():
    command = ["dpkg", "--print-architecture"]
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()


def main():
    parser = argparse.ArgumentParser(description="Tries the packages.")
    parser.add_argument("--linux", required=True, help="where the packages for Linux lie")
    parser.add_argument("--windows", required=True, help="where the package for Windows lies")
    parser.add_argument("--wine", default=shutil.which("wine64", path="/usr/bin:/usr/lib/wine"))
    parser.parse_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1], verbosity=2)


if __name__ == "__main__":
    main()
