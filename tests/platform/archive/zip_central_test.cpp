#include "platform/archive/zip_central.h"

#include <gtest/gtest.h>

#include "tests/platform/archive/zip_image.h"

// Central headers that are to point beyond 4 GiB, which need no archive of that size here.

namespace {

using namespace testing;

constexpr std::uint64_t far = 0x1'2345'6789;

/// The header of `member` after moving; empty when there is no room.
std::string moved(const ZipMember& member, std::uint64_t offset) {
    const std::string before = member.centralRecord(1000);
    std::vector<std::uint8_t> header(before.begin(), before.end());
    const std::size_t extraBegin = zip::central::fixedSize + member.central.name.size();
    zip::ExtraField field;
    EXPECT_EQ(zip::parseExtra(std::span(header).subspan(extraBegin, member.central.extra.size()), field),
              nullptr);
    if (!zip::moveCentral(header, field, offset)) return {};
    return {header.begin(), header.end()};
}

class MoveCentral : public testing::Test {
  protected:
    ZipMember before = stored("name", "content");
    ZipMember after = before;
    const std::string other = extraRecord(0x5455, "time");
    void SetUp() override {
        before.comment = after.comment = "comment";
        before.central.needed = after.central.needed = 10;
    }
    /// What `after` looks like once it points beyond 4 GiB with `extra`.
    void expectWide(const std::string& extra, std::uint64_t offset = far) {
        after.central.extra = extra;
        after.offset = allOnes32;
        after.central.needed = 45;
        EXPECT_EQ(moved(before, offset), after.centralRecord(0));
    }
};

TEST_F(MoveCentral, changesAPlainOffset) {
    before.central.extra = after.central.extra = other;
    for (const std::uint64_t offset : {std::uint64_t{0}, std::uint64_t{1}, allOnes32 - 1}) {
        EXPECT_EQ(moved(before, offset), after.centralRecord(offset));
    }
}

TEST_F(MoveCentral, addsARecordInFrontOfTheOthers) {
    expectWide(extraRecord(zip64Id, number(far, 8)));
    before.central.extra = other + std::string(2, '\0');
    expectWide(extraRecord(zip64Id, number(far, 8)) + other + std::string(2, '\0'));
}

TEST_F(MoveCentral, takesTheMarkItselfForAnOffsetThatDoesNotFit) {
    expectWide(extraRecord(zip64Id, number(allOnes32, 8)), allOnes32);
}

TEST_F(MoveCentral, changesTheOffsetInARecord) {
    before.central.size = after.central.size = allOnes32;
    before.offset = after.offset = allOnes32;
    before.central.extra = other + extraRecord(zip64Id, number(7, 8) + number(1, 8)) + other;
    after.central.extra = other + extraRecord(zip64Id, number(7, 8) + number(far, 8)) + other;
    EXPECT_EQ(moved(before, far), after.centralRecord(0));
    // The offset keeps its place in the record when it would fit the plain field now.
    after.central.extra = other + extraRecord(zip64Id, number(7, 8) + number(5, 8)) + other;
    EXPECT_EQ(moved(before, 5), after.centralRecord(0));
}

TEST_F(MoveCentral, makesARecordLonger) {
    before.central.size = after.central.size = allOnes32;
    before.central.compressedSize = after.central.compressedSize = allOnes32;
    before.central.extra = other + extraRecord(zip64Id, number(7, 8) + number(8, 8)) + other;
    expectWide(other + extraRecord(zip64Id, number(7, 8) + number(8, 8) + number(far, 8)) + other);
}

TEST_F(MoveCentral, keepsTheDiskBehindTheOffset) {
    before.disk = after.disk = allOnes16;
    before.central.extra = extraRecord(zip64Id, number(0, 4));
    expectWide(extraRecord(zip64Id, number(far, 8) + number(0, 4)));
}

TEST_F(MoveCentral, givesAPlainSizeThatEqualsTheMarkItsValueInANewRecord) {
    before.central.size = after.central.size = allOnes32;
    expectWide(extraRecord(zip64Id, number(allOnes32, 8) + number(far, 8)));
}

TEST_F(MoveCentral, leavesANewerVersionNeeded) {
    before.central.needed = 63;
    after.central.extra = extraRecord(zip64Id, number(far, 8));
    after.offset = allOnes32;
    after.central.needed = 63;
    EXPECT_EQ(moved(before, far), after.centralRecord(0));
}

TEST_F(MoveCentral, fillsTheExtraFieldToItsLimitButNotBeyond) {
    before.central.extra = extraRecord(7, std::string(65'535 - 12 - 4, 'x'));
    expectWide(extraRecord(zip64Id, number(far, 8)) + before.central.extra);
    before.central.extra = extraRecord(7, std::string(65'535 - 12 - 4 + 1, 'x'));
    EXPECT_EQ(moved(before, far), "");
    EXPECT_NE(moved(before, 5), "");
}

}  // namespace
