"""Reads the documents: their fenced blocks, links and headings."""

import re
import subprocess
from dataclasses import dataclass

from workplace import REPOSITORY

FENCE = re.compile(r"^```(\w*)$")
LANGUAGES = {"", "console", "sh", "text", "xml"}
NOT_RUN = re.compile(r"^<!-- not run: .+ -->$")
LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+\s+(.*)$")


@dataclass
class Block:
    """A fenced block: its language, the number of its first line, and its lines."""

    language: str
    line: int
    lines: list
    not_run: bool


def documents():
    """Every document of the repository, as paths."""
    command = ["git", "-C", REPOSITORY, "ls-files", "--cached", "--others", "--exclude-standard", "*.md"]
    listed = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return [REPOSITORY / name for name in sorted(set(listed.split("\n")) - {""})]


def blocks(path):
    """The fenced blocks. One that could be taken for something else, and so never be run, raises."""
    found, block, marked = [], None, False
    for number, line in enumerate(path.read_text().splitlines(), 1):
        fence = FENCE.match(line)
        if block is None and fence:
            block = Block(fence.group(1), number + 1, [], marked)
            if block.language not in LANGUAGES:
                raise ValueError(f"{path}:{number}: nobody knows the language {block.language}")
        elif block is not None and line == "```":
            found.append(block)
            block = None
        elif block is not None:
            block.lines.append(line)
        elif line.lstrip().startswith("```"):
            raise ValueError(f"{path}:{number}: this is no fence: {line}")
        marked = bool(NOT_RUN.match(line)) or (marked and not line)
    if block is not None:
        raise ValueError(f"{path}:{block.line}: a block without an end")
    return found


def prose(path):
    """The lines outside of fenced blocks, with their numbers."""
    inside = False
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if line.startswith("```"):
            inside = not inside
        elif not inside:
            yield number, line


def anchors(path):
    """The names under which the document's headings can be linked."""
    found = set()
    for _, line in prose(path):
        if heading := HEADING.match(line):
            words = re.sub(r"[^\w\- ]", "", heading.group(1).lower())
            found.add(words.replace(" ", "-"))
    return found


def links(path):
    """(line number, target) of every link, also of one whose text goes on over several lines."""
    numbers, lines = zip(*prose(path))
    text = "\n".join(lines)
    return [(numbers[text.count("\n", 0, link.start())], link.group(1)) for link in LINK.finditer(text)]
