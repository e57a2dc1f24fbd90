"""Runs a program under strace, which records its system calls and makes one of them fail."""

import os
import re
import shlex
import shutil
import signal
import subprocess
import tempfile
from dataclasses import dataclass

STRACE = shutil.which("strace")
STAND_IN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "traced_child.sh")
CALL = re.compile(r"^(\w+)\((.*)\) += (.*)$")
UNFINISHED = re.compile(r"^(\w+)\((.*)$")
CONTENT = ("read", "pread64", "write")  # what stands in quotes among their arguments is no name
TIMEOUT = 60


@dataclass(frozen=True)
class Call:
    """One system call: the `ordinal`-th of its `name` since the program started."""

    name: str
    ordinal: int
    arguments: str
    result: str

    def paths(self):
        """What the call is about: the names in its arguments, those behind descriptors included."""
        described = re.findall(r"\d+<([^>]*)>", self.arguments)
        named = re.findall(r'"([^"]*)"', self.arguments)
        return described if self.name in CONTENT or not any(named) else named


@dataclass(frozen=True)
class Injection:
    """What is to happen to one call: `what` is an error's name or "kill"."""

    call: Call
    what: str

    def option(self):
        action = "signal=SIGKILL" if self.what == "kill" else "error=" + self.what
        return f"inject={self.call.name}:{action}:when={self.call.ordinal}"


@dataclass(frozen=True)
class Result:
    stdout: str
    stderr: str
    status: int
    calls: list
    hit: bool  # the call that was to be injected into has been reached


def parse(lines):
    counts, calls = {}, []
    for line in lines:
        match = CALL.match(line)
        unfinished = None if match else UNFINISHED.match(line)
        if match or unfinished:
            name = (match or unfinished).group(1)
            counts[name] = counts.get(name, 0) + 1
            calls.append(Call(name, counts[name], (match or unfinished).group(2), match.group(3) if match else "?"))
    return calls


def environment(extra=None):
    return {"LC_ALL": "C", "PATH": os.environ["PATH"], **(extra or {})}


def options(log, injection, preload=None):
    words = ["-y", "-o", log]
    if injection:
        words += ["-e", injection.option()]
    if preload:
        words += ["-E", "LD_PRELOAD=" + preload]
    return words


def run(command, directory, injection=None, preload=None):
    """Runs `command` in `directory`. Children of the program are not traced, nor is anything done to them."""
    with tempfile.NamedTemporaryFile("r", prefix="tavek-trace-", errors="replace") as log:
        done = start([STRACE, *options(log.name, injection, preload), *command], directory)
        return result_of(done, log.read().splitlines(), injection)


def run_child(command, directory, child, injection=None):
    """As `run`, but it is the program's child `child`, a link to a program, that is traced and made to fail."""
    real = os.path.realpath(child)
    with tempfile.NamedTemporaryFile("r", prefix="tavek-trace-", errors="replace") as log:
        # A script written here would be busy now and then: another thread's child has it open until it is started.
        os.remove(child)
        os.symlink(STAND_IN, child)
        words = map(shlex.quote, [STRACE, *options(log.name, injection), real])
        done = start(command, directory, TAVEK_TRACED=" ".join(words))
        return result_of(done, log.read().splitlines(), injection)


def start(command, directory, **variables):
    return subprocess.run(
        command,
        cwd=directory,
        env=environment(variables),
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        timeout=TIMEOUT,
        check=False,
    )


def result_of(done, lines, injection):
    calls = parse(lines)
    if injection is None:
        hit = True
    elif injection.what == "kill":
        hit = any("killed by SIGKILL" in line for line in lines)
    else:
        hit = any("(INJECTED)" in line for line in lines)
    return Result(
        done.stdout.decode(errors="replace"), done.stderr.decode(errors="replace"), done.returncode, calls, hit
    )


def killed(result):
    return result.status in (-signal.SIGKILL, 128 + signal.SIGKILL)
