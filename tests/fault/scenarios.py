"""The runs of the program whose system calls are made to fail: one of each mode and way of working."""

import os
import random
import shutil
import subprocess
import tempfile

from harness import documents, executable, zip_builder
from harness.documents import entry, package_manifest, platform
from harness.scenario import HOST_TIME, state_of

PROGRAM_DIRECTORY = "host/bin/win64"


class Scenario:
    """Files laid out once, and the words that start the program among them. A run works on a copy."""

    def __init__(self, name, program, tar):
        self.name = name
        self.unpacked = None  # the directory that tar fills
        self.may_abort = False
        self.template = tempfile.mkdtemp(prefix=f"tavek-{name}-", dir=scratch())
        os.makedirs(self.path(PROGRAM_DIRECTORY))
        shutil.copy2(program, self.path(self.program()))
        os.symlink(tar, self.path(PROGRAM_DIRECTORY + "/tar.exe"))
        self.arguments = getattr(self, "lay_out_" + name)()
        stamp(self.template)

    def path(self, name):
        return os.path.join(self.template, name)

    def program(self):
        return PROGRAM_DIRECTORY + "/TaVekUtil"

    def copy(self):
        """A fresh copy of the files; the caller removes it."""
        directory = tempfile.mkdtemp(prefix="tavek-fault-", dir=scratch())
        shutil.copytree(self.template, directory, symlinks=True, dirs_exist_ok=True, copy_function=link_or_copy)
        return directory

    def remove(self):
        shutil.rmtree(self.template)

    # ---- Pieces ------------------------------------------------------------------------------------------

    def write(self, name, content, mode=0o644):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content.encode() if isinstance(content, str) else content)
        os.chmod(self.path(name), mode)

    def archive(self, name, key, mode=0o644, manifest=None, size=600_000):
        """An upgrade archive of a large stored member, a large deflated one and many small ones."""
        source = random.Random(name)
        text = b"".join(b"line %d\n" % source.randrange(10**6) for _ in range(20_000))
        members = [
            zip_builder.Member("host/app", text, zip_builder.DEFLATED),
            zip_builder.Member("script.xml", documents.host_script(key), zip_builder.DEFLATED),
            zip_builder.Member("host/lib.so", source.randbytes(size)),
        ]
        members += [zip_builder.Member(f"host/{i}", source.randbytes(50)) for i in range(20)]
        if manifest:
            members.append(zip_builder.Member("vekPackages.xml", manifest))
        self.write(name, zip_builder.build(members), mode)

    def package(self, directory, *keys):
        """An add-on package with two files for each of the platforms `keys`."""
        platforms = [
            platform(key, entry("VekApp", key + ".so", f"lib/{key}.so"), entry("Resource", key + ".ini", f"res/{key}.ini"))
            for key in keys
        ]
        self.write(directory + "/vek_manifest.xml", package_manifest("dust", *platforms))
        for key in keys:
            self.write(f"{directory}/{key}.so", b"\x7fELF" + key.encode() * 50_000, 0o755)
            self.write(f"{directory}/{key}.ini", f"[{key}]\n")

    def configuration(self, stock, load, remove=None):
        text = documents.configuration("out", stock, load, remove)
        self.write(PROGRAM_DIRECTORY + "/cfg.xml", text)
        return ["--config", "cfg.xml"]

    # ---- Scenarios ---------------------------------------------------------------------------------------

    def lay_out_inject(self):
        """A library into an archive, which is saved over itself, large enough to be written back early."""
        self.archive("sensor.pkg", "linux_arm64", 0o640, size=9_000_000)
        self.write("libdust.so", b"\x7fELF" * 1000)
        return ["--file", "libdust.so", "--archive", "sensor.pkg"]

    def lay_out_extract(self):
        """A manifest to a file that exists, through a link."""
        self.archive("sensor.pkg", "linux_arm7")
        self.write("kept/manifest.xml", "the manifest of old\n", 0o600)
        os.symlink("kept/manifest.xml", self.path("manifest.xml"))
        return ["--manifest", "manifest.xml", "--archive", "sensor.pkg"]

    def lay_out_sensors(self):
        """Packages removed from and added to two archives; the first has an output of an earlier run."""
        installed = documents.app("old", entry("VekApp", "old.so", "/app/lib.so"))
        for name, key in (("a", "linux_arm7"), ("b", "linux_arm64")):
            self.archive(f"pkg/{name}.pkg", key, manifest=documents.unified_manifest(key, installed))
        self.write("pkg/out-a.pkg", "an earlier output", 0o664)
        self.package("dust", "linux_arm7", "linux_arm64")
        return self.configuration(["pkg/a.pkg", "pkg/b.pkg"], ["dust"], ["old"])

    def lay_out_win(self):
        """Files copied into an installation of the host software, one taken away, the manifest replaced."""
        self.write("host/bin/win64/TaQor.exe", executable.executable((6, 1, 2, 57)))
        installed = documents.app("old", entry("VekApp", "old.dll", "lib/old.dll"))
        self.write("host/vekPackages.xml", documents.unified_manifest("win", installed))
        self.write("host/lib/old.dll", "old")
        self.write("host/lib/win.so", "the file of an earlier version", 0o755)
        self.package("dust", "win")
        return self.configuration(["host"], ["dust"], ["old"])

    def lay_out_tar(self):
        """A package that is unpacked first, into a directory of its own."""
        self.archive("sensor.pkg", "ombix")
        self.package("dust", "ombix")
        subprocess.run(["tar", "-cf", self.path("dust.tar"), "-C", self.path("dust"), "."], check=True)
        shutil.rmtree(self.path("dust"))
        self.unpacked = "dust"
        return self.configuration(["sensor.pkg"], ["dust.tar"])

    def lay_out_stock(self):
        """The archives installed with the host software, one of them behind a link."""
        self.archive("host/pkg/14-a.dat", "linux_arm7")
        self.archive("elsewhere/b.dat", "linux_arm64")
        os.symlink("../../elsewhere/b.dat", self.path("host/pkg/0-b.dat"))
        self.package("dust", "linux_arm7", "linux_arm64")
        self.may_abort = True  # required when no archive can be found
        return self.configuration(None, ["dust"])


