#!/usr/bin/env python3
"""Checks that the README shows what scripts/demo.sh shows.

    transcript_check.py LOG

LOG is what the demonstration printed. The README's transcript is the block that begins with "== "; a line of [...] in
it stands for lines that are left out.
"""

import pathlib
import re
import sys

import markdown
from workplace import REPOSITORY


def chunks(lines):
    """The stretches between the lines that leave something out, as texts of whole lines."""
    text = "\n".join(line.rstrip() for line in lines)
    return [chunk.strip("\n") + "\n" for chunk in text.split("[...]") if chunk.strip()]


def first_missing(pieces, log):
    """The first piece that does not stand in the log behind those before it; None when all do."""
    at = 0
    for piece in pieces:
        at = log.find(piece, at)
        if at < 0:
            return piece
        at += len(piece)
    return None


def main():
    log = re.sub(r"\x1b\[[0-9;]*m| +$", "", pathlib.Path(sys.argv[1]).read_text(), flags=re.M)
    transcripts = [
        b for b in markdown.blocks(REPOSITORY / "README.md") if b.lines and b.lines[0].startswith("== ")
    ]
    if len(transcripts) != 1:
        print("README.md has no transcript of the demonstration")
        return 1
    if missing := first_missing(chunks(transcripts[0].lines), log):
        print(f"The demonstration does not show, in this place:\n{missing}")
        return 1
    print("The README shows what the demonstration shows.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
