"""The command line: flags, their values, the choice of the mode, usage and exit statuses."""

from harness import documents
from harness.documents import unified_manifest
from harness.messages import batch_failed, extraction_failed, loaded, processing, saving, unchanged
from harness.patterns import containing
from harness.program import combined
from harness.scenario import Scenario

USAGE = """\
Usage: 
       TaVekUtil.exe --file <libFilePath> --archive <archiveFilePath>
       TaVekUtil.exe --manifest <outManifestFileName> --archive <archiveFilePath>
       TaVekUtil.exe --config <configFileName> [--platform <platform>]
           <configFileName> - Should be in same directory as application i.e sample_config.xml
           <platform> - Platform to build for. Options are ['linux_arm7', 'linux_arm64', 'win', 'all']. Default is 'all'.

If archive and file are explicitly specified, archive will be overwritten
"""

NO_FLAGS = "ERROR: No flags specified.\n\n"
BAD_PLATFORM = "ERROR: Platform must be specified ['linux_arm7', 'linux_arm64', 'Ombix', 'win', 'all'].\n\n"


def no_value(flag):
    return f"ERROR: No arguments specified with flag '{flag}'\n"


class Usage(Scenario):
    def test_without_any_word_the_usage_is_shown_and_the_status_is_1(self):
        self.check(stdout=USAGE, status=1)

    def test_help_is_no_error(self):
        for flag in ("-h", "--help"):
            self.check(flag, stdout=USAGE)

    def test_help_as_the_last_word_is_help_and_no_flag_without_value(self):
        self.check("--archive", "a.pkg", "-h", stdout=USAGE)
        self.check("stray", "--help", stdout=USAGE)

    def test_help_wins_over_a_mode_whose_flags_came_before(self):
        self.check("--config", "missing.xml", "--help", stdout=USAGE)

    def test_help_after_a_flag_is_a_missing_value(self):
        self.check("--archive", "--help", stdout=USAGE, stderr=no_value("--archive"), status=1)
        self.check("--archive", "-h", stdout=USAGE, stderr=no_value("--archive"), status=1)

    def test_help_is_spelt_exactly(self):
        self.check("-H", "x", stdout=USAGE, stderr=NO_FLAGS, status=1)
        self.check("--Help", stdout=USAGE, stderr=no_value("--Help"), status=1)


class MissingValue(Scenario):
    def expect_missing(self, flag, *words):
        self.check(*words, stdout=USAGE, stderr=no_value(flag), status=1)

    def test_every_known_flag_needs_a_value(self):
        for flag in ("--archive", "--file", "--config", "--platform", "--manifest"):
            self.expect_missing(flag, flag)

    def test_the_last_word_is_a_flag(self):
        self.expect_missing("--platform", "--archive", "a.pkg", "--platform")

    def test_a_value_that_begins_with_a_dash_is_none(self):
        self.expect_missing("--platform", "--config", "c.xml", "--platform", "-x")
        self.expect_missing("--config", "--config", "--archive", "a.pkg")

    def test_an_unknown_flag_in_the_last_place_is_named(self):
        self.expect_missing("-v", "--config", "c.xml", "-v")
        self.expect_missing("-", "-")

    def test_an_unknown_flag_before_another_flag_is_named(self):
        self.expect_missing("-v", "-v", "--config", "c.xml")

    def test_the_flag_is_quoted_as_typed(self):
        self.expect_missing("--über 'x' $HOME", "--über 'x' $HOME")


