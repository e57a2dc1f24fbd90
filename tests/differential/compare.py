"""One case: laid out twice, on the disk for the program and in memory for the model, run by both, compared; and
foretold by TaVekInspect."""

import json
import os
import re
import shutil

from harness import program
from harness.foresight import SAVING, batch_of
from harness.zip_walker import Added, Entry, Malformed, walk

from compare_documents import document_differences
from generate import HOST_EXECUTABLES, Case, Generator
from reference.container import Image
from reference.paths import DIRECTORY, Disk
from reference.program import ABNORMAL, Program
from reference.xml_document import Document


class Comparison:
    """Runs cases below `root`; `seen` gathers the statuses they showed, as (class, phrase with number)."""

    def __init__(self, root):
        self.root = root
        self.seen = set()

    def outcome(self, seed):
        """How the run of a seed's case ended, and the differences as lines, [] when there are none."""
        case = Generator(seed, self.root).case()
        status, lines = self.run(case)
        if lines:
            lines = self.described(self.reduced(case)) + lines
        flags = [word for word in ("--config", "--manifest", "--file") if word in case.words]
        return f"{flags[0] if flags else 'other'} status {status}", lines

    def run(self, case):
        """The model's exit status, and the differences."""
        shutil.rmtree(self.root, ignore_errors=True)
        case.lay_out(self.root)
        started = program.install(os.path.join(self.root, "host/bin/win64"))
        model = Program(self.root, os.path.dirname(started), HOST_EXECUTABLES)
        status = model.run(case.words)
        plan = self.plan(started, case.words)
        result = program.start(started, case.words, self.root)
        lines = self.compare_streams(model, status, result) + self.compare_files(model)
        return status, lines + plan_differences(plan, result)

    def plan(self, started, words):
        """What TaVekInspect foretells of a batch; None for another run, or without the inspector."""
        batch = batch_of(words)
        if batch is None or not program.INSPECTOR:
            return None
        inspector = os.path.join(os.path.dirname(started), os.path.basename(program.INSPECTOR))
        arguments = ["plan", batch[0], "--platform", batch[1], "--json"]
        return json.loads(program.start(inspector, arguments, self.root).stdout)

    def reduced(self, case):
        """The case without the files that it can do without and still differ."""
        files = dict(case.files)
        for name in case.files:
            fewer = {other: data for other, data in files.items() if other != name}
            if self.run(Case(case.words, fewer))[1]:
                files = fewer
        reduced = Case(case.words, files)
        self.run(reduced)
        return reduced

    def described(self, case):
        lines = [f"words: {case.words}"]
        for name, data in case.files.items():
            lines.append(
                f"file {name}: " + ("a directory" if data is None else f"{len(data)} bytes {data[:400]!r}")
            )
        return lines

    # ---- Streams -----------------------------------------------------------------------------------------

    def compare_streams(self, model, status, result):
        wanted = program.ABNORMAL_END if status == ABNORMAL else status
        lines = [] if wanted == result.status else [f"exit status {result.status}, expected {wanted}"]
        for name in ("stdout", "stderr"):
            lines += self.compare_stream(name, getattr(model.console, name), getattr(result, name))
        return lines

    def compare_stream(self, name, pattern, text):
        numbers = iter(range(10**6))
        unique = re.sub(r"\(\?P<(k_\w+)>", lambda match: f"(?P<{match[1]}__{next(numbers)}>", pattern)
        match = re.fullmatch(unique, text)
        if not match:
            shown = re.sub(r"\\(.)", r"\1", pattern)
            return [f"{name}:\n{text}expected:\n{shown}"]
        for group, shown in match.groupdict().items():
            kind = group.partition("__")[0][2:]
            if kind != "any" and shown:
                self.seen.add((kind, shown.replace(" (status", ", status")))
        return []

    # ---- Files -------------------------------------------------------------------------------------------

    def compare_files(self, model):
        found = Disk(self.root).files
        lines = []
        for path in sorted(model.disk.files.keys() | found.keys()):
            differences = content_differences(model.disk.files.get(path), found.get(path))
            lines += [f"{os.path.relpath(path, self.root)}: {line}" for line in differences]
        return lines


def plan_differences(plan, result):
    if plan is None:
        return []
    saved = [line[len(SAVING) :] for line in result.stdout.splitlines() if line.startswith(SAVING)]
    foretold = [archive["savedAs"] for archive in plan["archives"] if archive["outcome"] == "saved"]
    lines = [] if plan["succeeds"] == (result.status == 0) else [f"foretold: success is {plan['succeeds']}"]
    return lines + ([] if saved == foretold else [f"foretold: saved {foretold}, it was {saved}"])


def content_differences(ours, theirs):
    if isinstance(theirs, bytes) and isinstance(ours, Document):
        return document_differences(ours, theirs)
    if isinstance(theirs, bytes) and isinstance(ours, Image):
        return archive_differences(ours, theirs)
    return [] if ours == theirs else [f"{shortened(theirs)}, expected {shortened(ours)}"]


def shortened(content):
    if content is None:
        return "absent"
    return content if content == DIRECTORY else repr(content)[:200]


def archive_differences(image, data):
    try:
        comment, entries = walk(data)
    except Malformed as fault:
        return [f"malformed: {fault}"]
    ours, theirs = [item.name for item in image.items], [entry.name for entry in entries]
    if ours != theirs:
        return [f"members {theirs}, expected {ours}"]
    lines = [] if comment == image.comment else [f"comment {comment!r}, expected {image.comment!r}"]
    for item, entry in zip(image.items, entries):
        lines += [f"{item.name.decode()}: {line}" for line in member_differences(item, entry)]
    return lines


def member_differences(item, entry):
    if isinstance(item, Entry):
        same = item.carried_fields() == entry.carried_fields()
        return [] if same else [f"not carried as it was: {entry}, expected {item}"]
    content = entry.data()
    fields = Added(item.name, content).differences(entry)
    lines = [f"{key} {theirs!r}, expected {ours!r}" for key, (ours, theirs) in fields.items()]
    return lines + content_differences(item.content, content)
