#!/usr/bin/env python3
"""Checks the structure of the source tree: includes run downwards only, system differences stay in platform/os,
files keep to a size that a reader can take in.

Usage: check_layers.py [ROOT]
"""

import pathlib
import re
import sys

# Each folder may include from itself and from those it lists, directly or through them.
BELOW = {
    "platform/os": [],
    "platform/base": ["platform/os"],
    "platform/xml": ["platform/base"],
    "platform/archive": ["platform/base"],
    "TaVekUtil/archive": ["platform/xml", "platform/archive"],
    "TaVekUtil/edit": ["TaVekUtil/archive"],
    "TaVekUtil/batch": ["TaVekUtil/edit"],
    "TaVekUtil/cli": ["TaVekUtil/batch"],
    "tools/tar": ["platform/archive"],
    "TaVekInspect/model": ["TaVekUtil/batch"],
    "TaVekInspect/plan": ["TaVekInspect/model"],
    "TaVekInspect/render": ["TaVekInspect/plan"],
    "TaVekInspect/commands": ["TaVekInspect/render"],
    "TaVekInspect/cli": ["TaVekInspect/commands"],
}
# The controller model lists live at the top and are read below: a leaf that includes nothing of the project.
LEAF = "TaVekUtil/cli/controller_names.h"

# What is shipped, and what stands beside it.
LAYERED = ("platform", "TaVekUtil", "TaVekInspect", "tools")
BESIDE = ("bench", "scripts", "tests")

LONGEST_FILE = 400

# What stands in angle brackets is of the system when it is none of the project's folders.
INCLUDE = re.compile(rf'^\s*#\s*include\s*(?:"|<(?=(?:{"|".join(LAYERED + BESIDE)})/))([^">]+)', re.M)
SYSTEM_CONDITION = re.compile(r"^\s*#.*\b(_WIN32|_WIN64|__MINGW32__|_MSC_VER|__linux__|__unix__|__APPLE__)\b", re.M)


def reachable(folder):
    folders = {folder}
    for lower in BELOW[folder]:
        folders |= reachable(lower)
    return folders


def files(root, tops, suffixes):
    return sorted(path for top in tops for path in (root / top).rglob("*") if path.suffix in suffixes)


def misplaced(root):
    for path in files(root, LAYERED, (".h", ".cpp")):
        name = path.relative_to(root).as_posix()
        folder = path.parent.relative_to(root).as_posix()
        text = path.read_text()
        if folder not in BELOW:
            yield f"{name}: no layer is known for {folder}"
            continue
        for included in INCLUDE.findall(text):
            if name == LEAF:
                yield f"{name}: includes {included}, but must stay a leaf"
            elif included != LEAF and pathlib.PurePosixPath(included).parent.as_posix() not in reachable(folder):
                yield f"{name}: includes {included}, which is not below {folder}"
        if folder != "platform/os" and SYSTEM_CONDITION.search(text):
            yield f"{name}: asks for the operating system outside platform/os"


def too_long(root):
    for path in files(root, LAYERED + BESIDE, (".h", ".cpp", ".py", ".sh")):
        if (lines := path.read_bytes().count(b"\n")) > LONGEST_FILE:
            yield f"{path.relative_to(root).as_posix()}: {lines} lines, more than {LONGEST_FILE}"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    found = [*misplaced(root), *too_long(root)]
    print("\n".join(found) if found else "Layers are in order.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
