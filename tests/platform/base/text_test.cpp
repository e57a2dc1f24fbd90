#include "platform/base/text.h"

#include <gtest/gtest.h>

namespace {

TEST(StrCopy, cutsWhatDoesNotFit) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zStrCopy(buffer, sizeof buffer, "abcdef"), zStatus_Success);
    EXPECT_STREQ(buffer, "abc");
}

TEST(StrPrintf, leavesTheBufferEmptyWhenTheResultDoesNotFit) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zStrPrintf(buffer, sizeof buffer, "%s", "abcd"), zStatus_DoesNotFit);
    EXPECT_STREQ(buffer, "");
}

}  // namespace
