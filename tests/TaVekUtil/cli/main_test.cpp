// The program as a whole; its main is called programMain here.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdio>

#include "platform/base/exception.h"
#include "platform/base/log.h"
#include "platform/xml/xml.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/platform_faults.h"

int programMain(int count, char** words);

// Takes the place of os::commandLine, which on Windows asks the system and not main for the words.
std::vector<std::string> wordsOfMain(int count,
                                     char** words) __asm__("__wrap__ZN2os11commandLineB5cxx11EiPPc");
std::vector<std::string> wordsOfMain(int count, char** words) {
    return {words, words + count};
}

namespace {

using testing::CapturedOutput;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

int run(std::vector<std::string> words) {
    std::vector<char*> list;
    for (std::string& word : words) list.push_back(word.data());
    return programMain(static_cast<int>(list.size()), list.data());
}

/// What the program prints to standard output when run with `words`.
std::string printed(const std::vector<std::string>& words) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run(words);
    std::fflush(stdout);
    testing::internal::GetCapturedStderr();
    return testing::internal::GetCapturedStdout();
}

/// What a log entry prints.
std::string logged() {
    testing::internal::CaptureStdout();
    zLog_Write("an entry");
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

/// What a log entry prints once the program has run with `words`.
std::string loggedAfterwards(const std::vector<std::string>& words) {
    printed(words);
    return logged();
}

/// Every object that is alive, as a leak report names it.
std::vector<std::string> leaked() {
    std::vector<std::string> entries;
    const zLogHandler note = [](void* receiver, const zLogEntry* entry) {
        static_cast<std::vector<std::string>*>(receiver)->push_back(entry->message);
        return zStatus_Success;
    };
    EXPECT_EQ(zApiLib_AddLogHandler(note, &entries), zStatus_Success);
    testing::internal::CaptureStdout();  // the handlers that runs have left speak, too
    zObject_ReportLeaks();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(zApiLib_RemoveLogHandler(note, &entries), zStatus_Success);
    return entries;
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

TEST(Main, flushesEachLogEntry) {
    printed({"TaVekUtil", "--help"});
    testing::internal::CaptureStdout();
    zLog_Write("an entry");
    struct stat written {};
    EXPECT_EQ(::fstat(::fileno(stdout), &written), 0);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), StartsWith("an entry\n"));
    EXPECT_GT(written.st_size, 0) << "reading the output back flushes it as well";
}

TEST(Main, destroysTheLibraryOnEveryWay) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"TaVekUtil"},
                                                  {"TaVekUtil", "--help"},
                                                  {"TaVekUtil", "-v"},
                                                  {"TaVekUtil", "stray"},
                                                  {"TaVekUtil", "--config", "c", "--platform", "none"},
                                                  {"TaVekUtil", "--config", "/none.xml"},
                                                  {"TaVekUtil", "--file", "none", "--archive", "none"},
                                                  {"TaVekUtil", "--manifest", "none", "--archive", "none"}}) {
        printed(words);
        EXPECT_THAT(leaked(), IsEmpty()) << testing::PrintToString(words);
    }
}

// The library reports leaks when it goes, to whatever handler is there then.
TEST(Main, takesItsLogHandlerAwayBeforeTheLibrary) {
    Ta::Object<void*> document;
    ASSERT_EQ(zXml_Construct(document.out(), nullptr), zStatus_Success);
    ASSERT_THAT(leaked(), ElementsAre("leaked object: XML document"));
    const auto entriesOf = [](const std::string& output) {
        std::size_t count = 0;
        for (std::size_t at = 0; (at = output.find("leaked object: XML document\n", at)) != output.npos; ++at)
            ++count;
        return count;
    };
    const std::size_t before = entriesOf(printed({"TaVekUtil", "--file", "none", "--archive", "none"}));
    EXPECT_EQ(entriesOf(printed({"TaVekUtil", "--help"})), before + 1) << "there its handler stays";
    EXPECT_EQ(entriesOf(printed({"TaVekUtil", "--file", "none", "--archive", "none"})), before + 1);
}

TEST(Main, tellsAMissingValueBeforeTheUsage) {
    const CapturedOutput output;
    EXPECT_EQ(run({"TaVekUtil", "--config", "c.xml", "-v"}), 1);
    EXPECT_EQ(output.lines()[0], "err: ERROR: No arguments specified with flag '-v'");
    EXPECT_EQ(output.err(), "ERROR: No arguments specified with flag '-v'\n");
    EXPECT_THAT(output.out(), StartsWith("Usage: \n"));
}

TEST(Main, endsAbnormallyWithoutAWordWhenThereIsNoArchiveLibrary) {
    // What leaves this leaves main: nobody catches it.
    const auto start = []() noexcept {
        const testing::Fault fault("zTdLib_Construct", zStatus_NoMemory);
        run({"TaVekUtil", "--help"});
    };
    EXPECT_DEATH(start(), testing::Eq(""));
}

TEST(Main, endsAbnormallyWhenAModeRunsOutOfMemory) {
    const auto start = []() noexcept {
        const testing::Fault shortage("zDirectory_Application", std::bad_alloc());
        run({"TaVekUtil", "--config", "none.xml"});
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
        EXPECT_STREQ(exception.what(),
                     "main: planned by the test (out of memory, status -12, TaVekUtil:1351)");
    }
}

TEST(Main, setsLoggingUpBeforeTheLibrary) {
    const std::string before = logged();
    zApiLib_EnableLeakLogging(0);
    const testing::Fault fault("zTdLib_Construct", zStatus_NoMemory);
    EXPECT_THROW(run({"TaVekUtil", "--help"}), Ta::Exception);
    EXPECT_TRUE(zApiLib_LeakLoggingEnabled());
    EXPECT_EQ(logged(), before + "an entry\n");
}

}  // namespace
