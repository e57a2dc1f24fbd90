#include "TaVekInspect/render/text.h"

#include <gtest/gtest.h>

namespace {

TEST(Text, sizes) {
    EXPECT_EQ(sizeText(0), "0 bytes");
    EXPECT_EQ(sizeText(1), "1 byte");
    EXPECT_EQ(sizeText(1023), "1023 bytes");
    EXPECT_EQ(sizeText(1024), "1.0 KiB");
    EXPECT_EQ(sizeText(1024 * 1024 - 1), "1.0 MiB");
    EXPECT_EQ(sizeText(1024 * 1024), "1.0 MiB");
    EXPECT_EQ(sizeText(3 * 1024ull * 1024 * 1024 / 2), "1.5 GiB");
    EXPECT_EQ(sizeText(18446744073709551615u), "16.0 EiB");
}

TEST(Text, counts) {
    EXPECT_EQ(counted(1, "member"), "1 member");
    EXPECT_EQ(counted(0, "member"), "0 members");
    EXPECT_EQ(counted(2, "entry"), "2 entries");
}

TEST(Text, methodsTimesAndChecksums) {
    zMemberInfo member;
    EXPECT_EQ(methodText(member), "stored");
    member.method = 8;
    member.encrypted = true;
    EXPECT_EQ(methodText(member), "deflated, encrypted");
    member.method = 14;
    EXPECT_EQ(methodText(member), "method 14, encrypted");
    EXPECT_EQ(timeText({2024, 6, 9, 3, 4, 58}), "2024-06-09 03:04:58");
    EXPECT_EQ(crcText(0xABC), "00000abc");
}

TEST(Text, oneLineAndWidth) {
    EXPECT_EQ(printable("a\n\x1B\x7F é"), "a??? é");
    EXPECT_EQ(printable("\xC2\x80-\xC2\x9B-\xC2\x9F\xC2\xA0\xC3\x9B\xC2"), "?-?-?\xC2\xA0\xC3\x9B\xC2");
    EXPECT_EQ(printable("a\tb\x1B", "\t"), "a\tb?");
    for (const char* turning : {"\xE2\x80\xAA", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9"}) {
        EXPECT_EQ(printable(std::string("a") + turning + "b"), "a?b");
    }
    for (const char* other :
         {"\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\xA5", "\xE2\x81\xAA", "\xE2\x82\xAC"}) {
        EXPECT_EQ(printable(other), other);
    }
    EXPECT_EQ(widthOf("aé€😀"), 4u);
    EXPECT_EQ(joined({"a", "b"}), "a, b");
    EXPECT_EQ(joined({}), "");
}

}  // namespace
