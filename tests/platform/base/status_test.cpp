#include "platform/base/status.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace {

TEST(Status, hasItsFixedNumbers) {
    EXPECT_EQ(static_cast<int>(zStatus_Success), 1);
    EXPECT_EQ(static_cast<int>(zStatus_Failure), 0);
    EXPECT_EQ(static_cast<int>(zStatus_NotFound), -999);
    EXPECT_EQ(static_cast<int>(zStatus_Unestablished), -984);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<zStatus>, std::int32_t>));
}

TEST(StatusPhrase, isEnglish) {
    EXPECT_STREQ(zStatus_Phrase(zStatus_Success), "success");
    EXPECT_STREQ(zStatus_Phrase(zStatus_Failure), "failure");
    EXPECT_STREQ(zStatus_Phrase(zStatus_NotFound), "not found");
    EXPECT_STREQ(zStatus_Phrase(zStatus_Unestablished), "cannot be established");
    EXPECT_STREQ(zStatus_Phrase(zStatus_IoError), "input/output error");
    EXPECT_STREQ(zStatus_Phrase(zStatus_NoMemory), "out of memory");
    EXPECT_STREQ(zStatus_Phrase(zStatus_BadArgument), "invalid argument");
    EXPECT_STREQ(zStatus_Phrase(zStatus_Malformed), "malformed input");
    EXPECT_STREQ(zStatus_Phrase(zStatus_DoesNotFit), "does not fit");
    EXPECT_STREQ(zStatus_Phrase(zStatus_Unsupported), "not supported");
}

TEST(StatusPhrase, isThereForAnyNumber) {
    EXPECT_STREQ(zStatus_Phrase(static_cast<zStatus>(2)), "unknown status");
    EXPECT_STREQ(zStatus_Phrase(static_cast<zStatus>(-2147483647 - 1)), "unknown status");
}

}  // namespace
