#include "platform/base/failure.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(Failure, leavesItsDetailForItsStatusAlone) {
    EXPECT_EQ(failure::record(zStatus_Malformed, "cfg.xml:12:5: </Path> closes <path>"), zStatus_Malformed);
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), "cfg.xml:12:5: </Path> closes <path>");
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), "");
    EXPECT_EQ(failure::detailOf(zStatus_Success), "");
}

TEST(Failure, overwritesTheOneBefore) {
    static_cast<void>(failure::record(zStatus_Malformed, "a long detail of the first failure"));
    static_cast<void>(failure::record(zStatus_Malformed, "the second"));
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), "the second");
    static_cast<void>(failure::record(zStatus_NotFound, "the third"));
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), "");
}

TEST(Failure, ofTheSystemNamesSubjectAndReason) {
    EXPECT_EQ(failure::record(std::make_error_code(std::errc::no_such_file_or_directory), "a.pkg"),
              zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), "a.pkg: No such file or directory");
    EXPECT_EQ(failure::record(std::make_error_code(std::errc::not_a_directory), "a/b"), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), "a/b: Not a directory");
    EXPECT_EQ(failure::record(std::make_error_code(std::errc::permission_denied), "a.pkg"), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), "a.pkg: Permission denied");
}

TEST(Failure, takesAContextInFront) {
    static_cast<void>(failure::record(zStatus_Malformed, "12:5: </Path> closes <path>"));
    EXPECT_EQ(failure::within("script.xml:", zStatus_Malformed), zStatus_Malformed);
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), "script.xml:12:5: </Path> closes <path>");
}

TEST(Failure, keepsAForeignContextAway) {
    static_cast<void>(failure::record(zStatus_Malformed, "detail"));
    EXPECT_EQ(failure::within("other: ", zStatus_NotFound), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), "detail");
}

TEST(Failure, cutsADetailThatIsTooLong) {
    const std::string detail(5000, 'd');
    static_cast<void>(failure::record(zStatus_Malformed, detail));
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), detail.substr(0, 2048));
    EXPECT_EQ(failure::within("context: ", zStatus_Malformed), zStatus_Malformed);
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), "context: " + detail.substr(0, 2039));
}

TEST(Guarded, answersWhatTheOperationAnswers) {
    EXPECT_EQ(failure::guarded([] { return zStatus_Success; }), zStatus_Success);
    EXPECT_EQ(failure::guarded([] { return zStatus_NotFound; }), zStatus_NotFound);
}

TEST(Guarded, turnsExhaustedMemoryIntoAStatus) {
    static_cast<void>(failure::record(zStatus_NoMemory, "stale"));
    EXPECT_EQ(failure::guarded([]() -> zStatus { throw std::bad_alloc(); }), zStatus_NoMemory);
    EXPECT_EQ(failure::detailOf(zStatus_NoMemory), "");
    EXPECT_EQ(failure::guarded([]() -> zStatus { throw std::length_error("too long"); }), zStatus_NoMemory);
}

TEST(Failure, contextOfASuccessIsNotKept) {
    static_cast<void>(failure::record(zStatus_Success, ""));
    EXPECT_EQ(failure::within("script.xml:", zStatus_Success), zStatus_Success);
    EXPECT_EQ(failure::detailOf(zStatus_Success), "");
}

}  // namespace
