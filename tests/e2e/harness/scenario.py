"""A scenario: files laid out in a scratch directory, one run of the program, and everything it may leave behind."""

import contextlib
import os
import shutil
import stat
import subprocess
import tempfile
import unittest
from dataclasses import dataclass

from . import documents, manual, program, schemas, zip_builder
from .foresight import Foresight
from .zip_walker import Contents, Malformed

HOST_TIME = 1_500_000_000
DIRECTORY = object()
GONE = object()
EXECUTABLE_PATH = "bin/win64/TaQor.exe"


@dataclass(frozen=True)
class State:
    """All that is watched of one path."""

    kind: int
    mode: int
    time: int
    content: bytes


def state_of(path):
    status = os.lstat(path)
    kind = stat.S_IFMT(status.st_mode)
    content = b""
    if stat.S_ISLNK(status.st_mode):
        content = os.readlink(path).encode()
    elif stat.S_ISREG(status.st_mode):
        content = content_of(path, status.st_mode)
    # A directory's time changes with what comes and goes in it, temporary files among them.
    time = status.st_mtime_ns if stat.S_ISREG(status.st_mode) else 0
    return State(kind, stat.S_IMODE(status.st_mode), time, content)


def content_of(path, mode):
    try:
        with open(path, "rb") as file:
            return file.read()
    except PermissionError:
        os.chmod(path, 0o600)
        try:
            with open(path, "rb") as file:
                return file.read()
        finally:
            os.chmod(path, stat.S_IMODE(mode))


@contextlib.contextmanager
def write_protected(root):
    """As long as it lasts, nothing can be written into the directories of `root` but those open to everybody."""
    modes = {directory: stat.S_IMODE(os.stat(directory).st_mode) for directory, _, _ in os.walk(root)}
    protected = {directory: mode for directory, mode in modes.items() if not mode & stat.S_IWOTH}
    for directory, mode in protected.items():
        os.chmod(directory, mode & ~0o222)
    try:
        yield
    finally:
        for directory, mode in protected.items():
            os.chmod(directory, mode)