class Modes(Scenario):
    def setUp(self):
        super().setUp()
        self.host_archive("a.pkg")
        self.write("lib.so", "library")

    def manifest_of(self, platform="linux_arm7"):
        return {"m.xml": unified_manifest(platform)}

    def test_nothing_usable_given(self):
        for words in (
            ["stray"],
            ["--archive", "a.pkg"],
            ["--manifest", "m.xml"],
            ["--file", "lib.so"],
            ["--file", "lib.so", "--manifest", "m.xml"],
            ["--platform", "win"],
            ["-v", "x"],
            [""],
            ["--archive", "", "--manifest", "m.xml"],
        ):
            self.check(*words, stdout=USAGE, stderr=NO_FLAGS, status=1)

    def test_the_manifest_goes_before_the_library(self):
        self.check(
            "--file",
            "lib.so",
            "--archive",
            "a.pkg",
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files=self.manifest_of(),
        )

    def test_an_empty_manifest_name_counts_as_not_given(self):
        self.check("--manifest", "", "--file", "lib.so", "--archive", "a.pkg", files={"a.pkg": None})

    def test_an_empty_configuration_name_counts_as_not_given(self):
        self.check(
            "--config",
            "",
            "--archive",
            "a.pkg",
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files=self.manifest_of(),
        )

    def test_the_later_of_two_values_wins(self):
        self.check(
            "--archive",
            "missing.pkg",
            "--manifest",
            "x.xml",
            "--archive",
            "a.pkg",
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files=self.manifest_of(),
        )

    def test_stray_words_and_unknown_flags_are_passed_over(self):
        self.check(
            "stray",
            "-v",
            "x",
            "--archive",
            "a.pkg",
            "y",
            "--manifest",
            "m.xml",
            "z",
            stdout="Manifest saved at m.xml\n",
            files=self.manifest_of(),
        )

    def test_a_flag_name_as_the_value_of_an_unknown_flag_is_no_value(self):
        self.check("-v", "--archive", "a.pkg", stdout=USAGE, stderr=no_value("-v"), status=1)

    def test_the_platform_matters_in_batch_mode_only(self):
        for platform in ("win", "nonsense"):
            self.check(
                "--platform",
                platform,
                "--archive",
                "a.pkg",
                "--manifest",
                "m.xml",
                stdout="Manifest saved at m.xml\n",
                files=self.manifest_of(),
            )

    def test_an_archive_name_is_cut_to_511_characters(self):
        name = "./" * 255 + "a"
        self.host_archive("a")
        self.check(
            "--archive",
            name + "x" * 89,
            "--manifest",
            "m.xml",
            stdout="Manifest saved at m.xml\n",
            files=self.manifest_of(),
        )
        self.check(
            "--archive",
            "./" * 255 + "b" + "x" * 89,
            "--manifest",
            "m2.xml",
            status=1,
            stderr=extraction_failed("Path not found: " + "./" * 255 + "b"),
        )

    def test_a_manifest_name_is_cut_to_511_characters(self):
        name = "./" * 255 + "m"
        self.check(
            "--archive",
            "a.pkg",
            "--manifest",
            name + "x" * 89,
            stdout=f"Manifest saved at {name}\n",
            files={"m": unified_manifest("linux_arm7")},
        )

    def test_a_library_name_is_cut_to_511_characters(self):
        self.write("l", "library")
        self.check("--archive", "a.pkg", "--file", "./" * 255 + "l" + "x" * 89, files={"a.pkg": None})


class BatchMode(Scenario):
    def setUp(self):
        super().setUp()
        self.host_archive("sensor.pkg")
        self.write("host/bin/win64/c.xml", documents.configuration("Custom", ["sensor.pkg"]))
        self.nothing_done = processing("sensor.pkg") + unchanged("sensor.pkg")

    def test_stray_words_before_the_configuration_are_passed_over(self):
        self.check("foo", "--config", "c.xml", stdout=self.nothing_done)

    def test_an_unknown_flag_is_passed_over_alone_and_then_its_value(self):
        self.check("-v", "x", "--config", "c.xml", stdout=self.nothing_done)

    def test_it_goes_before_the_other_modes(self):
        self.check(
            "--config",
            "c.xml",
            "--platform",
            "all",
            "--archive",
            "sensor.pkg",
            "--manifest",
            "m.xml",
            "--file",
            "lib.so",
            stdout=self.nothing_done,
        )

    def test_every_platform_is_accepted(self):
        for platform in ("all", "ombix", "linux_arm7", "linux_arm64", "win", ""):
            self.check("--config", "c.xml", "--platform", platform, stdout=self.nothing_done)

    def test_the_platform_is_all_when_none_is_given(self):
        for given in ([], ["--platform", ""], ["--platform", "all"]):
            self.package(
                "pkgs/alpha",
                documents.package_manifest(
                    "Alpha", documents.platform("linux_arm7", documents.entry("VekApp", "a.so", "/a.so"))
                ),
                ["a.so"],
            )
            self.write(
                "host/bin/win64/c.xml", documents.configuration("Custom", ["sensor.pkg"], ["pkgs/alpha"])
            )
            self.check(
                "--config",
                "c.xml",
                *given,
                files={"Custom-sensor.pkg": None},
                stdout=processing("sensor.pkg")
                + loaded("linux_arm7", combined("pkgs/alpha", "a.so"))
                + saving("Custom-sensor.pkg"),
            )

    def test_other_platforms_are_refused_before_anything_is_read(self):
        for platform in ("Ombix", "OMBIX", "linux", "linux_arm7 ", "Win", "linux_arm7x", "x" * 600):
            self.check(
                "--config", "missing.xml", "--platform", platform, stdout=USAGE, stderr=BAD_PLATFORM, status=1
            )

    def test_a_failed_mode_gives_status_1_without_the_usage(self):
        self.check(
            "--config", "missing.xml", stderr=batch_failed(containing("missing.xml"), "missing.xml"), status=1
        )
