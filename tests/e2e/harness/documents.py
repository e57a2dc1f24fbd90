"""Start-up scripts, manifests and configurations as text, laid out the way people indent them."""

from xml.sax.saxutils import escape

DECLARATION = '<?xml version="1.0" encoding="UTF-8"?>\n'

ARM7_MODELS = ("R2", "R4", "R4-mc")
ARM64_MODELS = ("R6", "R8")
OMBIX_MODELS = ("TX2", "Xavier NX", "Orin NX", "AGX Orin")

MODELS = {"linux_arm7": ARM7_MODELS, "linux_arm64": ARM64_MODELS, "ombix": OMBIX_MODELS}


# Written as a reference, for the indentation of elements goes by lines.
LINE_FEED = {"\n": "&#10;"}


def quoted(value):
    """An attribute value as it is written between double quotes."""
    for character, reference in (
        ("&", "&amp;"),
        ("<", "&lt;"),
        ('"', "&quot;"),
        ("\t", "&#9;"),
        ("\n", "&#10;"),
    ):
        value = value.replace(character, reference)
    return value


def indented(text, depth):
    return "".join("  " * depth + line + "\n" for line in text.splitlines())


def element(name, attributes=None, content=None):
    """An element on lines of its own; `content` is a text, a list of elements, or None."""
    start = name + "".join(f' {key}="{quoted(value)}"' for key, value in (attributes or {}).items())
    if content is None:
        return f"<{start}/>\n"
    if isinstance(content, str):
        return f"<{start}>{escape(content, LINE_FEED)}</{name}>\n"
    return f"<{start}>\n" + "".join(indented(item, 1) for item in content) + f"</{name}>\n"


# ---- The start-up script ---------------------------------------------------------------------------------


def file(name, source, *models):
    """An entry of the script: installs the member `source` as `name` on the controller `models`."""
    equal = [element("Eq", {"property": "Controller", "value": model}) for model in models]
    return element("File", {"name": name, "source": source}, [element("Or", None, equal or None)])


def version(value):
    return element("Version", {"value": value})


def script(*entries):
    return DECLARATION + element("Startup", None, list(entries))


HOST_VERSION = "6.1.2.57"


def host_script(platform="linux_arm7", *more):
    """A script as the host software ships it: its version, two of its own files, then `more` entries."""
    models = MODELS[platform]
    return script(
        version(HOST_VERSION),
        file("/app/host", "host/app", *models),
        file("/app/lib.so", "host/lib.so", models[0]),
        *more,
    )


# ---- Manifests -------------------------------------------------------------------------------------------


def entry(kind, source, destination, name="File"):
    """A file entry of a package: `kind` is its type attribute; a `destination` of None leaves the element out."""
    children = [element("Source", None, source)]
    if destination is not None:
        children.append(element("Destination", None, destination or None))
    return element(name, {"type": kind}, children)


def app(name, *children):
    return element("VekApp", {"name": name}, list(children) or None)


def platform(name, *entries):
    return element("Platform", {"name": name}, list(entries) or None)


def package_manifest(name, *platforms, be_version="*"):
    """The text of "vek_manifest.xml"."""
    children = [element("BeVersion", None, be_version), app(name, *platforms)]
    return DECLARATION + element("VekAppPackage", None, children)


def unified_manifest(key, *apps, be_version=HOST_VERSION):
    """The text of "vekPackages.xml" for an archive of the platform `key`."""
    children = [element("BeVersion", None, be_version), element("Platform", None, key)]
    return DECLARATION + element("VekAppPackage", None, children + list(apps))


# ---- The configuration -----------------------------------------------------------------------------------


def listing(name, items):
    return element(name, None, [element("Path", None, item or None) for item in items] or None)


def configuration(prefix="Custom", stock=None, load=None, remove=None):
    """A build configuration; a list that is None is left out, a `prefix` of None too."""
    children = [] if prefix is None else [element("OutputPrefix", None, prefix)]
    lists = (("StockPackages", stock), ("VekPkgsToLoad", load), ("VekPkgsToRemove", remove))
    children += [listing(name, items) for name, items in lists if items is not None]
    return DECLARATION + element("BuildConfig", None, children)
