#include "TaVekUtil/batch/build_config.h"

#include <gmock/gmock.h>

#include "platform/os/os.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::CapturedOutput;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsLocated;
using testing::raised;
using testing::ScratchDirectory;

constexpr const char* operation = "TaVekUtil_Load_Config";
constexpr const char* noStock = "out: TaVekUtil: No Stock packages specified. Using default stock images.";
constexpr const char* failure = "err: TaVekUtil: Failed to load config file.";

/// A configuration to load, in a host software without stock archives of its own.
struct Loading {
    ScratchDirectory scratch;
    testing::ApplicationDirectory program{scratch.path("host/bin/win64")};
    BuildConfig config;
    CapturedOutput output;

    void load(const std::string& children) {
        TaVekUtil_Load_Config(testing::document("<Any>" + children + "</Any>").get(), config);
    }
    std::string stock(const std::string& name) const {
        return scratch.path("host") + os::pathSeparator + "pkg" + os::pathSeparator + name;
    }
};

std::string prefix(const std::string& text) {
    return "<OutputPrefix>" + text + "</OutputPrefix>";
}

std::string list(const std::string& name, const std::vector<std::string>& texts) {
    std::string children;
    for (const std::string& text : texts) children += "<Path>" + text + "</Path>";
    return "<" + name + ">" + children + "</" + name + ">";
}

const std::string oneArchive = prefix("P") + list("StockPackages", {"a.pkg"});

TEST(LoadConfig, readsEachElement) {
    Loading loading;
    loading.load(prefix("Custom") + list("StockPackages", {"b.pkg", "a.pkg"}) +
                 list("VekPkgsToLoad", {"one.tar", "two"}) + list("VekPkgsToRemove", {"Old", "Older"}));
    EXPECT_STREQ(loading.config.outputPrefix.c_str(), "Custom");
    EXPECT_THAT(loading.config.stockPackages, ElementsAre("b.pkg", "a.pkg"));
    EXPECT_THAT(loading.config.vekPkgsToLoad, ElementsAre("one.tar", "two"));
    EXPECT_THAT(loading.config.vekPkgsToRemove, ElementsAre("Old", "Older"));
    EXPECT_THAT(loading.config.addonPackages, IsEmpty());
    EXPECT_STREQ(loading.config.platform.c_str(), "") << "somebody else's";
    EXPECT_THAT(loading.output.lines(), IsEmpty());
}

TEST(LoadConfig, doesWithoutTheListsToLoadAndToRemove) {
    Loading loading;
    loading.load(oneArchive);
    EXPECT_THAT(loading.config.vekPkgsToLoad, IsEmpty());
    EXPECT_THAT(loading.config.vekPkgsToRemove, IsEmpty());
    EXPECT_THAT(loading.output.lines(), IsEmpty());
}

TEST(LoadConfig, takesTheFirstElementOfAName) {
    Loading loading;
    loading.load("<Other>x</Other>" + oneArchive + prefix("Q") + list("StockPackages", {"b.pkg"}));
    EXPECT_STREQ(loading.config.outputPrefix.c_str(), "P");
    EXPECT_THAT(loading.config.stockPackages, ElementsAre("a.pkg"));
}

TEST(LoadConfig, neverLooksAtTheNamesOfListEntries) {
    Loading loading;
    loading.load(prefix("P") +
                 "<StockPackages><A>a.pkg</A><Path>b.pkg</Path></StockPackages>"
                 "<VekPkgsToLoad><B x='y'>c</B></VekPkgsToLoad>");
    EXPECT_THAT(loading.config.stockPackages, ElementsAre("a.pkg", "b.pkg"));
    EXPECT_THAT(loading.config.vekPkgsToLoad, ElementsAre("c"));
}

TEST(LoadConfig, skipsEmptyArchivesAndKeepsOtherEmptyTexts) {
    Loading loading;
    loading.load(prefix("P") + list("StockPackages", {"", "a.pkg", ""}) + list("VekPkgsToLoad", {"", "x"}) +
                 list("VekPkgsToRemove", {"y", ""}));
    EXPECT_THAT(loading.config.stockPackages, ElementsAre("a.pkg"));
    EXPECT_THAT(loading.config.vekPkgsToLoad, ElementsAre("", "x"));
    EXPECT_THAT(loading.config.vekPkgsToRemove, ElementsAre("y", ""));
}

