#include "tools/tar/extended_header.h"

#include <gtest/gtest.h>

#include "tests/tools/tar/refusal.h"

namespace {

using testing::refusalOf;

tar::Overrides read(std::string_view records) {
    tar::Overrides overrides;
    overrides.read(records);
    return overrides;
}

TEST(ExtendedHeader, isAListOfRecords) {
    const tar::Overrides overrides =
        read("14 path=a/b c\n13 comment=x\n16 linkpath=d=e\n11 size=17\n17 mtime=1000.25\n");
    EXPECT_EQ(overrides.name, "a/b c");
    EXPECT_EQ(overrides.link, "d=e");
    EXPECT_EQ(overrides.size, 17u);
    ASSERT_TRUE(overrides.time && *overrides.time);
    EXPECT_EQ((*overrides.time)->seconds, 1000);
    EXPECT_EQ((*overrides.time)->nanoseconds, 250'000'000);
}

TEST(ExtendedHeader, mayHoldLineFeedsInValues) {
    EXPECT_EQ(read("12 path=a\nb\n").name, "a\nb");
}

TEST(ExtendedHeader, takesBackWhatHasNoValue) {
    tar::Overrides overrides = read("10 path=a\n10 size=1\n");
    overrides.read("8 path=\n");
    tar::Member member;
    member.name = "plain";
    overrides.apply(member);
    EXPECT_EQ(member.name, "plain");
    EXPECT_EQ(member.size, 1u);
}

TEST(ExtendedHeader, countsFractionsBefore1970Forwards) {
    const os::Time time = **read("15 mtime=-1.25\n").time;
    EXPECT_EQ(time.seconds, -2);
    EXPECT_EQ(time.nanoseconds, 750'000'000);
    const os::Time fine = **read("25 mtime=5.1234567899999\n").time;
    EXPECT_EQ(fine.nanoseconds, 123'456'789);
    EXPECT_EQ(read("11 mtime=7\n").time.value()->nanoseconds, 0);
}

TEST(ExtendedHeader, overridesThePlainOne) {
    tar::Member member;
    member.name = "plain";
    member.size = 1;
    read("10 path=a\n").apply(member);
    EXPECT_EQ(member.name, "a");
    EXPECT_EQ(member.size, 1u);
    read("11 path=a/\n").apply(member);
    EXPECT_EQ(member.kind, tar::Kind::directory);
}

TEST(ExtendedHeader, isRefusedWhenItIsMalformed) {
    const auto refusal = [](std::string_view records) { return refusalOf([&] { read(records); }); };
    const std::string start = "an extended header with ";
    EXPECT_EQ(refusal("path=a\n"), start + "a record without length");
    EXPECT_EQ(refusal("99999999999999999999999 path=a\n"), start + "a record without length");
    EXPECT_EQ(refusal("11 path=a\n"), start + "a record of wrong length");
    EXPECT_EQ(refusal("8 path=a\n"), start + "a record of wrong length");
    EXPECT_EQ(refusal("0 path=a\n"), start + "a record of wrong length");
    EXPECT_EQ(refusal("2 path=a\n"), start + "a record of wrong length");
    EXPECT_EQ(refusal("3 \n"), start + "a record that is none");
    EXPECT_EQ(refusal("7 path\n"), start + "a record that is none");
    EXPECT_EQ(refusal("10 size=x\n"), start + "a size that is none");
    EXPECT_EQ(refusal("11 size=-1\n"), start + "a size that is none");
    EXPECT_EQ(refusal("11 size=1x\n"), start + "a size that is none");
    EXPECT_EQ(refusal("11 mtime=x\n"), start + "a time that is none");
    EXPECT_EQ(refusal("13 mtime=1.x\n"), start + "a time that is none");
    EXPECT_EQ(refusal(std::string_view("12 path=a\0b\n", 12)), start + "a name that holds a zero byte");
}

TEST(ExtendedHeader, ofAFileWithHolesIsRefused) {
    EXPECT_EQ(refusalOf([] { read("22 GNU.sparse.major=1\n"); }),
              "a file with holes, which this tar cannot unpack");
}

}  // namespace
