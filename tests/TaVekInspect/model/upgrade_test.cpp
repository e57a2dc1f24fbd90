#include "TaVekInspect/model/upgrade.h"

#include <gmock/gmock.h>

#include "tests/testing/archive_fixture.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::ElementsAre;
using testing::ScratchDirectory;
using testing::writeArchive;

TEST(Upgrade, readsModelsHoweverDeepTheConditionsAreNested) {
    const ScratchDirectory scratch;
    std::string nested = "<Eq property='Controller' value='R4'/>";
    for (int i = 0; i < 20000; ++i) nested = "<And>" + nested + "</And>";
    const std::string script =
        "<S><Version value='1'/><File name='/a' source='a'><Or><Eq property='Controller' "
        "value='R2'/><Eq property='Other' value='R8'/></Or>" +
        nested + "</File></S>";
    const Upgrade upgrade = readUpgrade(writeArchive(scratch.path("a.pkg"), {{"script.xml", script}}));
    ASSERT_EQ(upgrade.entries.size(), 1u);
    EXPECT_THAT(upgrade.entries[0].controllers, ElementsAre("R2", "R4"));
    EXPECT_EQ(upgrade.platform(), "linux_arm7");
}

TEST(Upgrade, readsTextsThatAreTooLongForTheTool) {
    const ScratchDirectory scratch;
    const std::string name(5000, 'n');
    const std::string script = "<S><Version value='1'/><File name='" + name + "' source='R2'/></S>";
    const Upgrade upgrade = readUpgrade(writeArchive(scratch.path("a.pkg"), {{"script.xml", script}}));
    ASSERT_EQ(upgrade.entries.size(), 1u);
    EXPECT_EQ(upgrade.entries[0].name, name);
}

TEST(Upgrade, defaultDestinations) {
    EXPECT_EQ(destinationOf({"", "lib/a.so", ""}, "linux_arm64"), "/user/a.so");
    EXPECT_EQ(destinationOf({"", "lib\\a.so", ""}, "linux_arm7"), "/user/a.so");
    EXPECT_EQ(destinationOf({"", "a.so", "/x"}, "win"), "/x");
    EXPECT_EQ(destinationOf({"", "a.so", ""}, "win"), "");
    EXPECT_EQ(destinationOf({"", "a.so", ""}, "ombix"), "");
}

}  // namespace