TEST(LoadConfig, needsAnOutputPrefix) {
    Loading loading;
    const auto exception = raised([&] { loading.load(list("StockPackages", {"a.pkg"})); });
    EXPECT_THAT(exception, IsLocated(operation, zStatus_NotFound));
    EXPECT_THAT(loading.config.stockPackages, IsEmpty()) << "it goes first";
    EXPECT_THAT(loading.output.lines(), ElementsAre(failure));
}

TEST(LoadConfig, needsARootElement) {
    Loading loading;
    const testing::Fault fault("zXml_FindRoot", zStatus_NotFound);
    EXPECT_THAT(raised([&] { loading.load(oneArchive); }), IsLocated(operation, zStatus_NotFound));
    EXPECT_THAT(loading.output.lines(), ElementsAre(failure));
}

TEST(LoadConfig, readsPrefixesOfUpTo255Characters) {
    Loading loading;
    loading.load(prefix(std::string(255, 'p')) + list("StockPackages", {"a.pkg"}));
    EXPECT_EQ(loading.config.outputPrefix.c_str(), std::string(255, 'p'));
    EXPECT_THAT(
        raised([&] { Loading().load(prefix(std::string(256, 'p')) + list("StockPackages", {"a.pkg"})); }),
        IsLocated(operation, zStatus_DoesNotFit));
}

TEST(LoadConfig, readsListedTextsOfUpTo511Characters) {
    const std::string longest(511, 't');
    for (const char* name : {"StockPackages", "VekPkgsToLoad", "VekPkgsToRemove"}) {
        Loading fits;
        fits.load(prefix("P") + list(name, {longest}) + list("StockPackages", {"a.pkg"}));
        const BuildConfig& config = fits.config;
        EXPECT_EQ(config.stockPackages.size() + config.vekPkgsToLoad.size() + config.vekPkgsToRemove.size(),
                  name == std::string("StockPackages") ? 1 : 2);

        Loading longer;
        EXPECT_THAT(raised([&] {
                        longer.load(prefix("P") + list(name, {"first", longest + "t"}) +
                                    list("StockPackages", {"a.pkg"}));
                    }),
                    IsLocated(operation, zStatus_DoesNotFit));
        EXPECT_THAT(longer.output.lines(), ElementsAre(failure));
    }
}

TEST(LoadConfig, keepsWhatItReadBeforeAFailure) {
    Loading loading;
    raised([&] { loading.load(oneArchive + list("VekPkgsToLoad", {"x", std::string(512, 't')})); });
    EXPECT_STREQ(loading.config.outputPrefix.c_str(), "P");
    EXPECT_THAT(loading.config.stockPackages, ElementsAre("a.pkg"));
    EXPECT_THAT(loading.config.vekPkgsToLoad, ElementsAre("x"));
}

TEST(LoadConfig, fallsBackToTheStockArchives) {
    for (const std::string& none :
         {std::string(), list("StockPackages", {}), list("StockPackages", {"", " "})}) {
        Loading loading;
        loading.scratch.write("host/pkg/14-2.dat", "");
        loading.load(prefix("P") + none);
        EXPECT_THAT(loading.config.stockPackages, ElementsAre(loading.stock("14-2.dat")));
        EXPECT_THAT(loading.config.vekPkgsToLoad, IsEmpty());
        EXPECT_THAT(loading.config.vekPkgsToRemove, IsEmpty());
        EXPECT_THAT(loading.output.lines(), ElementsAre(noStock));
    }
}

TEST(LoadConfig, endsTheProcessWhenThereIsNothingToProcess) {
    const auto load = [](bool directory) noexcept {
        os::silenceAbnormalEnd();
        const ScratchDirectory scratch;
        const testing::ApplicationDirectory program(scratch.path("host/bin/win64"));
        if (directory) scratch.write("host/pkg/15-2.dat", "");
        BuildConfig config;
        TaVekUtil_Load_Config(testing::document("<Any>" + prefix("P") + "</Any>").get(), config);
    };
    EXPECT_DEATH(load(true),
                 testing::MatchesRegex("TaVekUtil: Could not find any packages to process\\.\r?\n"));
    EXPECT_DEATH(load(false),
                 testing::MatchesRegex("TaVekUtil: Failed finding stock packages\\.\r?\n"
                                       "TaVekUtil: Could not find any packages to process\\.\r?\n"));
}

}  // namespace
