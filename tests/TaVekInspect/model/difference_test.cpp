#include "TaVekInspect/model/difference.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> told(const std::vector<Changed<ScriptEntry>>& changes) {
    std::vector<std::string> texts;
    for (const auto& change : changes) {
        const char* kind = change.kind == Change::added ? "+" : change.kind == Change::removed ? "-" : "~";
        texts.push_back(kind + change.present().name + '=' + change.present().source);
    }
    return texts;
}

TEST(Difference, ofEqualUpgradesIsEmpty) {
    Upgrade upgrade;
    upgrade.entries = {{"/a", "a", {}}, {"/a", "b", {}}};
    EXPECT_TRUE(compare(upgrade, upgrade).isEmpty());
}

TEST(Difference, pairsItemsByName) {
    Upgrade before, after;
    before.entries = {{"/gone", "g", {}}, {"/same", "s", {}}, {"/other", "o", {"R2"}}};
    after.entries = {{"/new", "n", {}}, {"/other", "o", {"R4"}}, {"/same", "s", {}}};
    EXPECT_THAT(told(compare(before, after).entries), ElementsAre("-/gone=g", "~/other=o", "+/new=n"));
}

TEST(Difference, pairsItemsOfOneNameInTheirOrder) {
    Upgrade before, after;
    before.entries = {{"/a", "1", {}}};
    after.entries = {{"/a", "1", {}}, {"/a", "2", {}}, {"/a", "3", {}}};
    EXPECT_THAT(told(compare(before, after).entries), ElementsAre("+/a=2", "+/a=3"));
    EXPECT_THAT(told(compare(after, before).entries), ElementsAre("-/a=2", "-/a=3"));
}

TEST(Difference, tellsChangedContentFromChangedPacking) {
    Upgrade before, after;
    zMemberInfo member;
    member.name = "x";
    before.members = {member};
    member.method = 8;
    after.members = {member};
    EXPECT_FALSE(compare(before, after).members.at(0).contentDiffers);
    member.crc = 1;
    after.members = {member};
    EXPECT_TRUE(compare(before, after).members.at(0).contentDiffers);
    EXPECT_THAT(compare(before, after).members.at(0).hunks, IsEmpty());
}

}  // namespace
