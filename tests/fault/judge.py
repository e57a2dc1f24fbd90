"""Decides whether a run with a fault in it ended as it must."""

import errno
import os
import re
import signal

from tracing import killed

TEMPORARY = re.compile(r"(^|/)\.tavek-\d+-\d+\.tmp$")

# Calls that the program repeats when a signal interrupts them.
REPEATED = ("openat", "read", "pread64", "write", "fsync", "wait4")

# What stands for the reason, and for the name, where it is not a file that fails.
NO_MEMORY = ("out of memory", "Result: 127")
TAR_NOT_STARTED = ("Result: 127",)
OWN_PLACE = ("the program's own directory",)

# Where the required message tells the path of the archive and nothing else.
NO_REASON = ("Error: Path not found: ", "Error: Invalid Archive Path: ")


def same(state, other):
    """Equal but for the time, which a new file has from its day."""
    return state and other and (state.kind, state.mode, state.content) == (other.kind, other.mode, other.content)


def complaints(scenario, before, clean, after, result, injection):
    """What is wrong about the outcome, as sentences; [] when nothing is.

    `before`, `clean` and `after` are snapshots: before the run, after one without a fault, and after this one.
    """
    if not result.hit:
        return ["the call was not reached"]
    was_killed = injection.what == "kill"
    wrong = wrong_status(scenario, result, injection)
    return wrong + wrong_files(scenario, before, clean, after, result.status == 0, was_killed)


def tar_complaints(scenario, before, clean, after, result):
    """As `complaints`, when it was tar that failed or was killed: the program tells so, or nothing is amiss."""
    told = [f"Failed to untar: {scenario.unpacked}.tar", "Result: ", "Error: "]
    wrong = [] if result.hit else ["the call was not reached"]
    if result.status not in (0, 1):
        wrong.append(f"status {result.status}")
    if result.status == 1 and not all(text in result.stderr for text in told):
        wrong.append("the failure is not told")
    return wrong + wrong_files(scenario, before, clean, after, result.status == 0, False)


def wrong_status(scenario, result, injection):
    if injection.what == "kill":
        return [] if killed(result) else [f"status {result.status} instead of being killed"]
    if result.status == 0:
        return ["what was not flushed counts as saved"] if was_lost(injection) else []
    if injection.what == "EINVAL":
        return ["a directory that cannot be flushed must do"]
    if injection.what == "EOPNOTSUPP":
        return ["a file system without access lists must do"]
    if scenario.may_abort and result.status == -signal.SIGABRT and "Failed finding stock packages" in result.stderr:
        return []
    if result.status != 1:
        return [f"status {result.status}"]
    if injection.what == "EINTR" and injection.call.name in REPEATED:
        return ["an interrupted call was not repeated"]
    if injection.what == "EPERM":
        return ["who may not give files away cannot save"]
    return wrong_message(result, injection)


def was_lost(injection):
    """A flush that failed for the disk's sake. Interrupted it is repeated."""
    return injection.call.name == "fsync" and injection.what not in ("EINTR", "EINVAL")


def wrong_message(result, injection):
    """A failure names the thing and the reason; the reason may stand in the log, which is standard output."""
    lines = result.stderr.splitlines()
    if not lines or " Error: " not in lines[-1]:
        return ["no last line that tells the error"]
    call, told = injection.call, result.stdout + result.stderr
    if call.name == "mmap":
        reasons = NO_MEMORY
    elif call.name in ("clone3", "wait4"):
        reasons = TAR_NOT_STARTED
    elif '"/proc/self/exe"' in call.arguments:
        reasons = OWN_PLACE
    else:
        reasons = (os.strerror(getattr(errno, injection.what)),) + (NO_REASON if call.name == "newfstatat" else ())
    if not any(reason in told for reason in reasons):
        return [f"none of {reasons} is told"]
    if reasons[0] == OWN_PLACE[0] or call.name in ("mmap", "clone3", "wait4") or names_the_thing(call, told):
        return []
    return [f"{call.paths()} is not named"]


def names_the_thing(call, told):
    """A temporary file goes by the name of its target, its directory too, what lies behind a link by the link's."""
    if call.name in ("getcwd", "readlink", "fsync", "fremovexattr") or "O_DIRECTORY" in call.arguments:
        return True
    if any(message in told for message in NO_REASON):
        return True  # of an installation directory, which is named
    names = [os.path.basename(path.rstrip("/")) for path in call.paths()]
    return any(TEMPORARY.search(name) or name in told for name in names)


def wrong_files(scenario, before, clean, after, finished, was_killed):
    wrong = []
    for name in sorted(before.keys() | clean.keys() | after.keys()):
        fault = wrong_file(scenario, name, before.get(name), clean.get(name), after.get(name), finished, was_killed)
        if fault:
            wrong.append(f"{name} {fault}")
    temporary = [name for name in after if TEMPORARY.search(name)]
    return wrong + ([f"several temporary files: {temporary}"] if len(temporary) > 1 else [])


def wrong_file(scenario, name, before, clean, after, finished, was_killed):
    if after == before and (not finished or same(before, clean) or before == clean):
        return None
    if same(after, clean) or (after is None and clean is None):
        return None
    if finished:
        return "is not as it should be after a success"
    if scenario.unpacked and (name + "/").startswith(scenario.unpacked + "/"):
        return None  # tar's, and unpacked anew by the next run
    if TEMPORARY.search(name):
        return None if was_killed else "was left behind"
    return describe(after)


def describe(state):
    return f"is neither old nor new: {state.kind:o} {state.mode:o}, {len(state.content)} bytes" if state else "is gone"


def wrong_order(calls, outputs, directory):
    """Durability: what each output is made of is flushed before it gets its name, the name after that.

    Answers sentences about what a power cut could destroy; `outputs` are the paths of the files that changed,
    `directory` is the one the program worked in.
    """
    wrong, renamed = [], set()
    for at, call in enumerate(calls):
        if call.name != "rename" or not call.result.startswith("0"):
            continue
        temporary, target = (os.path.normpath(os.path.join(directory, path)) for path in call.paths())
        renamed.add(target)
        before, behind = calls[:at], calls[at + 1 :]
        writes = [i for i, c in enumerate(before) if c.name == "write" and f"<{temporary}>" in c.arguments]
        flushes = [i for i, c in enumerate(before) if c.name == "fsync" and f"<{temporary}>" in c.arguments]
        if not flushes or (writes and flushes[-1] < writes[-1]):
            wrong.append(f"{target} gets its name before its content is flushed")
        following = next((i for i, c in enumerate(behind) if c.name in ("rename", "write")), len(behind))
        if not any(c.name == "fsync" and f"<{os.path.dirname(target)}>" in c.arguments for c in behind[:following]):
            wrong.append(f"the new name {target} is not flushed")
    return wrong + [f"{path} was not written beside and renamed" for path in sorted(set(outputs) - renamed)]
