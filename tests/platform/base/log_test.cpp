#include "platform/base/log.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

std::vector<std::string> entries;

zStatus note(void* receiver, const zLogEntry* entry) {
    entries.push_back(std::string(receiver == nullptr ? "" : static_cast<const char*>(receiver)) +
                      entry->message);
    return zStatus_Success;
}

zStatus noteLoudly(void*, const zLogEntry* entry) {
    entries.push_back(std::string(entry->message) + '!');
    return zStatus_Failure;
}

zStatus noteOnce(void* receiver, const zLogEntry* entry) {
    static_cast<void>(note(receiver, entry));
    return zApiLib_RemoveLogHandler(noteOnce, receiver);
}

class Log : public testing::Test {
  protected:
    void SetUp() override { entries.clear(); }
};

TEST_F(Log, callsEachHandlerWithItsReceiverInOrder) {
    char receiver[] = "receiver: ";
    ASSERT_EQ(zApiLib_AddLogHandler(noteLoudly, nullptr), zStatus_Success);
    ASSERT_EQ(zApiLib_AddLogHandler(note, receiver), zStatus_Success);
    zLog_Write("entry");
    EXPECT_THAT(entries, ElementsAre("entry!", "receiver: entry"));
    EXPECT_EQ(zApiLib_RemoveLogHandler(noteLoudly, nullptr), zStatus_Success);
    zLog_Write("next");
    EXPECT_THAT(entries, ElementsAre("entry!", "receiver: entry", "receiver: next"));
    EXPECT_EQ(zApiLib_RemoveLogHandler(note, receiver), zStatus_Success);
    zLog_Write("nobody hears this");
    EXPECT_EQ(entries.size(), 3u);
}

TEST_F(Log, removesOneRegistrationOfThePairOnly) {
    char receiver[] = "a: ";
    char other[] = "b: ";
    ASSERT_EQ(zApiLib_AddLogHandler(note, receiver), zStatus_Success);
    ASSERT_EQ(zApiLib_AddLogHandler(note, receiver), zStatus_Success);
    EXPECT_EQ(zApiLib_RemoveLogHandler(note, other), zStatus_NotFound);
    EXPECT_EQ(zApiLib_RemoveLogHandler(noteLoudly, receiver), zStatus_NotFound);
    EXPECT_EQ(zApiLib_RemoveLogHandler(note, receiver), zStatus_Success);
    zLog_Write("x");
    EXPECT_THAT(entries, ElementsAre("a: x"));
    EXPECT_EQ(zApiLib_RemoveLogHandler(note, receiver), zStatus_Success);
    EXPECT_EQ(zApiLib_RemoveLogHandler(note, receiver), zStatus_NotFound);
}

TEST_F(Log, refusesNoHandler) {
    EXPECT_EQ(zApiLib_AddLogHandler(nullptr, nullptr), zStatus_BadArgument);
    zLog_Write("x");
}

TEST_F(Log, endsAnEntryWhereTheMessageEnds) {
    ASSERT_EQ(zApiLib_AddLogHandler(note, nullptr), zStatus_Success);
    zLog_Write(std::string_view("entry and more").substr(0, 5));
    EXPECT_THAT(entries, ElementsAre("entry"));
    EXPECT_EQ(zApiLib_RemoveLogHandler(note, nullptr), zStatus_Success);
}

TEST_F(Log, letsAHandlerTakeItselfBack) {
    ASSERT_EQ(zApiLib_AddLogHandler(noteOnce, nullptr), zStatus_Success);
    ASSERT_EQ(zApiLib_AddLogHandler(noteLoudly, nullptr), zStatus_Success);
    zLog_Write("a");
    zLog_Write("b");
    EXPECT_THAT(entries, ElementsAre("a", "a!", "b!"));
    EXPECT_EQ(zApiLib_RemoveLogHandler(noteLoudly, nullptr), zStatus_Success);
}

TEST_F(Log, hasLeakReportsSwitchedOnAndOff) {
    EXPECT_FALSE(zApiLib_LeakLoggingEnabled());
    zApiLib_EnableLeakLogging(1);
    EXPECT_TRUE(zApiLib_LeakLoggingEnabled());
    zApiLib_EnableLeakLogging(0);
    EXPECT_FALSE(zApiLib_LeakLoggingEnabled());
    zApiLib_EnableLeakLogging(-7);
    EXPECT_TRUE(zApiLib_LeakLoggingEnabled());
    zApiLib_EnableLeakLogging(0);
}

}  // namespace
