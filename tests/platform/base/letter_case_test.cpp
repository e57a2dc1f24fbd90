#include "platform/base/letter_case.h"

#include <gtest/gtest.h>

#include "platform/base/text.h"

namespace {

TEST(LetterCase, changesAsciiLettersAlone) {
    EXPECT_EQ(Ta::lowerCase("AZ@[az 09ÄÖ"), "az@[az 09ÄÖ");
    EXPECT_EQ(Ta::lowerCase(""), "");
}

TEST(LetterCase, makesEqualWhatComparesEqualWithoutIt) {
    for (int one = 1; one < 256; ++one) {
        for (int other = 1; other < 256; ++other) {
            const std::string a(1, static_cast<char>(one)), b(1, static_cast<char>(other));
            EXPECT_EQ(Ta::lowerCase(a) == Ta::lowerCase(b), zStrCompareLower(a.c_str(), b.c_str()) == 0);
        }
    }
}

}  // namespace
