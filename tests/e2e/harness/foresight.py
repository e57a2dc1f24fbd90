"""What TaVekInspect says of a batch run before it happens, held against what then happens."""

import json
import os
import re

from . import json_schema, program

PROCESSING = "TaVekUtil: Processing Archive: "
REMOVING = "\tTaVekUtil: Remove Package: "
LOADED = re.compile(
    "TaVekUtil:    - Loaded file for (?:Linux_Arm7 Sensor|Linux Arm64 Ombix|Linux Arm64 Sensor|Windows): "
)
NO_DIRECTORY = "Directory does not exists ("
UNCHANGED = "TaVekUtil:    - No libraries were loaded for: "
MISMATCH = re.compile(r"TaVekUtil: ERROR - (.*) != (.*)\((.*)\)")
SAVING = "TaVekUtil:    - Saving new package as: "
PLATFORMS = ("linux_arm7", "linux_arm64", "ombix", "win", "all")


def batch_of(arguments):
    """Configuration and platform of a batch run's plain command line; None for any other."""
    words = list(arguments)
    if len(words) == 2:
        words += ["--platform", "all"]
    if len(words) != 4 or words[0] != "--config" or words[2] != "--platform":
        return None
    usual = 0 < len(words[1]) < 512 and not words[1].startswith("-") and words[3] in PLATFORMS
    return (words[1], words[3]) if usual else None


def injection_of(arguments):
    """The archive of a plain command line that adds one library; None for any other."""
    words = list(arguments)
    plain = len(words) == 4 and words[0] == "--file" and words[2] == "--archive"
    return words[3] if plain and 0 < len(words[3]) < 512 else None


def behind(start, lines):
    return [line[len(start) :] for line in lines if line.startswith(start)]


def as_in_json(text):
    """Bytes that are no UTF-8 are written otherwise in documents."""
    return re.sub("[\ud800-\udfff]", "\ufffd", text)


class Steps:
    """What a run has said of one archive, or a plan says of it."""

    def __init__(self, path, removed, added, skipped, is_changed):
        self.path, self.is_changed = path, is_changed
        # A package that is listed twice is removed twice, and foretold once.
        self.removed, self.added, self.skipped = list(dict.fromkeys(removed)), added, skipped

    @classmethod
    def happened(cls, text):
        lines = text.splitlines()
        added = [line[found.end() :] for line in lines if (found := LOADED.match(line))]
        skipped = len(behind(NO_DIRECTORY, lines))
        return cls(lines[0], behind(REMOVING, lines), added, skipped, not behind(UNCHANGED, lines))

    @classmethod
    def foretold(cls, archive):
        where = "destination" if archive["platform"] == "win" else "path"
        skipped = [each for each in archive["skipped"] if each["reason"].startswith("the directory of ")]
        return cls(
            archive["path"],
            [each["package"] for each in archive["removed"]],
            # Of a name with line ends the run's first line is looked at.
            [each[where].split("\n")[0] for each in archive["added"]],
            len(skipped),
            archive["outcome"] != "unchanged",
        )

    def leads_to(self, other):
        """True when `other` goes on where these end, as a plan does that passes the failure of the run."""
        return (
            self.path == other.path
            and self.removed == other.removed[: len(self.removed)]
            and self.added == other.added[: len(self.added)]
            and self.skipped <= other.skipped
        )


