#!/usr/bin/env python3
"""Asks the tests whether they would notice a mistake: makes one small change at a time to a copy of the sources,
builds, and runs the tests until one fails.

    scripts/mutate.py --sample 500            500 changes drawn from TaVekUtil/ and platform/
    scripts/mutate.py --sample 20 platform/xml/layout.cpp TaVekUtil/edit
    scripts/mutate.py --list platform/base/path.cpp      the changes that could be made there

Works in build/mutate, or where TAVEK_MUTATE says, so that several can run at a time, on a copy of what git knows; the
working tree is not touched. Results are kept there by seed, and a run that was broken off goes on where it stopped.
Tests run from the near to the far: those of the changed file's folder, then the others by the time they take; a test
whose program the change does not reach is left out. A change that does not build counts for nothing. The exit status
is 1 when fewer than --least per cent are caught.
"""

import argparse
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time
from dataclasses import asdict, dataclass

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
HOME = pathlib.Path(os.environ.get("TAVEK_MUTATE", REPOSITORY / "build" / "mutate"))
SOURCE, BUILD = HOME / "source", HOME / "build"
FOLDERS = ("TaVekUtil", "platform")
# Labels of tests that take minutes, which is too long for every change that the others do not notice.
SLOW = {"faults", "large"}
# Other systems' sources are not built here.
LEFT_OUT = re.compile(r"/windows_|\.txt$|\.in$")

# ---- Changes ---------------------------------------------------------------------------------------------

# Operators stand between blanks, which sets them apart from template brackets, references and signs.
EXCHANGES = [
    (name, re.compile(pattern), text)
    for name, pattern, text in (
        ("equality", r" == ", " != "),
        ("equality", r" != ", " == "),
        ("boundary", r" < ", " <= "),
        ("boundary", r" <= ", " < "),
        ("boundary", r" > ", " >= "),
        ("boundary", r" >= ", " > "),
        ("comparison", r" < ", " > "),
        ("logic", r" && ", " || "),
        ("logic", r" \|\| ", " && "),
        ("negation", r"(?<=[( ])!(?=[A-Za-z_(])", ""),
        ("arithmetic", r" \+ ", " - "),
        ("arithmetic", r" - ", " + "),
        ("arithmetic", r" \+= ", " -= "),
        ("bits", r" & ", " | "),
        ("bits", r" \| ", " & "),
        ("step", r"\+\+(?=\w)", "--"),
        ("truth", r"\btrue\b", "false"),
        ("truth", r"\bfalse\b", "true"),
        ("minimum", r"std::min\b", "std::max"),
        ("minimum", r"std::max\b", "std::min"),
        ("loop", r"\bcontinue;", "break;"),
        ("loop", r"\bbreak;", "continue;"),
    )
]
NUMBER = re.compile(r"(?<![\w.\"'])(0x[0-9A-Fa-f]+|\d+)(?=u?[ ,;)\]}])")
ARGUMENT = r"[\w.>:*&-]+(?:\(\))?"
CALL = re.compile(rf"\b(\w+)\(({ARGUMENT}), ({ARGUMENT})([,)])")
CONDITION = re.compile(r"\bif \(")
# On a line of its own, behind one that ends what stands before.
STATEMENT = re.compile(
    r"^\s+(?!(?:return|throw|using|delete|break|continue)\b)[A-Za-z_][\w:.>-]*(\([^;{}]*\)|\+\+|--| [-+|&]?= [^;{}]+);$"
)
STATEMENT_END = re.compile(r"(^|[;{}:])\s*$")
TEXT = re.compile(r'"((?:[^"\\]|\\.)*)"')


@dataclass(frozen=True)
class Change:
    file: str
    line: int  # from 1
    kind: str
    before: str
    after: str


def code_of(line):
    """The line with its comment and the inside of its texts blanked out, at the same places."""
    blanked = TEXT.sub(lambda text: '"' + " " * (len(text[0]) - 2) + '"', line)
    comment = blanked.find("//")
    return blanked if comment < 0 else blanked[:comment] + " " * (len(blanked) - comment)


