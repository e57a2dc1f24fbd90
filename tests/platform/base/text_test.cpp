#include "platform/base/text.h"

#include <gtest/gtest.h>

#include "platform/base/failure.h"

namespace {

TEST(StrCopy, copiesWhatFits) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zStrCopy(buffer, sizeof buffer, "abc"), zStatus_Success);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(zStrCopy(buffer, sizeof buffer, ""), zStatus_Success);
    EXPECT_STREQ(buffer, "");
}

TEST(StrCopy, cutsWhatDoesNotFit) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zStrCopy(buffer, sizeof buffer, "abcdef"), zStatus_Success);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(zStrCopy(buffer, 1, "abcdef"), zStatus_Success);
    EXPECT_STREQ(buffer, "");
}

TEST(StrCopy, writesNothingBehindTheText) {
    char buffer[8] = "xxxxxxx";
    EXPECT_EQ(zStrCopy(buffer, 4, "abcdef"), zStatus_Success);
    EXPECT_EQ(std::string(buffer, 8), std::string("abc\0xxx\0", 8));
}

TEST(StrCopy, worksInPlace) {
    char buffer[8] = "abcdef";
    EXPECT_EQ(zStrCopy(buffer, sizeof buffer, buffer + 2), zStatus_Success);
    EXPECT_STREQ(buffer, "cdef");
}

TEST(StrCopy, refusesABufferWithoutRoom) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zStrCopy(buffer, 0, "abc"), zStatus_BadArgument);
    EXPECT_STREQ(buffer, "xyz");
    EXPECT_EQ(zStrCopy(nullptr, 4, "abc"), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the buffer has no room for a text");
}

TEST(StrEquals, isExact) {
    EXPECT_TRUE(zStrEquals("win", "win"));
    EXPECT_TRUE(zStrEquals("", ""));
    EXPECT_FALSE(zStrEquals("win", "Win"));
    EXPECT_FALSE(zStrEquals("win", "win32"));
    EXPECT_FALSE(zStrEquals("win", ""));
}

TEST(StrCompare, ordersByByteValue) {
    EXPECT_EQ(zStrCompare("abc", "abc"), 0);
    EXPECT_LT(zStrCompare("abc", "abd"), 0);
    EXPECT_GT(zStrCompare("abd", "abc"), 0);
    EXPECT_LT(zStrCompare("ab", "abc"), 0);
    EXPECT_LT(zStrCompare("B", "a"), 0);
    EXPECT_LT(zStrCompare("z", "\xC3\xA4"), 0) << "bytes have no sign";
}

TEST(StrCompareLower, ignoresTheCaseOfAsciiLetters) {
    EXPECT_EQ(zStrCompareLower("Resource", "rESOURCE"), 0);
    EXPECT_LT(zStrCompareLower("ABC", "abd"), 0);
    EXPECT_GT(zStrCompareLower("abd", "ABC"), 0);
    EXPECT_LT(zStrCompareLower("ab", "ABC"), 0);
    EXPECT_GT(zStrCompareLower("ABC", "ab"), 0);
    EXPECT_EQ(zStrCompareLower("", ""), 0);
}

TEST(StrCompareLower, leavesAllOtherCharactersApart) {
    EXPECT_NE(zStrCompareLower("@", "`"), 0);
    EXPECT_NE(zStrCompareLower("[", "{"), 0);
    EXPECT_NE(zStrCompareLower("\xC4", "\xE4"), 0) << "an umlaut of ISO-8859-1";
    EXPECT_LT(zStrCompareLower("z", "\xC3\xA4"), 0) << "bytes have no sign";
}

TEST(StrCompareN, comparesSoMuchAndNoMore) {
    EXPECT_EQ(zStrCompareN("abcdef", "abcxyz", 3), 0);
    EXPECT_LT(zStrCompareN("abcdef", "abcxyz", 4), 0);
    EXPECT_EQ(zStrCompareN("abc", "xyz", 0), 0);
    EXPECT_EQ(zStrCompareN("abc", "abc", 100), 0);
    EXPECT_NE(zStrCompareN("ab", "abc", 3), 0);
    EXPECT_NE(zStrCompareN("abc", "ABC", 3), 0);
}

TEST(StrLength, countsBytes) {
    EXPECT_EQ(zStrLength(""), 0u);
    EXPECT_EQ(zStrLength("abc"), 3u);
    EXPECT_EQ(zStrLength("ä"), 2u);
}

TEST(StrPrintf, formats) {
    char buffer[32] = "";
    EXPECT_EQ(zStrPrintf(buffer, sizeof buffer, "%s-%s.%d%%", "out", "a", 7), zStatus_Success);
    EXPECT_STREQ(buffer, "out-a.7%");
    EXPECT_EQ(zStrPrintf(buffer, sizeof buffer, "%s", ""), zStatus_Success);
    EXPECT_STREQ(buffer, "");
}

TEST(StrPrintf, fillsTheBufferToTheLastCharacter) {
    char buffer[4] = "";
    EXPECT_EQ(zStrPrintf(buffer, sizeof buffer, "%s", "abc"), zStatus_Success);
    EXPECT_STREQ(buffer, "abc");
}

TEST(StrPrintf, leavesTheBufferEmptyWhenTheResultDoesNotFit) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zStrPrintf(buffer, sizeof buffer, "%s", "abcd"), zStatus_DoesNotFit);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(failure::detailOf(zStatus_DoesNotFit), "the text needs 4 characters, 3 are allowed");
}

TEST(StrPrintf, refusesABufferWithoutRoom) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zStrPrintf(buffer, 0, "%s", "a"), zStatus_BadArgument);
    EXPECT_STREQ(buffer, "xyz");
    EXPECT_EQ(zStrPrintf(nullptr, 4, "%s", "a"), zStatus_BadArgument);
}

TEST(Text, isEmptyAtBirthAndKnowsItsCapacity) {
    Ta::ShortText text;
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_EQ(text.capacity(), 32u);
    EXPECT_EQ(Ta::PathText::capacity(), 512u);
    EXPECT_EQ(zStrCopy(text.data(), text.capacity(), "abc"), zStatus_Success);
    EXPECT_FALSE(text.empty());
    EXPECT_STREQ(text.c_str(), "abc");
}

}  // namespace
