// Memory that the tool itself runs out of is no Ta::Exception. Some steps say their line and pass it on, one
// swallows it, the others know nothing of it; nobody makes a status of it, so that the process ends
// abnormally.

#include <gmock/gmock.h>

#include <new>

#include "TaVekUtil/batch/build_config.h"
#include "TaVekUtil/batch/package_loading.h"
#include "TaVekUtil/batch/process_archives.h"
#include "TaVekUtil/batch/run.h"
#include "TaVekUtil/batch/stock_packages.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/living_objects.h"
#include "tests/testing/package_fixture.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::ApplicationDirectory;
using testing::CapturedOutput;
using testing::ElementsAre;
using testing::Fault;
using testing::IsEmpty;
using testing::ScratchDirectory;

constexpr const char* configurationFailure = "err: TaVekUtil: Failed to load config file.";
constexpr const char* manifestFailure =
    "err: TaVekUtil: Failed to load vek manifest file from vek package(s).";
constexpr const char* filesFailure = "err: TaVekUtil: Failed to load vekapp platform files.";

TEST(OutOfMemoryWhile, theConfigurationIsReadGivesItsLine) {
    const auto document = testing::document("<C/>");
    BuildConfig config;
    const CapturedOutput output;
    const Fault shortage("zXml_FindRoot", std::bad_alloc());
    EXPECT_THROW(TaVekUtil_Load_Config(document.get(), config), std::bad_alloc);
    EXPECT_THAT(output.lines(), ElementsAre(configurationFailure));
}

TEST(OutOfMemoryWhile, stockArchivesAreFoundIsSwallowed) {
    const ScratchDirectory scratch;
    const ApplicationDirectory program(scratch.path("host/bin/win64"));
    std::vector<std::string> packages{"untouched"};
    const CapturedOutput output;
    const Fault shortage("zArrayList_Construct", std::bad_alloc());
    TaVekUtil_FindStockPackages(packages);
    EXPECT_THAT(packages, ElementsAre("untouched"));
    EXPECT_THAT(output.lines(), ElementsAre("err: TaVekUtil: Failed finding stock packages."));
}

TEST(OutOfMemoryWhile, aPackageIsLoadedGivesTheLineOfEachLevel) {
    const ScratchDirectory scratch;
    const std::string package =
        testing::writePackage(scratch, "pkg", {.name = "app", .files = {{"win", "w", "w"}}});
    // Two texts are copied to find the package, the third is the platform of its file.
    const struct {
        std::size_t call;
        std::vector<std::string> lines;
    } shortages[] = {{1, {manifestFailure}}, {2, {manifestFailure}}, {3, {filesFailure, manifestFailure}}};
    for (const auto& [call, lines] : shortages) {
        BuildConfig config;
        ASSERT_EQ(zStrCopy(config.platform.data(), config.platform.capacity(), "win"), zStatus_Success);
        config.vekPkgsToLoad = {package};
        const CapturedOutput output;
        const Fault shortage("zStrCopy", std::bad_alloc(), call);
        EXPECT_THROW(TaVekUtil_Load_VekPkg_Manifest(config), std::bad_alloc);
        EXPECT_EQ(output.lines(), lines);
        EXPECT_THAT(testing::livingObjects(), IsEmpty());
    }
}

TEST(OutOfMemoryWhile, anArchiveIsProcessedPassesWithoutALine) {
    BuildConfig config;
    config.stockPackages = {"a.pkg"};
    const CapturedOutput output;
    const Fault shortage("zPath_FileName", std::bad_alloc());
    EXPECT_THROW(TaVekUtil_ProcessStockPackages(config), std::bad_alloc);
    EXPECT_THAT(output.lines(), ElementsAre("out: ", "out: TaVekUtil: Processing Archive: a.pkg"));
}

TEST(OutOfMemoryWhile, theBatchRunsIsNotReportedByIt) {
    const ScratchDirectory scratch;
    scratch.write("bin/cfg.xml", "<C/>");
    const ApplicationDirectory program(scratch.path("bin"));
    const struct {
        const char* step;
        std::vector<std::string> lines;
    } shortages[] = {
        {"zDirectory_Application", {}},
        {"zStrCopy", {"err: TaVekUtil: Failed to load arguments specified."}},
        {"zXml_FindRoot", {configurationFailure}},
    };
    for (const auto& [step, lines] : shortages) {
        const CapturedOutput output;
        const Fault shortage(step, std::bad_alloc());
        EXPECT_THROW(TaVekUtil_Run("all", "cfg.xml"), std::bad_alloc) << step;
        EXPECT_EQ(output.lines(), lines) << step;
        EXPECT_THAT(testing::livingObjects(), IsEmpty()) << step;
    }
}

}  // namespace
