#include "TaVekUtil/cli/command_line.h"

#include <gmock/gmock.h>

#include "tests/testing/archive_fixture.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::CapturedOutput;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ScratchDirectory;
using testing::StartsWith;
using testing::StrEq;

constexpr const char* usage =
    "Usage: \n"
    "       TaVekUtil.exe --file <libFilePath> --archive <archiveFilePath>\n"
    "       TaVekUtil.exe --manifest <outManifestFileName> --archive <archiveFilePath>\n"
    "       TaVekUtil.exe --config <configFileName> [--platform <platform>]\n"
    "           <configFileName> - Should be in same directory as application i.e sample_config.xml\n"
    "           <platform> - Platform to build for. Options are ['linux_arm7', 'linux_arm64', 'win', 'all']. "
    "Default is 'all'.\n"
    "\n"
    "If archive and file are explicitly specified, archive will be overwritten\n";

/// A command line, what scanning it fills, and what is said meanwhile.
struct CommandLine {
    Flags flags;
    CapturedOutput output;

    Scan scan(std::vector<std::string> words) {
        words.insert(words.begin(), "TaVekUtil");
        return scanFlags(words, flags);
    }
    Mode choose(const std::vector<std::string>& words) {
        EXPECT_EQ(scan(words), Scan::complete);
        return chooseMode(flags);
    }
};

TEST(Usage, isThisText) {
    const CapturedOutput output;
    printUsage();
    EXPECT_EQ(output.out(), usage);
    EXPECT_EQ(output.err(), "");
}

// ---- Scanning -------------------------------------------------------------------------------------------

TEST(ScanFlags, fillsEachFlag) {
    CommandLine line;
    EXPECT_EQ(line.scan({"--platform", "win", "--archive", "a.pkg", "--manifest", "m.xml", "--config",
                         "c.xml", "--file", "lib.so"}),
              Scan::complete);
    EXPECT_STREQ(line.flags.platform.c_str(), "win");
    EXPECT_STREQ(line.flags.archive.c_str(), "a.pkg");
    EXPECT_STREQ(line.flags.manifest.c_str(), "m.xml");
    EXPECT_STREQ(line.flags.config.c_str(), "c.xml");
    EXPECT_STREQ(line.flags.file.c_str(), "lib.so");
    EXPECT_THAT(line.output.lines(), IsEmpty());
}

TEST(ScanFlags, leavesTheOthersEmpty) {
    CommandLine line;
    EXPECT_EQ(line.scan({"--archive", "a.pkg"}), Scan::complete);
    for (const char* text : {line.flags.platform.c_str(), line.flags.manifest.c_str(),
                             line.flags.config.c_str(), line.flags.file.c_str()}) {
        EXPECT_STREQ(text, "");
    }
}

TEST(ScanFlags, takesTheLaterOfTwoValues) {
    CommandLine line;
    EXPECT_EQ(line.scan({"--file", "first", "--file", "2"}), Scan::complete);
    EXPECT_STREQ(line.flags.file.c_str(), "2");
}

TEST(ScanFlags, cutsValuesToTheirCapacity) {
    CommandLine line;
    const std::string value(600, 'v');
    EXPECT_EQ(line.scan({"--platform", value, "--archive", value, "--manifest", value, "--config", value,
                         "--file", value}),
              Scan::complete);
    EXPECT_EQ(line.flags.platform.c_str(), value.substr(0, 31));
    EXPECT_EQ(line.flags.archive.c_str(), value.substr(0, 511));
    EXPECT_EQ(line.flags.manifest.c_str(), value.substr(0, 511));
    EXPECT_EQ(line.flags.config.c_str(), value.substr(0, 511));
    EXPECT_EQ(line.flags.file.c_str(), value.substr(0, 511));
}

TEST(ScanFlags, passesOverWhatItDoesNotKnow) {
    CommandLine line;
    EXPECT_EQ(line.scan({"foo", "-v", "x", "--Config", "C", "--config", "c.xml", "bar"}), Scan::complete);
    EXPECT_STREQ(line.flags.config.c_str(), "c.xml");
    EXPECT_THAT(line.output.lines(), IsEmpty());
}

TEST(ScanFlags, skipsAnUnknownFlagAlone) {
    // Were its value skipped with it, the word behind that would be the flag.
    CommandLine line;
    EXPECT_EQ(line.scan({"-v", "x", "--config", "c.xml"}), Scan::complete);
    EXPECT_STREQ(line.flags.config.c_str(), "c.xml");
}

TEST(ScanFlags, neverTakesAValueForAFlag) {
    CommandLine line;
    EXPECT_EQ(line.scan({"--file", "h", "--archive", "help"}), Scan::complete);
    EXPECT_STREQ(line.flags.archive.c_str(), "help");
}

TEST(ScanFlags, missesAValueBehindAnyWordWithADash) {
    const struct {
        std::vector<std::string> words;
        const char* flag;
    } lines[] = {
        {{"--archive", "a.pkg", "--platform"}, "--platform"},
        {{"--config", "c.xml", "--platform", "-x"}, "--platform"},
        {{"--config", "c.xml", "-v"}, "-v"},
        {{"--archive", "--help"}, "--archive"},
        {{"-v", "-w", "x"}, "-v"},
        {{"-"}, "-"},
    };
    for (const auto& [words, flag] : lines) {
        CommandLine line;
        EXPECT_EQ(line.scan(words), Scan::failed);
        EXPECT_THAT(line.output.lines(),
                    ElementsAre("err: ERROR: No arguments specified with flag '" + std::string(flag) + "'"));
    }
}

