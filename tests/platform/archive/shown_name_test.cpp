#include "platform/archive/shown_name.h"

#include <gtest/gtest.h>

TEST(ShownName, isTheNameItself) {
    EXPECT_EQ(shownName(""), "");
    EXPECT_EQ(shownName("data/12345-lib foo.so"), "data/12345-lib foo.so");
    EXPECT_EQ(shownName("gr\xC3\xB6\xC3\x9F"
                        "e"),
              "gr\xC3\xB6\xC3\x9F"
              "e");
}

TEST(ShownName, staysOnOneLineAndSendsATerminalNothing) {
    EXPECT_EQ(shownName(std::string("a\nb\rc\td\0e\x1B[31mf\x7Fg", 17)), "a?b?c?d?e?[31mf?g");
}

TEST(ShownName, isCutWhenItIsVeryLong) {
    EXPECT_EQ(shownName(std::string(512, 'x')), std::string(512, 'x'));
    EXPECT_EQ(shownName(std::string(513, 'x')), std::string(512, 'x') + "...");
    EXPECT_EQ(shownName(std::string(65'535, 'x')).size(), 515u);
}
