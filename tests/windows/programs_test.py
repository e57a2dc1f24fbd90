#!/usr/bin/env python3
"""Looks at Windows programs from outside: each needs DLLs of the system alone, bears the project's version, and has a
manifest that asks for UTF-8, long paths and no more rights than whoever starts it.

    programs_test.py --objdump OBJDUMP --version VERSION PROGRAM...
"""

import argparse
import pathlib
import re
import struct
import subprocess
import sys

# Part of every Windows since version 7.
SYSTEM = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ntdll.dll", "shell32.dll", "user32.dll", "version.dll"}
RESOURCE = "VS_VERSION_INFO".encode("utf-16-le")
FIXED_INFORMATION = struct.pack("<I", 0xFEEF04BD)
ASKED_FOR = (
    b'level="asInvoker"',
    b">UTF-8</activeCodePage>",
    b">true</longPathAware>",
)


def faults(program, objdump, version):
    listing = subprocess.run([objdump, "-p", program], capture_output=True, text=True, check=True).stdout
    needed = {name.lower() for name in re.findall(r"DLL Name: (\S+)", listing)}
    if "kernel32.dll" not in needed:
        yield "has no imports that could be looked at"
    for name in sorted(needed - SYSTEM):
        yield f"needs {name}, which Windows does not have"

    content = pathlib.Path(program).read_bytes()
    resource = content.find(RESOURCE)
    at = content.find(FIXED_INFORMATION, resource)
    if resource < 0 or at < 0:
        yield "has no version resource"
    else:
        most, least = struct.unpack_from("<II", content, at + 8)
        found = f"{most >> 16}.{most & 0xFFFF}.{least >> 16}"
        if found != version or least & 0xFFFF:
            yield f"has version {found}.{least & 0xFFFF}, not {version}.0"
    for text in (version, pathlib.Path(program).name):
        if text.encode("utf-16-le") not in content:
            yield f"does not say {text} in its version resource"
    for text in ASKED_FOR:
        if text not in content:
            yield f"has no {text.decode()} in its manifest"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--objdump", required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("programs", nargs="+")
    options = parser.parse_args()
    found = [f"{p}: {f}" for p in options.programs for f in faults(p, options.objdump, options.version)]
    print("\n".join(found) if found else f"{len(options.programs)} programs are in order")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
