#include "platform/base/exception.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "platform/base/failure.h"

namespace {

void forgetDetails() {
    static_cast<void>(failure::record(zStatus_NoMemory, ""));
}

TEST(LocatedException, composesOperationDetailPhraseStatusAndPlace) {
    static_cast<void>(failure::record(zStatus_NotFound, "a.pkg: No such file or directory"));
    const Ta::Exception exception(1351, "TaVekUtil", zStatus_NotFound, "ArchiveExtended::Load", nullptr);
    EXPECT_STREQ(
        exception.what(),
        "ArchiveExtended::Load: a.pkg: No such file or directory (not found, status -999, TaVekUtil:1351)");
    EXPECT_EQ(exception.status(), zStatus_NotFound);
    EXPECT_EQ(exception.line(), 1351);
    EXPECT_EQ(exception.operation(), "ArchiveExtended::Load");
}

TEST(LocatedException, goesWithoutADetailOfItsStatus) {
    forgetDetails();
    static_cast<void>(failure::record(zStatus_Malformed, "of another failure"));
    const Ta::Exception exception(7, "TaVekUtil", zStatus_NotFound, "main", nullptr);
    EXPECT_STREQ(exception.what(), "main (not found, status -999, TaVekUtil:7)");
}

TEST(LocatedException, carriesAStatusThatNobodyKnows) {
    forgetDetails();
    const Ta::Exception exception(7, "TaVekUtil", static_cast<zStatus>(-1234), "main", nullptr);
    EXPECT_STREQ(exception.what(), "main (unknown status, status -1234, TaVekUtil:7)");
    EXPECT_EQ(exception.status(), static_cast<zStatus>(-1234));
}

TEST(LocatedException, hasTheFormattedTextWhenAFormatIsGiven) {
    static_cast<void>(failure::record(zStatus_NotFound, "detail"));
    const Ta::Exception exception(7, "TaVekUtil", zStatus_NotFound, "main", "Package %s not found in %d",
                                  "app", 3);
    EXPECT_STREQ(exception.what(), "Package app not found in 3");
    EXPECT_EQ(exception.status(), zStatus_NotFound);
    EXPECT_EQ(exception.line(), 7);
    const std::string longText(5000, 'x');
    EXPECT_EQ(Ta::Exception(7, "TaVekUtil", zStatus_Failure, "main", "%s", longText.c_str()).what(),
              longText);
}

TEST(FoundException, hasItsMessageAsItStands) {
    const Ta::Exception exception(zStatus_NotFound, "Path not found: 100%s");
    EXPECT_STREQ(exception.what(), "Path not found: 100%s");
    EXPECT_EQ(exception.status(), zStatus_NotFound);
    EXPECT_EQ(exception.line(), 0);
    EXPECT_EQ(exception.operation(), "");
}

TEST(StatusException, hasThePhraseAndTheNumber) {
    static_cast<void>(failure::record(zStatus_Failure, "a detail that is not shown"));
    EXPECT_STREQ(Ta::Exception(zStatus_Failure).what(), "failure (status 0)");
    EXPECT_STREQ(Ta::Exception(zStatus_Unestablished).what(), "cannot be established (status -984)");
    EXPECT_EQ(Ta::Exception(zStatus_Unestablished).status(), zStatus_Unestablished);
}

TEST(MessageException, isAGeneralFailure) {
    const Ta::Exception text("Default Destination for Windows Platform is Not Supported");
    EXPECT_STREQ(text.what(), "Default Destination for Windows Platform is Not Supported");
    EXPECT_EQ(text.status(), zStatus_Failure);
    const Ta::Exception string(std::string("Invalid Archive Path: ") + "a.pkg");
    EXPECT_STREQ(string.what(), "Invalid Archive Path: a.pkg");
    EXPECT_EQ(string.status(), zStatus_Failure);
}

TEST(Exception, isAStandardExceptionThatCanBeCopied) {
    EXPECT_TRUE((std::is_base_of_v<std::exception, Ta::Exception>));
    EXPECT_TRUE(std::has_virtual_destructor_v<Ta::Exception>);
    const Ta::Exception original(7, "TaVekUtil", zStatus_Malformed, "main", "%s", "text");
    const Ta::Exception copy(original);
    EXPECT_STREQ(copy.what(), "text");
    EXPECT_EQ(copy.status(), zStatus_Malformed);
    EXPECT_EQ(copy.line(), 7);
    EXPECT_EQ(copy.operation(), "main");
}

TEST(Check, passesExactlyOne) {
    EXPECT_NO_THROW(Ta::Check(zStatus_Success, "main"));
    EXPECT_THROW(Ta::Check(zStatus_Failure, "main"), Ta::Exception);
    EXPECT_THROW(Ta::Check(static_cast<zStatus>(2), "main"), Ta::Exception);
    EXPECT_THROW(Ta::Check(zStatus_NotFound, "main", 1), Ta::Exception);
}

TEST(Check, raisesTheLocatedFormWithTheGivenLine) {
    forgetDetails();
    try {
        Ta::Check(zStatus_NotFound, "TaVekUtil_FindFilepath", 1351);
        FAIL();
    } catch (const Ta::Exception& exception) {
        EXPECT_STREQ(exception.what(), "TaVekUtil_FindFilepath (not found, status -999, TaVekUtil:1351)");
    }
}

TEST(Check, takesItsOwnLineWithoutOne) {
    try {
        Ta::Check(zStatus_NotFound, "main");
        FAIL();
    } catch (const Ta::Exception& exception) {
        EXPECT_EQ(exception.line(), __LINE__ - 3);
    }
}

}  // namespace