TEST(ScanFlags, stopsAtARequestForHelp) {
    for (const char* flag : {"-h", "--help"}) {
        CommandLine line;
        EXPECT_EQ(line.scan({"--config", "c.xml", flag}), Scan::help) << "also as the last word";
        EXPECT_EQ(line.scan({flag, "--config"}), Scan::help) << "whatever follows";
        EXPECT_THAT(line.output.lines(), IsEmpty());
    }
}

// ---- The mode -------------------------------------------------------------------------------------------

TEST(ChooseMode, goesByTheFlagsInThisOrder) {
    EXPECT_EQ(CommandLine().choose({"--config", "c", "--archive", "a", "--manifest", "m", "--file", "f"}),
              Mode::batch);
    EXPECT_EQ(CommandLine().choose({"--file", "f", "--archive", "a", "--manifest", "m"}), Mode::extraction);
    EXPECT_EQ(CommandLine().choose({"--file", "f", "--archive", "a"}), Mode::injection);
}

TEST(ChooseMode, refusesFlagsThatAskForNothing) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"stray"},
                                                  {"--archive", "a"},
                                                  {"--manifest", "m"},
                                                  {"--file", "f"},
                                                  {"--manifest", "m", "--file", "f"},
                                                  {"--platform", "win"},
                                                  {"--config", "", "--archive", "", "--file", "f"}}) {
        CommandLine line;
        EXPECT_EQ(line.choose(words), Mode::none);
        EXPECT_EQ(line.output.err(), "ERROR: No flags specified.\n\n");
        EXPECT_EQ(line.output.out(), usage);
        EXPECT_THAT(line.output.lines()[0], StrEq("err: ERROR: No flags specified.")) << "the error first";
    }
}

TEST(ChooseMode, completesThePlatformOfABatch) {
    CommandLine line;
    EXPECT_EQ(line.choose({"--config", "c"}), Mode::batch);
    EXPECT_STREQ(line.flags.platform.c_str(), "all");
}

TEST(ChooseMode, takesThesePlatformsForABatch) {
    for (const std::string key : {"all", "ombix", "linux_arm7", "linux_arm64", "win"}) {
        CommandLine line;
        EXPECT_EQ(line.choose({"--config", "c", "--platform", key}), Mode::batch);
        EXPECT_EQ(line.flags.platform.c_str(), key);
        EXPECT_THAT(line.output.lines(), IsEmpty());
    }
}

TEST(ChooseMode, refusesAnyOtherPlatform) {
    for (const char* key : {"Ombix", "ALL", "linux_arm", "linux_arm7x", "windows"}) {
        CommandLine line;
        EXPECT_EQ(line.choose({"--config", "c", "--platform", key}), Mode::none);
        EXPECT_EQ(
            line.output.err(),
            "ERROR: Platform must be specified ['linux_arm7', 'linux_arm64', 'Ombix', 'win', 'all'].\n\n");
        EXPECT_EQ(line.output.out(), usage);
    }
}

TEST(ChooseMode, looksAtThePlatformOfABatchAlone) {
    EXPECT_EQ(CommandLine().choose({"--platform", "nonsense", "--archive", "a", "--manifest", "m"}),
              Mode::extraction);
}

// ---- Running --------------------------------------------------------------------------------------------

TEST(RunMode, handsEachModeItsFlags) {
    const ScratchDirectory scratch;
    CommandLine line;
    ASSERT_EQ(line.scan({"--config", scratch.path("c.xml"), "--archive", scratch.path("a.pkg"), "--manifest",
                         scratch.path("m.xml"), "--file", scratch.path("l.so")}),
              Scan::complete);
    EXPECT_EQ(runMode(Mode::batch, line.flags), 1);
    EXPECT_EQ(runMode(Mode::extraction, line.flags), 1);
    EXPECT_EQ(runMode(Mode::injection, line.flags), 1);
    EXPECT_THAT(
        line.output.lines(),
        ElementsAre(StartsWith("err: TaVekUtil: Failed updating upgrade packages using configuration file: " +
                               scratch.path("c.xml") + " Error: "),
                    "err: TaVekUtil: Failed to extract manifest file. Error: Path not found: " +
                        scratch.path("a.pkg"),
                    AllOf(StartsWith("err: TaVekUtil: Failed to inject library to archive. Error: "),
                          HasSubstr(scratch.path("a.pkg")))));
}

TEST(RunMode, answersTheResultOfTheMode) {
    const ScratchDirectory scratch;
    CommandLine line;
    testing::writeArchive(scratch.path("a.pkg"),
                          {{"script.xml", "<S><Version value='1'/><File name='R2'/></S>"}});
    scratch.write("l.so", "library");
    ASSERT_EQ(line.scan({"--archive", scratch.path("a.pkg"), "--manifest", scratch.path("m.xml"), "--file",
                         scratch.path("l.so")}),
              Scan::complete);
    EXPECT_EQ(runMode(Mode::extraction, line.flags), 0);
    EXPECT_TRUE(scratch.exists("m.xml"));
    EXPECT_EQ(runMode(Mode::injection, line.flags), 0);
    EXPECT_EQ(testing::memberContent(scratch.path("a.pkg"), "data/12345-vekappl.so"), "library");
}

}  // namespace
