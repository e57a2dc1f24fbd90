#include "platform/archive/member_table.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace {

using testing::ElementsAre;

std::vector<std::string> namesIn(MemberTable& table) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < table.places(); ++i) {
        if (const Member* member = table.at(i)) names.emplace_back(table.nameOf(*member));
    }
    return names;
}

TEST(MemberTable, keepsMembersInOrder) {
    MemberTable table;
    for (const char* name : {"b", "a", "c"}) ASSERT_NE(table.append(name, 5), nullptr);
    EXPECT_THAT(namesIn(table), ElementsAre("b", "a", "c"));
    EXPECT_EQ(table.count(), 3u);
    EXPECT_EQ(table.find("a"), 1u);
    EXPECT_EQ(table.at(1)->origin, 5u);
    EXPECT_FALSE(table.at(1)->isAdded());
    EXPECT_EQ(table.at(3), nullptr);
    EXPECT_EQ(table.at(MemberTable::none), nullptr);
}

TEST(MemberTable, findsExactNamesAlone) {
    MemberTable table;
    EXPECT_EQ(table.find("a"), MemberTable::none);
    ASSERT_NE(table.append("data/12345-a.so", 0), nullptr);
    for (const char* other : {"", "data/12345-a.s", "data/12345-a.so ", "DATA/12345-a.so", "12345-a.so"}) {
        EXPECT_EQ(table.find(other), MemberTable::none) << other;
    }
    EXPECT_EQ(table.find("data/12345-a.so"), 0u);
}

TEST(MemberTable, takesANameOnce) {
    MemberTable table;
    ASSERT_NE(table.append("a", 1), nullptr);
    EXPECT_EQ(table.append("a", 2), nullptr);
    EXPECT_EQ(table.count(), 1u);
    table.remove(0);
    EXPECT_NE(table.append("a", 3), nullptr);
    EXPECT_EQ(table.at(table.find("a"))->origin, 3u);
}

TEST(MemberTable, findsNamesOfEveryLength) {
    MemberTable table;
    for (std::size_t size = 1; size < 200; ++size)
        ASSERT_NE(table.append(std::string(size, 'x'), size), nullptr);
    for (std::size_t size = 1; size < 200; ++size) {
        EXPECT_EQ(table.at(table.find(std::string(size, 'x')))->origin, size);
    }
}

/// The table beside a plain list, over a random course of appending, removing and looking up.
TEST(MemberTable, doesWhatAPlainListDoes) {
    std::mt19937 random(1);
    MemberTable table;
    std::vector<std::string> list;
    for (int round = 0; round < 20'000; ++round) {
        // Times of growth and times of shrinking, so that the table is tidied up now and then.
        const bool grows = round / 2000 % 2 == 0;
        const std::string name = std::to_string(random() % 3000);
        const auto place = std::find(list.begin(), list.end(), name);
        const std::size_t found = table.find(name);
        ASSERT_EQ(found != MemberTable::none, place != list.end());
        if (found != MemberTable::none) {
            ASSERT_EQ(table.nameOf(*table.at(found)), name);
        }
        if (random() % 4 < (grows ? 3u : 1u)) {
            ASSERT_EQ(table.append(name, Member::noOrigin) != nullptr, place == list.end());
            if (place == list.end()) list.push_back(name);
        } else if (place != list.end()) {
            table.remove(found);
            list.erase(place);
        }
        ASSERT_EQ(table.count(), list.size());
        if (round % 1000 == 0) {
            ASSERT_EQ(namesIn(table), list);
        }
    }
    EXPECT_EQ(namesIn(table), list);
}

TEST(MemberTable, givesRemovedPlacesUp) {
    MemberTable table;
    for (int round = 0; round < 100'000; ++round) {
        ASSERT_NE(table.append("script.xml", Member::noOrigin), nullptr);
        table.remove(table.find("script.xml"));
    }
    EXPECT_EQ(table.count(), 0u);
    EXPECT_LT(table.places(), 100u);
}

}  // namespace
