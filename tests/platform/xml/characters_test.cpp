// Characters and names, each compared with the productions of XML 1.0 (fifth edition) over all of Unicode.

#include "platform/xml/characters.h"

#include <gtest/gtest.h>

namespace {

using namespace xml;

bool isChar(char32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

/// NameStartChar as the recommendation prints it.
bool isStart(char32_t c) {
    return c == ':' || (c >= 'A' && c <= 'Z') || c == '_' || (c >= 'a' && c <= 'z') ||
           (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF) ||
           (c >= 0x370 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) || (c >= 0x200C && c <= 0x200D) ||
           (c >= 0x2070 && c <= 0x218F) || (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) ||
           (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0xEFFFF);
}

bool isNameChar(char32_t c) {
    return isStart(c) || c == '-' || c == '.' || (c >= '0' && c <= '9') || c == 0xB7 ||
           (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

// Millions of comparisons: told to the framework only when one fails.
TEST(Characters, areThoseOfTheRecommendation) {
    for (char32_t c = 0; c <= 0x110000; ++c) {
        if (isCharacter(c) != isChar(c) || isNameStart(c) != isStart(c) ||
            isNameCharacter(c) != isNameChar(c))
            FAIL() << codePoint(c);
    }
}

TEST(Characters, areWrittenAndReadAsUtf8) {
    for (char32_t c = 1; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        std::string text;
        appendUtf8(text, c);
        char32_t read = 0;
        const std::size_t size = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
        if (text.size() != size || decode(text.c_str(), read) != size || read != c) FAIL() << codePoint(c);
    }
}

TEST(Characters, areNoneWhereBytesAreNoUtf8) {
    const char* const broken[] = {
        "\x80",
        "\xBF",
        "\xC0\x80",
        "\xC1\xBF",
        "\xC2",
        "\xC2\x41",
        "\xC2\xC2",
        "\xE0\x80\x80",
        "\xE0\x9F\xBF",
        "\xE2\x82",
        "\xE2\x41\x80",
        "\xED\xA0\x80",
        "\xED\xBF\xBF",
        "\xF0\x80\x80\x80",
        "\xF0\x8F\xBF\xBF",
        "\xF0\x9F\x98",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xFE",
        "\xFF",
    };
    char32_t character = 0;
    for (const char* text : broken) EXPECT_EQ(decode(text, character), 0u) << testing::PrintToString(text);
}

TEST(Names, endWhereTheyEnd) {
    const std::string text = "a\xC3\xA9-1\xC2\xB7 b";
    EXPECT_EQ(nameEnd(text.c_str()) - text.c_str(), 7);
    const char* none = "-a";
    EXPECT_EQ(nameEnd(none), none);
    EXPECT_TRUE(isName("a"));
    EXPECT_TRUE(isName("\xF0\x90\x80\x80"));
    EXPECT_TRUE(isName("a\xCC\x80"));
    EXPECT_FALSE(isName(""));
    EXPECT_FALSE(isName("a b"));
    EXPECT_FALSE(isName("1a"));
    EXPECT_FALSE(isName("\xCC\x80")) << "a combining accent begins nothing";
    EXPECT_FALSE(isName("a\xC3\x97")) << "a multiplication sign";
    EXPECT_FALSE(isName("a\xFF"));
}

TEST(Blank, isWhiteSpaceAlone) {
    EXPECT_TRUE(isBlank(""));
    EXPECT_TRUE(isBlank(" \t\r\n"));
    EXPECT_FALSE(isBlank(" x "));
    EXPECT_FALSE(isBlank("\xC2\xA0")) << "a no-break space";
}

TEST(CodePoint, isNamedInHexadecimal) {
    EXPECT_EQ(codePoint(0xC), "U+000C");
    EXPECT_EQ(codePoint(0xFFFE), "U+FFFE");
    EXPECT_EQ(codePoint(0x10FFFF), "U+10FFFF");
}

}  // namespace
