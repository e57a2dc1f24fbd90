#include "TaVekInspect/model/utf8.h"

#include <gtest/gtest.h>

namespace {

TEST(Utf8, wellFormedTextStaysAsItIs) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_TRUE(isUtf8(text));
    EXPECT_EQ(validUtf8(text), text);
}

TEST(Utf8, everyByteThatBelongsToNoCharacterIsReplaced) {
    const std::string mark = "\xEF\xBF\xBD";
    EXPECT_EQ(validUtf8("a\xFFz"), "a" + mark + "z");
    EXPECT_EQ(validUtf8("\xC3"), mark);
    EXPECT_EQ(validUtf8("\xE2\x82"), mark + mark);
}

TEST(Utf8, overlongFormsSurrogatesAndWhatIsBeyondAreNone) {
    for (const char* text : {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                             "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80"}) {
        EXPECT_FALSE(isUtf8(text));
    }
    for (const char* text : {"\xE0\xA0\x80", "\xED\x9F\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(isUtf8(text));
    }
}

}  // namespace