def changes_of_line(line, previous):
    """(kind, changed line) for each change that can be made to one line of code; `previous` is the line before."""
    code = code_of(line)
    if not code.strip() or code.lstrip().startswith(("#", "*", "static_assert", "template", "using")):
        return
    for kind, pattern, text in EXCHANGES:
        for match in pattern.finditer(code):
            yield kind, line[: match.start()] + text + line[match.end() :]
    for match in CONDITION.finditer(code):
        condition = parenthesised(code, match.end() - 1)
        if condition and ";" not in condition:
            end = match.end() + len(condition)
            yield "condition", f"{line[: match.end()]}!({line[match.end() : end]}){line[end:]}"
    for match in NUMBER.finditer(code):
        yield "constant", line[: match.start()] + str(number(match[1]) + 1) + line[match.end() :]
    for match in CALL.finditer(code):
        if match[2] != match[3] and match[1] not in ("if", "for", "while", "switch", "assert"):
            arguments = f"{match[1]}({match[3]}, {match[2]}{match[4]}"
            yield "arguments", line[: match.start()] + arguments + line[match.end() :]
    if STATEMENT.match(code.rstrip()) and STATEMENT_END.search(code_of(previous)):
        yield "statement", re.match(r"\s*", line)[0] + "{}"
    for match in TEXT.finditer(line):
        if " " in match[1] and code[match.start()] == '"' and not line.lstrip().startswith("#"):
            yield "text", line[: match.start() + 1] + "~" + line[match.start() + 1 :]


def number(digits):
    return int(digits, 8) if re.fullmatch(r"0[0-7]+", digits) else int(digits, 0)


def parenthesised(code, start):
    """What stands between the parenthesis at `start` and its partner on the same line; "" without one."""
    depth = 0
    for at in range(start, len(code)):
        depth += (code[at] == "(") - (code[at] == ")")
        if depth == 0:
            return code[start + 1 : at]
    return ""


def changes(paths):
    found = []
    for path in paths:
        lines = (REPOSITORY / path).read_text().split("\n")
        for at, line in enumerate(lines):
            for kind, changed in changes_of_line(line, lines[at - 1] if at else ""):
                found.append(Change(path, at + 1, kind, line, changed))
    return found


def sources(selection):
    listed = git("ls-files", "--", *(selection or FOLDERS)).split("\n")
    inside = [path for path in listed if path.startswith(tuple(folder + "/" for folder in FOLDERS))]
    return [path for path in inside if path.endswith((".cpp", ".h")) and not LEFT_OUT.search(path)]


def git(*words):
    return subprocess.run(
        ["git", "-C", REPOSITORY, *words], check=True, text=True, stdout=subprocess.PIPE
    ).stdout


# ---- The copy and its tests ------------------------------------------------------------------------------


def prepare():
    """Brings the copy to the state of the working tree, and configures its build."""
    SOURCE.mkdir(parents=True, exist_ok=True)
    listed = {path for path in git("ls-files").split("\n") if (REPOSITORY / path).is_file()}
    for path in SOURCE.rglob("*"):
        if path.is_file() and str(path.relative_to(SOURCE)) not in listed:
            path.unlink()
    for path in sorted(listed):
        target = SOURCE / path
        content = (REPOSITORY / path).read_bytes()
        if not target.exists() or target.read_bytes() != content:
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(REPOSITORY / path, target)
            target.touch()
    shared = HOME / "shared"  # test data lies beside a repository
    if not shared.is_symlink() and (REPOSITORY.parent / "shared").exists():
        shared.symlink_to(REPOSITORY.parent / "shared")
    # As quick to build as -O0, and the tests run four times as fast.
    flags = ["-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O1"]
    run(["cmake", "-G", "Ninja", *flags, "-S", SOURCE, "-B", BUILD], check=True)
    if not build("all"):
        sys.exit("mutate.py: the sources do not build as they are")


def run(command, check=False, limit=None):
    """Whether the command succeeds within `limit` seconds; it and what it started end with that."""
    with open(HOME / "log", "wb") as log:
        process = subprocess.Popen(
            command,
            stdout=log,
            stderr=log,
            stdin=subprocess.DEVNULL,
            cwd=HOME,
            env=os.environ | {"GTEST_FAIL_FAST": "1"},  # the first complaint is enough
            start_new_session=True,
        )
        try:
            status = process.wait(limit)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return False
    if check and status != 0:
        sys.exit(f"mutate.py: {command[0]} fails, see {HOME / 'log'}")
    return status == 0


