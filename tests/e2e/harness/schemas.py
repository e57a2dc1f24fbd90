"""Holds what the program writes against the schemas, where xmllint is installed.

The program carries over what it is given, so results must keep to the schemas when everything that went in did.
"""

import functools
import os
import shutil
import struct
import subprocess
import zlib

from .zip_walker import Malformed, walk

DIRECTORY = os.path.join(os.path.dirname(__file__), "../../../schemas")
XMLLINT = shutil.which("xmllint")

BY_NAME = {
    "script.xml": "startup-script",
    "vekPackages.xml": "unified-manifest",
    "vek_manifest.xml": "addon-package",
}


@functools.lru_cache(maxsize=None)
def complaint(schema, document):
    """What xmllint says against the bytes of a document; "" when it keeps to the schema."""
    path = os.path.join(DIRECTORY, schema + ".xsd")
    command = [XMLLINT, "--noout", "--nonet", "--schema", path, "-"]
    done = subprocess.run(command, input=document, capture_output=True, check=False)
    return done.stderr.decode(errors="replace") if done.returncode else ""


def documents(states):
    """(where, schema, bytes) of every document with a schema among the files of a snapshot, archives looked into."""
    for path, state in states.items():
        name = os.path.basename(path)
        if name in BY_NAME:
            yield path, BY_NAME[name], state.content
        elif b"<VekAppPackage" in state.content and name.endswith(".xml"):
            yield path, "unified-manifest", state.content  # extracted, by a name of the user's choice
        elif state.content.startswith(b"PK\3\4"):
            for member, content in members(state.content):
                yield f"{path}: {member}", BY_NAME[member], content


def members(blob):
    try:
        found = [
            (entry.name.decode(), entry.data()) for entry in walk(blob)[1] if entry.name.decode() in BY_NAME
        ]
    except (Malformed, ValueError, struct.error, zlib.error):
        return []
    return [(name, content) for name, content in found if content is not None]


def complaints(before, after):
    """What is wrong with the documents of the snapshot `after`, as lines; [] when an input was wrong already."""
    if XMLLINT is None:
        return []
    inputs = list(documents(before)) + [found for found in documents(after) if found[1] == "addon-package"]
    if any(complaint(schema, content) for _, schema, content in inputs):
        return []
    found = ((where, complaint(schema, content)) for where, schema, content in documents(after))
    return [f"{where}: {text}" for where, text in found if text]
