"""The program as a whole: words of the command line in; output, status and the changed disk out."""

from .batch import Batch
from .console import Console
from .container import Container
from .editing import inject_file
from .failures import AbnormalEnd, Failure, Status, located
from .paths import Disk, cut, extension, file_name, fitting
from .upgrade_archive import ARM7, ARM64, OMBIX, UpgradeArchive, load_container

USAGE = """\
Usage: 
       TaVekUtil.exe --file <libFilePath> --archive <archiveFilePath>
       TaVekUtil.exe --manifest <outManifestFileName> --archive <archiveFilePath>
       TaVekUtil.exe --config <configFileName> [--platform <platform>]
           <configFileName> - Should be in same directory as application i.e sample_config.xml
           <platform> - Platform to build for. Options are ['linux_arm7', 'linux_arm64', 'win', 'all']. Default is 'all'.

If archive and file are explicitly specified, archive will be overwritten
"""
CAPACITIES = {"--archive": 512, "--file": 512, "--config": 512, "--platform": 32, "--manifest": 512}
PLATFORMS = ("all", "ombix", "linux_arm7", "linux_arm64", "win")
WRONG_PLATFORM = "ERROR: Platform must be specified ['linux_arm7', 'linux_arm64', 'Ombix', 'win', 'all'].\n"
ABNORMAL = "abnormal"


class Program:
    """One run in the working directory of `disk`. `executables`: file versions of host executables by their bytes."""

    def __init__(self, root, application, executables):
        self.disk, self.console = Disk(root), Console()
        self.application, self.executables = application, executables

    def run(self, words):
        """The exit status, ABNORMAL for an abnormal end."""
        try:
            return self.dispatch(words)
        except AbnormalEnd:
            return ABNORMAL

    def usage(self, status, error=None):
        if error is not None:
            self.console.complain(error)
        self.console.say(USAGE[:-1])
        return status

    def dispatch(self, words):
        if not words:
            return self.usage(1)
        values = dict.fromkeys(CAPACITIES, "")
        at = 0
        while at < len(words):
            word = words[at]
            if word in ("-h", "--help"):
                return self.usage(0)
            if word.startswith("-") and (at + 1 == len(words) or words[at + 1].startswith("-")):
                return self.usage(1, f"ERROR: No arguments specified with flag '{word}'")
            if word in CAPACITIES:
                values[word] = cut(words[at + 1], CAPACITIES[word])
                at += 1
            at += 1
        return self.start(*(values[flag] for flag in CAPACITIES))

    def start(self, archive, library, configuration, platform, manifest):
        if configuration:
            platform = platform or "all"
            if platform not in PLATFORMS:
                return self.usage(1, WRONG_PLATFORM)
            batch = Batch(self.disk, self.console, self.executables, self.application, platform)
            return batch.run(configuration)
        if archive and manifest:
            return self.extract_manifest(archive, manifest)
        if archive and library:
            return self.inject_library(library, archive)
        return self.usage(1, "ERROR: No flags specified.\n")

    def extract_manifest(self, path, output):
        try:
            archive = UpgradeArchive(self.disk, self.console, self.executables)
            archive.load(path)
            with located("extractManifest", 1329):
                if not self.disk.is_directory(path) and self.disk.place(output) == self.disk.place(path):
                    raise Status("invalid argument")
                self.disk.save(output, archive.manifest)
            self.console.say(f"Manifest saved at {output}")
            return 0
        except Failure as failure:
            self.console.complain("TaVekUtil: Failed to extract manifest file. Error: ", failure.pattern)
            return 1

    def inject_library(self, library, path):
        operation = "injectLibToArchiveFile"
        try:
            kind = extension(library)
            controllers = {"zext": ARM7, "so": ARM64 + OMBIX}.get(kind, ())
            name = file_name(library)
            with located(operation, 1301):
                member = fitting("data/12345-vekapp" + name, 512)
            entry = "vekapp" + name
            container = Container()
            with located(operation, 1305):
                load_container(container, self.disk, self.console, path)
            inject_file(self.disk, self.console, library, member, entry, controllers, container)
            with located(operation, 1309):
                self.disk.save(path, container.image())
            return 0
        except Failure as failure:
            self.console.complain("TaVekUtil: Failed to inject library to archive. Error: ", failure.pattern)
            return 1