class Foresight:
    """The plan of the batch that `arguments` ask for. Without the inspector, or for another kind of run, it
    says nothing."""

    def __init__(self, scenario, arguments, file_size=None, unprivileged=False, merged=False):
        self.scenario, self.plan, self.injected = scenario, None, None
        batch, self.unprivileged = batch_of(arguments), unprivileged
        if not program.INSPECTOR:
            return
        self.inspector = os.path.join(scenario.programs, os.path.basename(program.INSPECTOR))
        archive = injection_of(arguments)
        if archive is not None and self.verified(archive):
            self.injected = archive
        # Nobody can foretell a full disk.
        if batch is None or file_size is not None or not scenario.foreseeable:
            return
        before = scenario.snapshot()
        result = self.inspect("plan", batch[0], "--platform", batch[1], "--json")
        self.status, self.plan = result.status, self.parsed(result)
        scenario.assertEqual(scenario.snapshot(), before, "planning has changed something")
        self.sound_inputs = {
            archive["path"]: self.verified(archive["path"])
            for archive in self.plan["archives"]
            if archive["outcome"] in ("saved", "written")
        }

    def inspect(self, *arguments):
        return program.start(self.inspector, arguments, self.scenario.root, unprivileged=self.unprivileged)

    def parsed(self, result):
        # What tar has to say of a file that it cannot read is let through.
        self.scenario.assertTrue(result.stderr == "" or "tar" in result.stderr, result.stderr)
        self.scenario.assertIn(result.status, (0, 1))
        self.scenario.assertTrue(result.stdout, f"planning has said nothing: {result}")
        document = json.loads(result.stdout)
        json_schema.validate(document)
        return document

    def verified(self, path):
        """True when `path` is found to have no errors."""
        return self.inspect("verify", "--", path).status == 0

    def findings(self):
        parts = [self.plan] + self.plan["archives"]
        return [finding for part in parts for finding in part["findings"]]

    def compare(self, result):
        """Compares the plan with the run's streams and exit status, and looks into what was saved."""
        if self.injected is not None:
            self.scenario.assertTrue(self.verified(self.injected), "adding a library has done harm")
        if self.plan is None:
            return
        told = json.dumps(self.plan, indent=1)
        check = self.scenario
        check.assertEqual(self.plan["succeeds"], result.status == 0, f"\n{result.stderr}\nforetold\n{told}")
        check.assertEqual(self.status == 0, self.findings() == [], told)
        saved = [line[len(SAVING) :] for line in result.stdout.splitlines() if line.startswith(SAVING)]
        foretold = [archive for archive in self.plan["archives"] if archive["outcome"] == "saved"]
        check.assertEqual([archive["savedAs"] for archive in foretold], saved, told)
        self.compare_steps(as_in_json(result.stdout), told)
        self.compare_versions(as_in_json(result.stdout + result.stderr), result.status, told)
        for archive in self.plan["archives"]:
            if archive["outcome"] == "written" and self.sound_inputs[archive["path"]] and not self.findings():
                check.assertTrue(self.verified(archive["path"]), told)
        for archive in foretold:
            inconsistent = any("would not be consistent" in each["text"] for each in archive["findings"])
            if self.sound_inputs[archive["path"]]:
                check.assertEqual(self.verified(archive["savedAs"]), not inconsistent, told)

    def compare_steps(self, text, told):
        """Compares what was said of each archive; of the one at which a run ended, as far as it came."""
        happened = [Steps.happened(part) for part in text.split("\n" + PROCESSING)[1:]]
        reached = [archive for archive in self.plan["archives"] if archive["outcome"] != "notReached"]
        foretold = [Steps.foretold(archive) for archive in reached]
        check = self.scenario
        check.assertEqual([each.path for each in happened], [each.path for each in foretold], told)
        for archive, was, said in zip(reached, happened, foretold):
            check.assertTrue(was.leads_to(said), f"{vars(was)}\nforetold\n{told}")
            if archive["outcome"] != "failed":
                check.assertEqual(vars(was), vars(said), told)

    def compare_versions(self, text, status, told):
        """Compares the packages that were passed over for their version, when the run came to its end."""
        if status != 0:
            return
        happened = [
            (f"package {package}", f"built for {own}, the archive is {version}")
            for version, package, own in (found.groups() for found in MISMATCH.finditer(text))
        ]
        foretold = [
            (each["subject"], each["reason"])
            for archive in self.plan["archives"]
            for each in archive["skipped"]
            if each["subject"].startswith("package ")
        ]
        self.scenario.assertEqual(happened, foretold, told)