class Scenario(unittest.TestCase):
    """The working directory of the run is `root`; the program lies in host/bin/win64, as it is installed."""

    maxDiff = None
    foreseeable = True  # False where what happens cannot be known before
    described = True  # False where lines are printed that are no messages

    def setUp(self):
        self.root = tempfile.mkdtemp(dir=program.scratch_root())
        self.addCleanup(shutil.rmtree, self.root, ignore_errors=True)
        os.chmod(self.root, 0o755)
        self.programs = self.path("host/bin/win64")
        self.program = program.install(self.programs)

    # ---- Fixtures ----------------------------------------------------------------------------------------

    def path(self, name):
        return os.path.join(self.root, name)

    def write(self, name, content=b""):
        """Writes a file, with a modification time that no run of today gives."""
        path = self.path(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content.encode() if isinstance(content, str) else content)
        os.utime(path, (HOST_TIME, HOST_TIME))
        return path

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def archive(self, name, script=None, manifest=None, members=(), comment=b""):
        """Writes an upgrade archive: host software around `script` and `manifest`; a text of None leaves that out.

        Answers the contents, ready to be edited into those expected of a resulting archive.
        """
        own = [zip_builder.Member("host/app", b"host " * 40, zip_builder.DEFLATED, comment=b"the host")]
        if script is not None:
            own.append(zip_builder.Member("script.xml", script, zip_builder.DEFLATED))
        own.append(zip_builder.Member("host/lib.so", b"\x7fELF library"))
        if manifest is not None:
            own.append(zip_builder.Member("vekPackages.xml", manifest))
        blob = zip_builder.build(own + list(members), comment)
        self.write(name, blob)
        return Contents(blob)

    def host_archive(self, name="sensor.pkg", platform="linux_arm7", *entries, **more):
        """An upgrade archive for `platform`, its script holding the host's own files and then `entries`."""
        return self.archive(name, documents.host_script(platform, *entries), **more)

    def package(self, directory, manifest, files=()):
        """Writes an unpacked add-on package: its manifest and files, whose content is their own name."""
        self.write(os.path.join(directory, "vek_manifest.xml"), manifest)
        for name in files:
            self.write(os.path.join(directory, name), "content of " + name)

    def tar(self, name, directory, *options):
        """Packs everything in `directory` into the tar file `name` and removes the directory."""
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        subprocess.run(
            ["tar", "-c", *options, "-f", self.path(name), "-C", self.path(directory), "."], check=True
        )
        shutil.rmtree(self.path(directory))

    def unpacked(self, directory, *names):
        """The state of a directory into which tar unpacked the package's files: it and they may be new."""
        return {directory: DIRECTORY} | {os.path.join(directory, name): None for name in names}

    # ---- Runs --------------------------------------------------------------------------------------------

    def check(self, *arguments, stdout="", stderr="", status=0, files=None, **options):
        """Runs the program and compares everything: both streams, the exit status, and every file below `root`.

        `files` names what may differ afterwards: bytes or text for a file's content, Contents for an archive,
        None for any content, DIRECTORY for a new directory, GONE for what is removed. Everything else must be
        as it was: bytes, mode and modification time. Every line must be one that docs/messages.md describes. A batch
        is planned before it runs, and what was foretold is compared, too, unless the test is not `foreseeable`.
        """
        foresight = Foresight(self, arguments, **options)
        before = self.snapshot()
        rights = write_protected(self.root) if options.get("unprivileged") else contextlib.nullcontext()
        with rights:
            result = program.start(self.program, arguments, self.root, **options)
        self.compare_streams(result, stdout, stderr, status)
        if self.described:
            printed = result.stdout + result.stderr
            self.assertEqual(manual.undescribed(printed), [], "docs/messages.md lacks these")
        after = self.snapshot()
        self.compare_files(before, after, files or {})
        self.assertEqual(schemas.complaints(before, after), [])
        foresight.compare(result)

    def check_batch(
        self,
        platform=None,
        stdout="",
        stderr="",
        status=0,
        files=None,
        prefix="Custom",
        stock=("sensor.pkg",),
        load=None,
        remove=None,
        **options,
    ):
        """Writes the configuration beside the program and runs the batch with it."""
        self.write("host/bin/win64/cfg.xml", documents.configuration(prefix, stock, load, remove))
        arguments = ["--config", "cfg.xml"] + (["--platform", platform] if platform else [])
        self.check(*arguments, stdout=stdout, stderr=stderr, status=status, files=files, **options)

    def compare_streams(self, result, stdout, stderr, status):
        if stdout != result.stdout or stderr != result.stderr or status != result.status:
            self.fail(
                f"standard output\n{result.stdout}\nexpected\n{stdout}\n"
                f"standard error\n{result.stderr}\nexpected\n{stderr}\n"
                f"exit status {result.status}, expected {status}"
            )

    # ---- Files -------------------------------------------------------------------------------------------

    def snapshot(self):
        states = {}
        for directory, directories, files in os.walk(self.root):
            for name in directories + files:
                path = os.path.join(directory, name)
                states[os.path.relpath(path, self.root)] = state_of(path)
        return states

    def compare_files(self, before, after, expected):
        for name in sorted(before.keys() | after.keys() | expected.keys()):
            if name in expected:
                self.compare_expected(name, before.get(name), after.get(name), expected[name])
            else:
                self.assertIn(name, after, f"{name} is gone")
                self.assertIn(name, before, f"{name} was left behind")
                self.assertEqual(before[name], after[name], f"{name} was changed")

    def compare_expected(self, name, before, after, expected):
        if expected is GONE:
            self.assertIsNone(after, f"{name} is still there")
            return
        self.assertIsNotNone(after, f"{name} was not written")
        if expected is DIRECTORY:
            self.assertEqual(after.kind, stat.S_IFDIR, f"{name} is no directory")
            return
        if before and not program.ON_WINDOWS:
            self.assertEqual(before.mode, after.mode, f"{name} lost its permissions")
        self.compare_content(name, after.content, expected)

    def compare_content(self, name, content, expected):
        if isinstance(expected, Contents):
            try:
                self.assertEqual(expected.differences(content), [], f"in {name}")
            except Malformed as fault:
                self.fail(f"{name} is malformed: {fault}")
        elif isinstance(expected, str):
            self.assertEqual(content.decode(), expected, f"in {name}")
        elif expected is not None:
            self.assertEqual(content, expected, f"in {name}")
