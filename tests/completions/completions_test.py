"""Shell completion offers the flags, platforms and files that fit.

Bash runs the completion function, zsh a shell in which the tab key is pressed. There is no PowerShell in Debian: its
grammar reads the scripts (scripts/test.sh fetches it), and they know the words that the others know.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
COMPLETIONS = HERE.parents[1] / "packaging/completions"
sys.path.insert(0, str(HERE.parent / "docs"))

import options  # noqa: E402

PROGRAMS = ("TaVekUtil", "TaVekInspect")
PLATFORMS = ["all", "linux_arm64", "linux_arm7", "ombix", "win"]
FLAGS = ["--archive", "--config", "--file", "--help", "--manifest", "--platform"]

# What is typed, the last word being completed, and what is offered besides --help.
EXPECTED = {
    "": ["--archive", "--config", "--file", "--manifest", "--platform"],
    "--p": ["--platform"],
    "--platform ": PLATFORMS,
    "--platform linux": ["linux_arm64", "linux_arm7"],
    "--platform Omb": [],
    "--config a.xml ": ["--platform"],
    "--platform win ": ["--config"],
    "--config a.xml --platform win ": [],
    "--archive a.pkg ": ["--file", "--manifest"],
    "--file a.so ": ["--archive"],
    "--file a.so --archive a.pkg ": [],
    "--manifest m.xml --archive ": ["a.pkg", "b c.pkg", "config.xml", "host"],
    "--archive a": ["a.pkg"],
    "--config con": ["config.xml"],
    "--file b": ["b c.pkg"],
}

# Zsh knows besides that configurations are XML files.
ZSH_EXPECTED = {
    "--config ": ["config.xml", "host"],
}

# TaVekInspect is asked for its own words.
INSPECT_EXPECTED = {
    "ver": ["verify"],
    "report a.pkg b.pkg --": ["--html", "--json"],
    "report a.pkg b.pkg --h": ["--html"],
    "verify a": ["a.pkg"],
    "diff a.pkg ": ["a.pkg", "b c.pkg", "config.xml", "host"],
    "plan config.xml --platform w": ["win"],
}
INSPECT_COMMANDS = {"info", "list", "verify", "diff", "report", "--version"}

BASH = """
source "$1"
IFS= read -r -d '' line < <(printf '%s\\0' "$2")
IFS=' ' read -r -a COMP_WORDS <<<"$line"
case $line in *' ') COMP_WORDS+=('') ;; esac
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
"_${COMP_WORDS[0]}"
printf '%s\\n' "${COMPREPLY[@]}"
"""


class Completion(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        self.work = self.root / "work"
        (self.work / "host").mkdir(parents=True)
        for name in ("a.pkg", "b c.pkg", "config.xml"):
            (self.work / name).touch()

    def run_shell(self, *command):
        programs = pathlib.Path(options.program()).parent
        environment = {
            "PATH": f"{programs}:{os.environ['PATH']}",
            "HOME": str(self.root),
            "LC_ALL": "C.UTF-8",
            "TERM": "dumb",
        }
        done = subprocess.run(
            command, cwd=self.work, env=environment, capture_output=True, text=True, timeout=60, check=True
        )
        offered = {line.replace("\\ ", " ").rstrip("/") for line in done.stdout.splitlines()}
        return sorted(offered - {"", "--help", "-h"})

    def bash(self, line):
        script = COMPLETIONS / f"{line.split()[0]}.bash"
        return self.run_shell("bash", "-c", BASH, "bash", script, line)

    def zsh(self, line):
        functions = self.root / "functions"
        functions.mkdir(exist_ok=True)
        for name in PROGRAMS:
            shutil.copy(COMPLETIONS / f"{name}.zsh", functions / f"_{name}")
        return self.run_shell(options.tool("zsh"), HERE / "matches.zsh", functions, line)

    def test_bash(self):
        for typed, offered in EXPECTED.items():
            with self.subTest(typed):
                self.assertEqual(self.bash("TaVekUtil " + typed), offered)

    def test_zsh(self):
        for typed, offered in {**EXPECTED, **ZSH_EXPECTED}.items():
            with self.subTest(typed):
                self.assertEqual(self.zsh("TaVekUtil " + typed), offered)

    def test_inspect(self):
        for shell in (self.bash, self.zsh):
            self.assertLessEqual(INSPECT_COMMANDS, set(shell("TaVekInspect ")))
            for typed, offered in INSPECT_EXPECTED.items():
                with self.subTest(f"{shell.__name__}: {typed}"):
                    self.assertEqual(shell("TaVekInspect " + typed), offered)

    def test_bash_knows_for_which_command(self):
        for name in PROGRAMS:
            command = [
                "bash",
                "-c",
                'source "$1" && complete -p "$2"',
                "bash",
                COMPLETIONS / f"{name}.bash",
                name,
            ]
            registered = subprocess.run(command, capture_output=True, text=True, check=True)
            self.assertEqual(registered.stdout, f"complete -F _{name} {name}\n")

    def test_powershell_can_read_it(self):
        for name in PROGRAMS:
            text = (COMPLETIONS / f"{name}.ps1").read_text()
            self.assertEqual(self.powershell_mistakes(text), "")
            self.assertNotEqual(self.powershell_mistakes(text.rstrip().removesuffix("}")), "", "an open brace")
            self.assertNotEqual(self.powershell_mistakes(text.replace("if (", "if ", 1)), "", "no condition")

    def powershell_mistakes(self, text):
        packages = os.environ.get("TAVEK_NODE_PACKAGES")
        if not packages:
            self.skipTest("no grammar of PowerShell: scripts/test.sh docs fetches it")
        script = self.root / "script.ps1"
        script.write_text(text)
        # To compile the grammar well takes far longer than to use it as it is.
        command = [options.tool("node"), "--liftoff-only", HERE / "powershell_syntax.mjs", packages, script]
        done = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual((done.stderr, done.returncode), ("", 1 if done.stdout else 0))
        return done.stdout

    def test_powershell_knows_the_same_words(self):
        text = (COMPLETIONS / "TaVekUtil.ps1").read_text()
        self.assertEqual(sorted(re.findall(r"^ +'(--\w+)' +=", text, re.M)), FLAGS)
        platforms = re.search(r"^ +\$platforms = (.*)$", text, re.M).group(1)
        self.assertEqual(sorted(re.findall(r"'(\w+)'", platforms)), PLATFORMS)


if __name__ == "__main__":
    unittest.main()
