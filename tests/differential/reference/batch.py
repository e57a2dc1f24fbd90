"""The batch: configuration, stock archives, packages, and the work on each archive."""

import io
import tarfile
from dataclasses import dataclass, field

from .editing import add_packages, remove_packages, reported
from .failures import AbnormalEnd, Failure, Status, located, status_alone
from .paths import combine, cut, directory, extension, file_name, fitting, is_absolute, strip_extension
from .upgrade_archive import MANIFEST, UpgradeArchive, parsed

PACKAGE_MANIFEST = "vek_manifest.xml"
LOAD_FAILED = "TaVekUtil: Failed to load vek manifest file from vek package(s)."


@dataclass
class File:
    platform: str
    type: str
    destination: str
    path: str


@dataclass
class Package:
    be_version: str
    name: str
    manifest: object
    files: list = field(default_factory=list)


class Batch:
    def __init__(self, disk, console, executables, application, platform):
        self.disk, self.console, self.executables = disk, console, executables
        self.application, self.platform = application, platform
        self.prefix, self.stock, self.to_load, self.to_remove, self.packages = "", [], [], [], []

    def run(self, name):
        try:
            with located("TaVekUtil_Run", 1266):
                path = fitting(name, 512) if is_absolute(name) else combine(self.application, name)
            with located("TaVekUtil_Run", 1268):
                document = parsed(self.disk.load(path))
            with reported(self.console, "TaVekUtil: Failed to load config file."):
                self.load_configuration(document)
            with reported(self.console, LOAD_FAILED):
                for entry in self.to_load:
                    self.load_package(entry)
            for archive in self.stock:
                with reported(self.console, "TaVekUtil: Failed process upgrade package."):
                    self.process(archive)
            return 0
        except Failure as failure:
            start = "TaVekUtil: Failed updating upgrade packages using configuration file: "
            self.console.complain(f"{start}{name} Error: ", failure.pattern)
            return 1

    # ---- Configuration -----------------------------------------------------------------------------------

    def load_configuration(self, document):
        root = document.root
        with located("TaVekUtil_Load_Config"):
            self.prefix = root.child("OutputPrefix").read_text(256)
            self.stock = [text for text in texts(root, "StockPackages") if text]
        if not self.stock:
            self.console.say("TaVekUtil: No Stock packages specified. Using default stock images.")
            self.find_stock()
        if not self.stock:
            self.console.complain("TaVekUtil: Could not find any packages to process.")
            raise AbnormalEnd()
        with located("TaVekUtil_Load_Config"):
            self.to_load = texts(root, "VekPkgsToLoad")
            self.to_remove = texts(root, "VekPkgsToRemove")

    def find_stock(self):
        try:
            place = combine(directory(directory(self.application)), "pkg")
            found = []
            for name in self.disk.list_files(place):
                kind = extension(name, 32)
                if len(name) > 2 and name[:2] in ("14", "0-") and kind == "dat":
                    found.append(combine(place, name))
            self.stock = found
        except Status:
            self.console.complain("TaVekUtil: Failed finding stock packages.")

    # ---- Packages ----------------------------------------------------------------------------------------

    def load_package(self, entry):
        place = self.unpack(entry) or entry
        with located("TaVekUtil_Load_VekPkg_Manifest"):
            if not place:
                raise Status("not found")
            manifest = parsed(self.disk.load(combine(place, PACKAGE_MANIFEST)))
            version = manifest.root.child("BeVersion").read_text(32)
            app = manifest.root.child("VekApp")
            package = Package(version, app.read_attribute("name", 256), manifest)
        for group in app.elements():
            with reported(self.console, "TaVekUtil: Failed to load vekapp platform files."):
                with located("TaVekUtil_Load_VekPkg_Files"):
                    self.load_files(package, group, place)
        if package.files:
            self.packages.append(package)

    def load_files(self, package, group, place):
        platform = group.read_attribute("name", 512)
        if self.platform not in (platform, "all"):
            return
        for item in group.elements():
            kind = item.read_attribute("type", 32)
            source = item.child("Source").read_text(512)
            destination = item.child("Destination").read_text(512)
            package.files.append(File(cut(platform, 32), kind, destination, combine(place, source)))

    def unpack(self, entry):
        """The directory of an unpacked tar file; "" for any other entry."""
        if ".tar" not in entry:
            return ""
        with located("TaVekUtil_Untar_VekApp"):
            place = strip_extension(entry)
            if not self.disk.is_directory(place):
                self.disk.create_directory(place)
            content = self.disk.look(entry)
            if not isinstance(content, bytes) or not self.extract(content, place):
                self.console.complain_pattern(r"(?:[^\n]*\n)+?")
                self.console.complain(f"TaVekUtil: Failed to untar: {entry}")
                self.console.complain("TaVekUtil: Result: 2")
                raise status_alone("general")
            if PACKAGE_MANIFEST in self.disk.list_files(place):
                return directory(combine(place, PACKAGE_MANIFEST))
            return ""

    def extract(self, content, place):
        """Whether `content` is a tar file; its files then lie below `place`."""
        try:
            with tarfile.open(fileobj=io.BytesIO(content)) as tar:
                for member in tar:
                    self.extract_member(tar, member, place)
            return True
        except tarfile.TarError:
            return False

    def extract_member(self, tar, member, place):
        path = place + "/" + member.name
        if member.isdir():
            self.disk.create_directory(path)
        else:
            self.disk.create_directory(path.rpartition("/")[0])
            self.disk.save(path, tar.extractfile(member).read())

    # ---- One archive -------------------------------------------------------------------------------------

    def process(self, path):
        self.console.say(f"\nTaVekUtil: Processing Archive: {path}")
        with reported(self.console, "TaVekUtil: Failed injecting files into upgrade package."):
            with located("TaVekUtil_ModifyVekPkgs", 959):
                place = directory(path)
            with located("TaVekUtil_ModifyVekPkgs", 960):
                name = file_name(path)
            archive = UpgradeArchive(self.disk, self.console, self.executables)
            archive.load(path)
            removed = remove_packages(archive, self.to_remove)
            added = add_packages(archive, self.packages)
            if not removed and not added:
                self.console.say(f"TaVekUtil:    - No libraries were loaded for: {path}")
            elif archive.platform == "win":
                with located("TaVekUtil_ModifyVekPkgs", 989):
                    self.disk.save(path + "\\" + MANIFEST, archive.manifest)
            else:
                self.save(archive, place, name)

    def save(self, archive, place, name):
        archive.container.delete(MANIFEST)
        archive.container.add(MANIFEST, archive.manifest)
        with located("TaVekUtil_ModifyVekPkgs", 981):
            output = fitting(f"{self.prefix}-{name}", 512)
        with located("TaVekUtil_ModifyVekPkgs", 982):
            output = combine(place, output)
        with located("TaVekUtil_ModifyVekPkgs", 983):
            self.disk.save(output, archive.container.image())
        self.console.say(f"TaVekUtil:    - Saving new package as: {output}")


def texts(root, name):
    """The texts of a list's children; an absent list is an empty one."""
    try:
        found = root.child(name)
    except Status:
        return []
    return [item.read_text(512) for item in found.elements()]
