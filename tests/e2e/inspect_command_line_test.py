"""TaVekInspect's command line: help, version, mistakes, and how it writes on a terminal."""

import contextlib
import os
import subprocess
import unittest

from harness import program
from harness.documents import configuration
from harness.inspection import Inspection
from harness.program import ON_WINDOWS

COMMANDS = ("info", "list", "verify", "diff", "plan", "report")


class CommandLine(Inspection):
    def refused(self, *arguments, mistake, command=""):
        stderr = f'TaVekInspect: {mistake}\nTry "TaVekInspect {command and command + " "}--help".\n'
        self.assertEqual(self.inspect(*arguments, status=2, stderr=stderr), "")

    def test_help_names_every_command(self):
        text = self.inspect("--help")
        for command in COMMANDS:
            self.assertIn(f"  TaVekInspect {command} ", text)
        self.assertEqual(self.inspect("-h"), text)

    def test_each_command_explains_itself_and_its_exit_statuses(self):
        for command in COMMANDS:
            text = self.inspect(command, "--help")
            self.assertTrue(text.startswith(f"Usage: TaVekInspect {command} "), text)
            self.assertIn("Exit status: 0", text)

    def test_version(self):
        text = self.inspect("--version")
        self.assertRegex(text, r"^TaVekInspect \d+\.\d+\.\d+\n$")
        for command in COMMANDS:
            self.assertEqual(self.inspect(command, "--version"), text)

    def test_mistakes(self):
        self.refused(mistake="no command given")
        self.refused("look", mistake="unknown command: look")
        self.refused("info", mistake="missing operand: ARCHIVE|DIR", command="info")
        self.refused("verify", mistake="missing operand: ARCHIVE|DIR...", command="verify")
        self.refused("list", "a", "b", mistake="unexpected operand: b", command="list")
        self.refused("diff", "a", mistake="missing operand: OLD NEW", command="diff")
        self.refused("info", "--fast", "a", mistake="unknown option: --fast", command="info")
        self.refused("info", "--platform", "win", "a", mistake="unknown option: --platform", command="info")
        self.refused("plan", "a", "--platform", mistake="option without a value: --platform", command="plan")
        self.refused("report", "a", "b", mistake="--html FILE is required", command="report")
        self.refused(
            "plan",
            "a",
            "--platform",
            "Ombix",
            mistake="no platform: Ombix (linux_arm7, linux_arm64, ombix, win or all)",
            command="plan",
        )

    def test_operands_behind_two_dashes(self):
        self.host_archive("-x.pkg")
        self.inspect("verify", "--", "-x.pkg")

    @unittest.skipIf(ON_WINDOWS, "no pseudo terminals there")
    def test_colour_and_columns_on_a_terminal_only(self):
        self.host_archive("sensor.pkg")
        seen = self.on_terminal("list", "sensor.pkg")
        self.assertIn("\x1b[1m", seen)
        lines = seen.replace("\r", "").splitlines()
        columns = {
            line.index(name) for line in lines for name in ("host/app ", "host/lib.so ") if name in line
        }
        self.assertEqual(len(columns), 1, seen)
        self.assertIn("sound", self.on_terminal("verify", "sensor.pkg"))
        plain = self.inspect("list", "sensor.pkg")
        self.assertNotIn("\x1b", plain)
        self.assertEqual({line.count("\t") for line in plain.splitlines()}, {7})

    @unittest.skipIf(ON_WINDOWS, "no pseudo terminals there")
    def test_colour_goes_by_the_stream_it_is_written_to(self):
        self.write("text.pkg", "no archive")
        told = "text.pkg: error: neither an archive nor an installation directory: "
        self.on_terminal("info", "text.pkg", status=1, stderr=self.path("log"))
        self.assertTrue(self.read("log").decode().startswith(told), self.read("log"))
        seen = self.on_terminal("info", "text.pkg", status=1, stdout=self.path("log"))
        self.assertTrue(seen.startswith(told.replace("error", "\x1b[31merror\x1b[0m")), seen)

    @unittest.skipIf(ON_WINDOWS, "no pseudo terminals there")
    def test_no_colour_for_who_wants_none(self):
        self.host_archive("sensor.pkg")
        seen = self.on_terminal("list", "sensor.pkg", NO_COLOR="1")
        self.assertNotIn("\x1b", seen)
        self.assertIn("Size", seen)
        self.assertIn("\x1b", self.on_terminal("list", "sensor.pkg", NO_COLOR=""))

    @unittest.skipIf(ON_WINDOWS, "no full device there")
    def test_output_that_cannot_be_written_is_trouble(self):
        self.host_archive("sensor.pkg")
        for arguments in (["verify", "none.pkg"], ["info", "sensor.pkg"], ["list", "sensor.pkg", "--json"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([self.inspector, *arguments], cwd=self.root, stdout=full, check=False)
            self.assertEqual(done.returncode, 2)

    @unittest.skipIf(ON_WINDOWS, "no pseudo terminals there")
    def test_progress_on_a_terminal_only(self):
        self.host_archive("sensor.pkg")
        self.assertIn("sensor.pkg: 33 %", self.on_terminal("verify", "sensor.pkg"))
        self.write("host/bin/win64/cfg.xml", configuration(stock=["sensor.pkg", "sensor.pkg"]))
        self.assertIn("cfg.xml: 50 %", self.on_terminal("plan", "cfg.xml"))

    @unittest.skipIf(ON_WINDOWS, "no pseudo terminals there")
    def test_a_terminal_that_can_do_nothing_is_written_to_as_a_pipe(self):
        self.host_archive("sensor.pkg")
        seen = self.on_terminal("list", "sensor.pkg", kind="dumb")
        self.assertEqual(seen.replace("\r", ""), self.inspect("list", "sensor.pkg"))
        self.assertNotIn("%", self.on_terminal("verify", "sensor.pkg", kind="dumb"))

    def on_terminal(self, *arguments, kind="xterm", status=0, stdout=None, stderr=None, **variables):
        """What the program writes when its streams are a terminal, but for one that goes into a file."""
        import pty

        master, slave = pty.openpty()
        with contextlib.ExitStack() as files:
            done = subprocess.run(
                program.EMULATOR + [self.inspector, *arguments],
                cwd=self.root,
                env=dict(program.environment(), TERM=kind, **variables),
                stdin=slave,
                stdout=files.enter_context(open(stdout, "wb")) if stdout else slave,
                stderr=files.enter_context(open(stderr, "wb")) if stderr else slave,
                check=False,
            )
        os.close(slave)
        seen = b""
        try:
            while piece := os.read(master, 65536):
                seen += piece
        except OSError:  # the end, on Linux
            pass
        os.close(master)
        self.assertEqual(done.returncode, status)
        return seen.decode()