ALL = ("inject", "extract", "sensors", "win", "tar", "stock")

_scratch = None


def scratch():
    """Where files are laid out: in memory when the system offers that, for flushing is quick there."""
    global _scratch
    if _scratch is None:
        memory = "/dev/shm"
        usable = os.access(memory, os.W_OK) and shutil.disk_usage(memory).free > 1 << 26
        _scratch = tempfile.mkdtemp(prefix="tavek-faults-", dir=memory if usable else None)
    return _scratch


def remove_scratch():
    if _scratch:
        shutil.rmtree(_scratch, ignore_errors=True)


def stamp(root):
    """Gives every file a time of modification that no run of today gives."""
    for directory, _, files in os.walk(root):
        for name in files:
            os.utime(os.path.join(directory, name), (HOST_TIME, HOST_TIME), follow_symlinks=False)


def link_or_copy(source, target):
    """Copies a file; the program, which nothing may write, is linked."""
    if os.path.basename(source) == "TaVekUtil":
        os.link(source, target)
    else:
        shutil.copy2(source, target, follow_symlinks=False)


def snapshot(root):
    """The state of everything below `root` but the programs, by path."""
    programs = [PROGRAM_DIRECTORY + "/" + name for name in ("TaVekUtil", "tar.exe")]
    states = {}
    for directory, directories, files in os.walk(root):
        for name in directories + files:
            path = os.path.join(directory, name)
            relative = os.path.relpath(path, root)
            if relative not in programs:
                states[relative] = state_of(path)
    return states
