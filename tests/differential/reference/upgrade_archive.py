"""One upgrade archive, or a host installation directory in its place: opening and identifying it, and its manifest."""


from .container import Container
from .failures import Status, located, message, status_alone
from .paths import DIRECTORY, file_name, fitting
from .xml_document import Document, fresh_document

ARM7 = ("R2", "R4", "R4-mc")
ARM64 = ("R6", "R8")
OMBIX = ("TX2", "Xavier NX", "Orin NX", "AGX Orin")
CONTROLLERS = {"linux_arm7": ARM7, "ombix": OMBIX, "linux_arm64": ARM64}
HOST_PROGRAM = "\\bin\\win64\\TaQor.exe"
MANIFEST = "vekPackages.xml"
SCRIPT = "script.xml"


class UpgradeArchive:
    """`executables` tells of each host executable, by its bytes, the file version that it was made with."""

    def __init__(self, disk, console, executables):
        self.disk, self.console, self.executables = disk, console, executables
        self.container, self.manifest, self.path, self.platform = Container(), None, "", ""

    def load(self, path):
        self.path = path
        try:
            load_container(self.container, self.disk, self.console, path)
        except Status:
            self.require_installation(path)
            self.platform = "win"
            self.manifest = self.directory_manifest()
            return
        self.platform = platform_of(self.container)
        with located("TaVekUtils_GetUnifiedManifest"):
            file_name(path, 256)
        self.manifest = self.archive_manifest()

    def require_installation(self, path):
        found = self.disk.look(path)
        if found is None:
            raise message("Path not found: " + path)
        if found != DIRECTORY or self.disk.look(path + HOST_PROGRAM) is None:
            raise message("Invalid Archive Path: " + path)

    def archive_manifest(self):
        with located("TaVekUtils_GetUnifiedManifest"):
            if self.container.item(MANIFEST) is not None:
                return parsed(self.container.find(MANIFEST), until_zero=True)
        platform_of(self.container)
        return fresh_manifest(version_of(self.container), platform_of(self.container))

    def directory_manifest(self):
        with located("TaVekUtils_GetUnifiedManifest"):
            try:
                return parsed(self.disk.load(self.path + "\\" + MANIFEST))
            except Status as status:
                if status.kind != "not found":
                    raise
        return fresh_manifest(self.host_version(), "win")

    def host_version(self):
        version = self.executables.get(self.disk.look(self.path + HOST_PROGRAM))
        if version is None:
            raise message("TaQor version could not be established")
        return ".".join(str(part) for part in version)

    def version(self):
        with located("ArchiveExtended::Version"):
            return self.manifest.root.child("BeVersion").read_text(128)


def load_container(container, disk, console, path):
    """Loads the file at `path`; a plain file that is no container gets a line in the log."""
    content = disk.load(path)
    try:
        container.load(content)
    except Status:
        console.say_pattern(r"zArchive_Load: [^\n]*\n")
        raise


def parsed(content, until_zero=False):
    """A document of its own from a member's or a file's content."""
    if isinstance(content, Document):
        return content
    if not isinstance(content, bytes):
        raise Status("malformed")
    return Document(content.split(b"\0")[0] if until_zero else content)


def fresh_manifest(version, platform):
    document = fresh_document("VekAppPackage")
    document.root.add("BeVersion", version)
    document.root.add("Platform", platform)
    return document


def platform_of(container):
    with located("TaVekUtils_GetArchivePlatform"):
        content = container.find(SCRIPT)
    text = content.serialised().encode() if isinstance(content, Document) else content
    text = text.split(b"\0")[0]
    for platform, names in CONTROLLERS.items():
        if any(name.encode() in text for name in names):
            return platform
    raise message("Could not determine platform")


def version_of(container):
    with located("TaVekUtils_GetArchiveVersion"):
        root = parsed(container.find(SCRIPT)).root
        try:
            item = root.child("Version")
        except Status:
            raise message("Could not retrieve Qor BE version") from None
        return item.read_attribute("value", 128)


def default_destination(platform, name):
    with located("TaVekUtils_GetDefaultDestination"):
        if platform == "ombix":
            fitting("/app_main/lib/linux_arm64/" + name, 512)
        if platform in ("linux_arm64", "linux_arm7"):
            return fitting("/user/" + name, 512)
    if platform == "win":
        raise message("Default Destination for Windows Platform is Not Supported")
    raise status_alone("not established")