def build(*targets):
    return run(["cmake", "--build", BUILD, "--target", *targets], limit=1200)


@dataclass
class Test:
    name: str
    command: list
    programs: list  # what it tests, and what must be built for it
    folder: str
    seconds: float = 0.0


def known_tests():
    shown = subprocess.run(
        ["ctest", "--test-dir", BUILD, "--show-only=json-v1"], check=True, text=True, stdout=subprocess.PIPE
    )
    for test in json.loads(shown.stdout)["tests"]:
        words = test.get("command", [])
        programs = [pathlib.Path(word) for word in words if word.startswith(str(BUILD / "bin"))]
        properties = {item["name"]: item["value"] for item in test["properties"]}
        folder = os.path.relpath(properties["WORKING_DIRECTORY"], BUILD / "tests")
        if programs and SLOW.isdisjoint(properties.get("LABELS", [])):
            yield Test(test["name"], words, programs, folder)


def baseline():
    """The tests that pass on the sources as they are, with the time each takes."""
    passing = []
    for test in known_tests():
        begin = time.monotonic()
        if run(test.command, limit=900):
            test.seconds = time.monotonic() - begin
            passing.append(test)
        else:
            print(f"left out, as it fails without a change: {test.name}", flush=True)
    return passing


# ---- Judging ---------------------------------------------------------------------------------------------


def judge(change, tests):
    """The test that catches the change, "" when none does, None when it does not build."""
    path = SOURCE / change.file
    original = path.read_text()
    lines = original.split("\n")
    lines[change.line - 1] = change.after
    path.write_text("\n".join(lines))
    try:
        return catching(change, tests, time.time())
    finally:
        path.write_text(original)


def catching(change, tests, begin):
    folder = os.path.dirname(change.file)

    def distance(test):
        return (0 if folder.startswith(test.folder) else 1, test.seconds)

    for test in sorted(tests, key=distance):
        if not build(*(program.name for program in test.programs)):
            return None
        if all(program.stat().st_mtime < begin for program in test.programs):
            continue  # the change is in none of them
        if not run(test.command, limit=10 + 5 * test.seconds):
            return test.name
    return ""


def show(change):
    print(
        f"{change.file}:{change.line}: {change.kind}\n  - {change.before.strip()}\n  + {change.after.strip()}"
    )


def sample(options, candidates):
    """Judges changes in the order the seed gives until --sample of them have built; answers the results."""
    random.Random(options.seed).shuffle(candidates)
    kept = HOME / f"results-{options.seed}.json"
    known = json.loads(kept.read_text()) if kept.exists() else []
    judged = {Change(**entry["change"]): entry["caught"] for entry in known}
    tests, results = None, []
    for change in candidates:
        if len(results) == options.sample:
            break
        if change not in judged or (options.again and judged[change] == ""):
            tests = tests if tests is not None else baseline()
            judged[change] = judge(change, tests)
            known = [{"change": asdict(one), "caught": caught} for one, caught in judged.items()]
            kept.write_text(json.dumps(known, indent=1))
            verdict = {None: "does not build", "": "SURVIVED"}.get(judged[change], judged[change])
            print(f"{len(results) + 1:4} {change.file}:{change.line} {change.kind}: {verdict}", flush=True)
        if judged[change] is not None:
            results.append((change, judged[change]))
    return results


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--sample", type=int, default=20, help="how many changes to judge")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--least", type=float, default=90, help="per cent that must be caught")
    parser.add_argument("--again", action="store_true", help="judge the known survivors once more")
    parser.add_argument("--list", action="store_true", help="show the changes that could be made, make none")
    parser.add_argument("paths", nargs="*", help="files or folders; TaVekUtil and platform by default")
    options = parser.parse_args()

    candidates = changes(sources(options.paths))
    if options.list:
        for change in candidates:
            show(change)
        print(f"{len(candidates)} changes")
        return 0
    prepare()
    results = sample(options, candidates)
    survivors = [change for change, caught in results if not caught]
    print(f"\n{len(survivors)} of {len(results)} survived" + (":" if survivors else ""))
    for change in survivors:
        show(change)
    share = 100 * (len(results) - len(survivors)) / len(results) if results else 0
    print(f"{share:.1f} % caught")
    return 0 if share >= options.least else 1


if __name__ == "__main__":
    sys.exit(main())
