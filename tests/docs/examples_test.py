"""Runs every example of the documents.

In a block of the language `console` a line that begins with "$ " is a command for bash, lines beginning with "> " go
on with it, and the lines up to the next command are what both its output streams must show, exactly; a line of three
dots stands for any number of lines, "[...]" for any text within a line. A command that shows nothing must succeed. A
block of the language `sh` holds commands that must succeed. The blocks of one document run one after the other in one
directory (workplace.py says what lies in it).

A line `<!-- not run: REASON -->` above a block leaves it out. Then the scripts, presets and checks that it names must be
there.
"""

import json

import pathlib
import re
import subprocess
import tempfile
import unittest

import markdown
import options
import workplace


MANUAL = [
    path
    for path in markdown.documents()
    if path.parent in (workplace.REPOSITORY, workplace.REPOSITORY / "docs")
]


class Examples(unittest.TestCase):
    maxDiff = None

    def test_every_document(self):
        ran = 0
        for document in MANUAL:
            runnable = [block for block in markdown.blocks(document) if block.language in ("console", "sh")]
            runnable = [block for block in runnable if not block.not_run]
            if not runnable:
                continue
            with tempfile.TemporaryDirectory() as root, self.subTest(document.name):
                shell = Shell(pathlib.Path(root))
                ran += sum(self.run_block(document, block, shell) for block in runnable)
        self.assertGreater(ran, 20, "hardly an example was found")

    def test_what_is_not_run_names_what_is_there(self):
        presets = json.loads((workplace.REPOSITORY / "CMakePresets.json").read_text())
        named = {preset["name"] for preset in presets["configurePresets"]}
        listed = subprocess.run(
            ["bash", "scripts/test.sh", "--list"],
            cwd=workplace.REPOSITORY,
            capture_output=True,
            text=True,
            check=True,
        )
        checks = set(listed.stdout.split()) | {"--list"}
        seen = 0
        for document in MANUAL:
            for block in (block for block in markdown.blocks(document) if block.not_run):
                text = "\n".join(line.partition(" #")[0] for line in block.lines)
                where = f"{document.name}:{block.line}"
                subprocess.run(["bash", "-n", "-c", text], check=True)
                for name in re.findall(r"(?:^|\s)((?:bench|scripts|tests)/\S+)", text):
                    self.assertTrue((workplace.REPOSITORY / name).is_file(), f"{where}: {name}")
                self.assertLessEqual(set(re.findall(r"--preset (\S+)", text)), named, where)
                self.assertLessEqual(set(re.findall(r"scripts/test\.sh +(\S+)", text)), checks, where)
                seen += 1
        self.assertGreater(seen, 8)

    def run_block(self, document, block, shell):
        where = f"{document.relative_to(workplace.REPOSITORY)}:{block.line}"
        if block.language == "sh":
            output, status = shell.run("set -e\n" + "\n".join(block.lines))
            self.assertEqual(status, 0, f"{where}\n{output}")
            return 1
        steps = commands(block.lines)
        self.assertTrue(steps, f"{where}: a console block without a command")
        for command, expected in steps:
            output, status = shell.run(command)
            if not re.fullmatch(pattern(expected), output):
                self.fail(f"{where}\n$ {command}\nshows\n{output}\nand not\n" + "\n".join(expected))
            self.assertTrue(expected or status == 0, f"{where}\n$ {command}\nends with status {status}")
        return len(steps)


class Shell:
    """Bash in a prepared directory. Variables do not outlive a command, files do."""

    def __init__(self, root):
        self.environment = workplace.prepare(root, options.program())
        self.directory = root / "work"

    def run(self, command):
        done = subprocess.run(
            ["bash", "-c", command],
            cwd=self.directory,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            timeout=120,
            check=False,
        )
        return done.stdout.decode(), done.returncode


def commands(lines):
    """[(command, lines of expected output)]"""
    steps = []
    for line in lines:
        if line.startswith("$ "):
            steps.append((line[2:], []))
        elif line.startswith("> ") and not steps[-1][1]:
            steps[-1] = (steps[-1][0] + "\n" + line[2:], [])
        else:
            steps[-1][1].append(line)
    return steps


def pattern(expected):
    def line_pattern(line):
        if line == "...":
            return "(?:.*\n)*"
        return ".*".join(re.escape(text) for text in line.split("[...]")) + "\n"

    return "".join(map(line_pattern, expected))


if __name__ == "__main__":
    unittest.main()
