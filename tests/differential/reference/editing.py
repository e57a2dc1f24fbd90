"""Edits of one opened archive: script entries, files, whole packages."""

from contextlib import contextmanager

from .failures import Failure, Status, located, message
from .paths import combine, directory, file_name, fitting
from .upgrade_archive import CONTROLLERS, SCRIPT, default_destination, parsed

LOADED = {
    "linux_arm7": "Linux_Arm7 Sensor",
    "ombix": "Linux Arm64 Ombix",
    "linux_arm64": "Linux Arm64 Sensor",
}


def lower(text):
    return "".join(c.lower() if c.isascii() else c for c in text)


@contextmanager
def reported(console, line):
    """A failure inside prints `line` and goes on."""
    try:
        yield
    except Failure:
        console.complain(line)
        raise


# ---- The start-up script ---------------------------------------------------------------------------------


def inject_file(disk, console, path, source, name, controllers, container):
    with reported(console, "TaVekUtil: Failed injecting files into upgrade package."):
        with located("TaVekUtil_InjectFile"):
            script = parsed(container.find(SCRIPT))
            content = disk.load(path)
            delete_previous(script, container, name)
            entry = script.root.add("File", name=name, source=source)
            choice = entry.add("Or")
            for controller in controllers:
                choice.add("Eq", property="Controller", value=controller)
            container.delete(SCRIPT)
            container.add(SCRIPT, script)
            container.add(source, content)


def delete_previous(script, container, name):
    with located("TaVekUtil_DeletePreviousFiles"):
        first = script.root.child("File")
        items = script.root.elements()
        doomed = []
        for item in items[items.index(first) :]:
            try:
                matches = lower(item.read_attribute("name", 512)) == lower(name)
                source = item.read_attribute("source", 512) if matches else None
            except Status:
                continue
            if matches:
                container.delete(source)
                doomed.append(item)
        for item in doomed:
            script.root.remove(item)


def remove_entry(container, name):
    """Removes the first entry of that name; answers the member it named, "" when there is none."""
    with located("TaVekUtils_ScriptXmlRemoveAndGetSource"):
        script = parsed(container.find(SCRIPT))
        source = ""
        for item in script.root.elements():
            if item.name == "File" and item.read_attribute("name", 256) == name:
                source = item.read_attribute("source", 256)
                script.root.remove(item)
                break
        container.delete(SCRIPT)
        container.add(SCRIPT, script)
        return source


# ---- Files -----------------------------------------------------------------------------------------------


def remove_file(archive, destination):
    line = f"TaVekUtil: Failed Removing file from upgrade package: {destination}."
    with reported(archive.console, line), located("TaVekUtil_RemoveFile"):
        if archive.platform != "win":
            archive.container.delete(remove_entry(archive.container, destination))
            return
        path = combine(archive.path, destination)
        try:
            archive.disk.delete(path)
        except Status as status:
            if status.kind != "not found":
                raise
            archive.console.say(f"Skipping File: {path} - Not Found")


def remove_package_files(archive, entry, name):
    kind = ""
    for item in entry.elements():
        try:
            kind = item.read_attribute("type", 32)
        except Status:
            pass  # the type of the entry before it stays
        if lower(kind) not in ("vekapp", "resource"):
            continue
        try:
            destination = item.child("Destination").read_text(512)
        except Status:
            destination = ""
        remove_file(archive, destination or default_destination(archive.platform, name))


def copy_into_installation(archive, path, destination):
    console, disk = archive.console, archive.disk
    try:
        with located("TaVekUtil_InjectFile"):
            target = combine(archive.path, destination)
            if not disk.is_directory(directory(target)):
                console.say(f'Directory does not exists ("{target}"), skipping file.')
                return
            disk.save(target, disk.load(path))
            console.say(f"TaVekUtil:    - Loaded file for Windows: {destination}")
    except Failure as failure:
        console.complain("TaVekUtil: Failed injecting files into User Tools package: ", failure.pattern)
        raise


# ---- Packages --------------------------------------------------------------------------------------------


def add_packages(archive, packages):
    changed = False
    for package in packages:
        version = archive.version()
        if package.be_version not in ("*", version):
            console = archive.console
            console.complain("TaVekUtil: ERROR - Version for Upgrade package != Vek Package ")
            console.complain(f"TaVekUtil: ERROR - {version} != {package.name}({package.be_version})")
            continue
        for file in package.files:
            changed |= add_file(archive, file)
        with located("TaVekUtils_AddPackages"):
            merge(package.manifest, archive.manifest, archive.platform)
    return changed


def add_file(archive, file):
    """Whether the file was installed."""
    if not file.platform.startswith(archive.platform):
        return False
    with located("TaVekUtils_AddPackages"):
        name = file_name(file.path)
        member = fitting("data/12345-" + name, 512)
        destination = file.destination or default_destination(file.platform, name)
        if lower(file.type) == "resource" and archive.platform == "win":
            archive.disk.create_directory(directory(combine(archive.path, destination, 256), 256))
    if file.platform in LOADED:
        controllers = CONTROLLERS[file.platform]
        disk, console = archive.disk, archive.console
        inject_file(disk, console, file.path, member, destination, controllers, archive.container)
        console.say(f"TaVekUtil:    - Loaded file for {LOADED[file.platform]}: {file.path}")
        return True
    if archive.platform == "win":
        copy_into_installation(archive, file.path, destination)
        return True
    return False


def child_by_path(document, *names):
    if document.root.name != names[0]:
        raise Status("not found")
    item = document.root
    for name in names[1:]:
        item = item.child(name)
    return item


def merge(package, manifest, platform):
    app = child_by_path(package, "VekAppPackage", "VekApp")
    name = app.read_attribute("name", 128)
    drop_entries(manifest, name)
    entry = manifest.root.add("VekApp", name=name)
    for group in app.elements():
        try:
            matches = group.read_attribute("name", 32).startswith(platform)
        except Status:
            matches = False
        if matches:
            entry.children += [group.copied(item) for item in group.elements()]


def drop_entries(manifest, name):
    root = child_by_path(manifest, "VekAppPackage")
    doomed = []
    for item in root.elements():
        if item.name == "VekApp" and name.startswith(item.read_attribute("name", 128)):
            doomed.append(item)
    for item in doomed:
        root.remove(item)


def remove_packages(archive, names):
    doomed = []
    root = archive.manifest.root
    for name in names:
        with located("TaVekUtils_RemovePackages"):
            matching = [
                item
                for item in root.elements()
                if item.name == "VekApp" and item_matches(archive, item, name)
            ]
            if not matching:
                raise message(fitting(f"Package {name} not found in archive", 128))
        doomed += matching
    for item in doomed:
        root.remove(item)
    return bool(names)


def item_matches(archive, item, name):
    """Takes the files of a matching entry away at once, while the walk goes on."""
    if item.read_attribute("name", 128) != name:
        return False
    archive.console.say(f"\n\tTaVekUtil: Remove Package: {name}")
    remove_package_files(archive, item, name)
    return True
