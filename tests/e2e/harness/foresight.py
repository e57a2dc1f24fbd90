"""What TaVekInspect says of a batch run before it happens, held against what then happens."""

import json
import os

from . import json_schema, program

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


class Foresight:
    """The plan of the batch that `arguments` ask for. Without the inspector, or for another kind of run, it
    says nothing."""

    def __init__(self, scenario, arguments, file_size=None, unprivileged=False, merged=False):
        self.scenario, self.plan = scenario, None
        batch = batch_of(arguments)
        # Nobody can foretell a full disk.
        if batch is None or not program.INSPECTOR or file_size is not None or not scenario.foreseeable:
            return
        self.unprivileged = unprivileged
        self.inspector = os.path.join(scenario.programs, os.path.basename(program.INSPECTOR))
        before = scenario.snapshot()
        result = self.inspect("plan", batch[0], "--platform", batch[1], "--json")
        self.status, self.plan = result.status, self.parsed(result)
        scenario.assertEqual(scenario.snapshot(), before, "planning has changed something")
        self.sound_inputs = {
            archive["path"]: self.verified(archive["path"])
            for archive in self.plan["archives"]
            if archive["outcome"] == "saved"
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
        if self.plan is None:
            return
        told = json.dumps(self.plan, indent=1)
        check = self.scenario
        check.assertEqual(self.plan["succeeds"], result.status == 0, f"\n{result.stderr}\nforetold\n{told}")
        check.assertEqual(self.status == 0, self.findings() == [], told)
        saved = [line[len(SAVING) :] for line in result.stdout.splitlines() if line.startswith(SAVING)]
        foretold = [archive for archive in self.plan["archives"] if archive["outcome"] == "saved"]
        check.assertEqual([archive["savedAs"] for archive in foretold], saved, told)
        for archive in foretold:
            inconsistent = any("would not be consistent" in each["text"] for each in archive["findings"])
            if self.sound_inputs[archive["path"]]:
                check.assertEqual(self.verified(archive["savedAs"]), not inconsistent, told)
