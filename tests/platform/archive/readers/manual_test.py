#!/usr/bin/env python3
"""Compares docs/container.md with the container: its example archive, and that it names every fault.

    manual_test.py --carrier archive_carrier --root REPOSITORY
"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace(carrier="", root="")
# Sources whose quoted words are not about archives: wrong calls, and names of instruction sets.
OTHER_SOURCES = {"archive.cpp", "members.cpp", "crc32_x86.cpp", "inflate_symbols.cpp"}


class Manual(unittest.TestCase):
    def setUp(self):
        self.text = (pathlib.Path(OPTIONS.root) / "docs/container.md").read_text(encoding="utf-8")

    def test_the_example_is_what_is_written(self):
        block = re.search(r"```\n(50 4b 03 04.*?)```", self.text, re.S).group(1)
        example = "".join(re.match(r"(?:[0-9a-f]{2} ?)+", line).group() for line in block.splitlines())
        with tempfile.TemporaryDirectory() as scratch:
            path = pathlib.Path(scratch) / "example.zip"
            subprocess.run([OPTIONS.carrier, "add", "data/a", "3", "save", path], check=True)
            self.assertEqual(path.read_bytes().hex(" "), bytes.fromhex(example).hex(" "))

    def faults(self):
        """The words of the sources, without the colons around them."""
        faults = set()
        for source in (pathlib.Path(OPTIONS.root) / "platform/archive").glob("*.cpp"):
            if source.name in OTHER_SOURCES:
                continue
            code = source.read_text(encoding="utf-8")
            code = re.sub(r"^\s*#include.*|//.*", "", code, flags=re.M)
            faults |= {literal.strip(" :") for literal in re.findall(r'"([^"]* [^"]*)"', code)}
        faults.discard("")
        self.assertGreater(len(faults), 50)
        return faults

    def test_every_fault_is_told(self):
        self.assertEqual([fault for fault in sorted(self.faults()) if fault not in self.text], [])

    def test_every_fault_that_is_told_is_one(self):
        words = sorted(self.faults(), key=len, reverse=True)
        refusals = self.text.partition("## What is refused")[2].partition("\n## ")[0]
        told = re.findall(r"^\| ([^|]+) \|(?!-)", refusals, re.M)
        self.assertGreater(len(told), 50)
        for fault in (fault for fault in told if fault not in ("Fault", "Detail")):
            rest = fault
            for text in words:
                rest = rest.replace(text, "")
            with self.subTest(fault):
                self.assertNotRegex(rest, "[a-z]")


def main():
    parser = argparse.ArgumentParser(description="Compares docs/container.md with the container.")
    parser.add_argument("--carrier", required=True, help="the program that does with containers what it is told")
    parser.add_argument("--root", required=True, help="the repository")
    parser.parse_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1])


if __name__ == "__main__":
    main()
