#include "TaVekUtil/batch/run.h"

#include <gmock/gmock.h>

#include "platform/os/os.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/living_objects.h"
#include "tests/testing/package_fixture.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"

namespace {

using testing::ApplicationDirectory;
using testing::CapturedOutput;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Fault;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsLocatedAt;
using testing::raised;
using testing::ScratchDirectory;
using testing::StartsWith;

constexpr const char* failure = "err: TaVekUtil: Failed updating upgrade packages using configuration file: ";

/// The program in "bin", an archive "a.pkg", a package "pkg" with files for two platforms, a configuration.
struct Batch {
    ScratchDirectory scratch;
    ApplicationDirectory program{scratch.path("bin")};
    std::string archive = testing::writeArchive(
        scratch.path("a.pkg"), {{"script.xml", "<S><Version value='6.1'/><File name='R6'/></S>"}});
    std::string package = testing::writePackage(
        scratch, "pkg",
        {.name = "app", .files = {{"linux_arm64", "64.so", "/64"}, {"linux_arm7", "7.zext", "/7"}}});
    std::string config = configure(archive, package);
    CapturedOutput output;

    std::string configure(const std::string& stock, const std::string& load) {
        return scratch.write("bin/cfg.xml", "<C><OutputPrefix>P</OutputPrefix><StockPackages><a>" + stock +
                                                "</a></StockPackages><VekPkgsToLoad><a>" + load +
                                                "</a></VekPkgsToLoad></C>");
    }
    void expectFailedAt(int line, const std::string& name = "cfg.xml") {
        EXPECT_EQ(TaVekUtil_Run("all", name.c_str()), 1);
        EXPECT_THAT(output.lines(),
                    ElementsAre(AllOf(StartsWith(failure + name + " Error: TaVekUtil_Run: "),
                                      EndsWith(", TaVekUtil:" + std::to_string(line) + ")"))));
        EXPECT_THAT(testing::livingObjects(), IsEmpty());
    }
};

TEST(Run, doesTheWholeBatch) {
    Batch batch;
    EXPECT_EQ(TaVekUtil_Run("all", "cfg.xml"), 0);
    EXPECT_THAT(batch.output.lines(),
                ElementsAre("out: ", "out: TaVekUtil: Processing Archive: " + batch.archive,
                            StartsWith("out: TaVekUtil:    - Loaded file for Linux Arm64 Sensor: "),
                            "out: TaVekUtil:    - Saving new package as: " + batch.scratch.path() +
                                os::pathSeparator + "P-a.pkg"));
    EXPECT_EQ(testing::memberContent(batch.scratch.path("P-a.pkg"), "data/12345-64.so"), "content");
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(Run, takesThePlatformFirst) {
    Batch batch;
    EXPECT_EQ(TaVekUtil_Run("linux_arm7", "cfg.xml"), 0);
    EXPECT_THAT(batch.output.lines(),
                ElementsAre("out: ", "out: TaVekUtil: Processing Archive: " + batch.archive,
                            "out: TaVekUtil:    - No libraries were loaded for: " + batch.archive))
        << "the package's file for the archive's own platform was not selected";
}

TEST(Run, usesAnAbsoluteNameAsItIs) {
    Batch batch;
    EXPECT_EQ(TaVekUtil_Run("all", batch.config.c_str()), 0);
    const Fault unused("zDirectory_Application", zStatus_IoError);
    EXPECT_EQ(TaVekUtil_Run("all", batch.config.c_str()), 0);
}

TEST(Run, reportsAConfigurationThatIsNotThere) {
    Batch batch;
    EXPECT_EQ(TaVekUtil_Run("all", "no/such.xml"), 1);
    const std::string path = batch.scratch.path("bin") + os::pathSeparator + "no/such.xml";
    EXPECT_THAT(batch.output.lines(),
                ElementsAre(failure + ("no/such.xml Error: TaVekUtil_Run: " + path +
                                       ": No such file or directory (not found, status -999, "
                                       "TaVekUtil:1268)")));
}

TEST(Run, reportsTheStepThatFailed) {
    {
        Batch batch;
        const Fault fault("zDirectory_Application", zStatus_IoError);
        batch.expectFailedAt(1265);
    }
    Batch().expectFailedAt(1266, std::string(511, 'c'));
    Batch batch;
    batch.scratch.write("bin/broken.xml", "<C>");
    const Fault later("zStrCopy", zStatus_NoMemory);
    batch.expectFailedAt(1268, "broken.xml");
}

TEST(Run, takesConfigurationPathsOfUpTo511Characters) {
    const ApplicationDirectory program("bin");
    EXPECT_EQ(TaVekUtil_ConfigPath(std::string(507, 'c').c_str()).c_str(),
              std::string("bin") + os::pathSeparator + std::string(507, 'c'));
    EXPECT_THAT(raised([] { TaVekUtil_ConfigPath(std::string(508, 'c').c_str()); }),
                IsLocatedAt("TaVekUtil_Run", zStatus_DoesNotFit, 1266));
    EXPECT_EQ(TaVekUtil_ConfigPath(('/' + std::string(511, 'c')).c_str()).c_str(),
              '/' + std::string(510, 'c'))
        << "an absolute one is cut";
}

TEST(Run, cutsAPlatformTo31Characters) {
    Batch batch;
    const std::string platform(31, 'p');
    // A package that is dropped is not asked for its version.
    const std::string package = testing::writePackage(
        batch.scratch, "other", {.name = "app", .beVersion = "5", .files = {{platform, "p", "p"}}});
    batch.configure(batch.archive, package);
    EXPECT_EQ(TaVekUtil_Run((platform + 'p').c_str(), "cfg.xml"), 0);
    EXPECT_THAT(batch.output.lines(), Contains("err: TaVekUtil: ERROR - 6.1 != app(5)"));
}

TEST(Run, reportsAPlatformThatCannotBeTaken) {
    Batch batch;
    batch.scratch.write("bin/cfg.xml", "<C/>");  // what it lacks is found later
    const Fault fault("zStrCopy", zStatus_NoMemory);
    EXPECT_EQ(TaVekUtil_Run("all", "cfg.xml"), 1);
    EXPECT_THAT(batch.output.lines(),
                ElementsAre("err: TaVekUtil: Failed to load arguments specified.",
                            failure + std::string("cfg.xml Error: out of memory (status -12)")));
}

TEST(Run, addsItsLineToThoseOfTheSteps) {
    const struct {
        std::string stock;
        std::string load;
        std::vector<std::string> lines;
    } batches[] = {
        {std::string(512, 'x'), "", {"err: TaVekUtil: Failed to load config file."}},
        {"a.pkg", "", {"err: TaVekUtil: Failed to load vek manifest file from vek package(s)."}},
    };
    for (const auto& [stock, load, lines] : batches) {
        Batch batch;
        batch.configure(stock, load);
        EXPECT_EQ(TaVekUtil_Run("all", "cfg.xml"), 1);
        ASSERT_EQ(batch.output.lines().size(), lines.size() + 1);
        EXPECT_EQ(batch.output.lines()[0], lines[0]);
        EXPECT_THAT(batch.output.lines()[1], StartsWith(failure + std::string("cfg.xml Error: ")));
    }
}

TEST(Run, loadsThePackagesBeforeItOpensAnArchive) {
    Batch batch;
    batch.configure("none.pkg", batch.scratch.path("none"));
    EXPECT_EQ(TaVekUtil_Run("all", "cfg.xml"), 1);
    EXPECT_THAT(batch.output.out(), IsEmpty());
    EXPECT_THAT(batch.output.err(), HasSubstr("TaVekUtil_Load_VekPkg_Manifest: "));
}

}  // namespace
