// The program as a whole; its main is called programMain here.

#include <gmock/gmock.h>

#include <cstdio>

#include "platform/base/exception.h"
#include "platform/base/log.h"
#include "tests/testing/platform_faults.h"

int programMain(int count, char** words);

// Takes the place of os::commandLine, which on Windows asks the system and not main for the words.
std::vector<std::string> wordsOfMain(int count,
                                     char** words) __asm__("__wrap__ZN2os11commandLineB5cxx11EiPPc");
std::vector<std::string> wordsOfMain(int count, char** words) {
    return {words, words + count};
}

namespace {

using testing::StartsWith;

int run(std::vector<std::string> words) {
    std::vector<char*> list;
    for (std::string& word : words) list.push_back(word.data());
    return programMain(static_cast<int>(list.size()), list.data());
}

/// What a log entry prints once the program has run with `words`.
std::string loggedAfterwards(const std::vector<std::string>& words) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run(words);
    std::fflush(stdout);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    testing::internal::CaptureStdout();
    zLog_Write("an entry");
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

TEST(Main, switchesLeakLoggingOn) {
    zApiLib_EnableLeakLogging(0);
    EXPECT_EQ(loggedAfterwards({"TaVekUtil", "--archive", "none", "--manifest", "none"}), "");
    EXPECT_TRUE(zApiLib_LeakLoggingEnabled());
}

// Each run that leaves its handler behind gives one line more.
TEST(Main, takesItsLogHandlerAwayAfterAModeAlone) {
    EXPECT_EQ(loggedAfterwards({"TaVekUtil", "--config", "/none.xml"}), "");
    EXPECT_EQ(loggedAfterwards({"TaVekUtil", "--file", "none", "--archive", "none"}), "");
    EXPECT_EQ(loggedAfterwards({"TaVekUtil", "--help"}), "an entry\n");
    EXPECT_EQ(loggedAfterwards({"TaVekUtil"}), "an entry\nan entry\n");
    EXPECT_EQ(loggedAfterwards({"TaVekUtil", "-v"}), "an entry\nan entry\nan entry\n");
    EXPECT_EQ(loggedAfterwards({"TaVekUtil", "stray"}), "an entry\nan entry\nan entry\nan entry\n");
}

TEST(Main, endsAbnormallyWithoutAWordWhenThereIsNoArchiveLibrary) {
    // What leaves this leaves main: nobody catches it.
    const auto start = []() noexcept {
        const testing::Fault fault("zTdLib_Construct", zStatus_NoMemory);
        run({"TaVekUtil", "--help"});
    };
    EXPECT_DEATH(start(), testing::Eq(""));
}

TEST(Main, raisesALocatedExceptionForThat) {
    const testing::Fault fault("zTdLib_Construct", zStatus_NoMemory);
    try {
        run({"TaVekUtil", "--help"});
        FAIL() << "nothing was raised";
    } catch (const Ta::Exception& exception) {
        EXPECT_EQ(exception.line(), 1351);
        EXPECT_EQ(exception.operation(), "main");
        EXPECT_EQ(exception.status(), zStatus_NoMemory);
        EXPECT_THAT(exception.what(), StartsWith("main: "));
    }
}

}  // namespace
