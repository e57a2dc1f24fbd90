#include "platform/base/path.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/base/failure.h"
#include "platform/os/os.h"

namespace {

const bool onWindows = os::pathSeparator == '\\';

/// `path` with the system's own separator for each `|`.
std::string own(std::string path) {
    for (char& character : path) {
        if (character == '|') character = os::pathSeparator;
    }
    return path;
}

using Operation = zStatus (*)(const char*, char*, std::size_t);

std::string result(Operation operation, const char* path) {
    char buffer[64] = "untouched";
    EXPECT_EQ(operation(path, buffer, sizeof buffer), zStatus_Success) << path;
    return buffer;
}

std::string combined(const char* first, const char* second) {
    char buffer[64] = "untouched";
    EXPECT_EQ(zPath_Combine(first, second, buffer, sizeof buffer), zStatus_Success);
    return buffer;
}

TEST(PathCombine, joinsWithTheSystemsSeparator) {
    EXPECT_EQ(combined("a", "b"), own("a|b"));
    EXPECT_EQ(combined("a/b", "c\\d"), own("a/b|c\\d")) << "separators inside stay as given";
}

TEST(PathCombine, putsOneSeparatorInThePlaceOfAllThatMeet) {
    EXPECT_EQ(combined("host\\", "/a"), own("host|a"));
    EXPECT_EQ(combined("a//", "b"), own("a|b"));
    EXPECT_EQ(combined("a", "\\\\b"), own("a|b"));
    EXPECT_EQ(combined("a/\\/", "\\/\\b"), own("a|b"));
    EXPECT_EQ(combined("a", "b/"), own("a|b/"));
}

TEST(PathCombine, keepsARoot) {
    EXPECT_EQ(combined("/", "a"), own("|a"));
    EXPECT_EQ(combined("/", "/"), own("|"));
    EXPECT_EQ(combined("C:\\", "a"), own("C:|a"));
}

TEST(PathCombine, givesTheOtherSideWhenOneIsEmpty) {
    EXPECT_EQ(combined("", "b"), "b");
    EXPECT_EQ(combined("", "/b"), "/b");
    EXPECT_EQ(combined("a", ""), "a");
    EXPECT_EQ(combined("a/", ""), "a/");
    EXPECT_EQ(combined("", ""), "");
}

TEST(PathCombine, worksInPlaceOnEitherSide) {
    char buffer[16] = "a";
    EXPECT_EQ(zPath_Combine(buffer, "b", buffer, sizeof buffer), zStatus_Success);
    EXPECT_EQ(buffer, own("a|b"));
    EXPECT_EQ(zPath_Combine("c", buffer, buffer, sizeof buffer), zStatus_Success);
    EXPECT_EQ(buffer, own("c|a|b"));
}

TEST(PathCombine, leavesTheBufferEmptyWhenTheResultDoesNotFit) {
    char buffer[4] = "xyz";
    EXPECT_EQ(zPath_Combine("a", "b", buffer, sizeof buffer), zStatus_Success) << "three characters fit";
    EXPECT_EQ(zPath_Combine("ab", "c", buffer, sizeof buffer), zStatus_DoesNotFit);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(failure::detailOf(zStatus_DoesNotFit), own("ab|c: longer than 3 characters"));
    EXPECT_EQ(zPath_Combine("abcd", "", buffer, sizeof buffer), zStatus_DoesNotFit);
    EXPECT_STREQ(buffer, "");
}

TEST(PathDirectory, isWhatStandsBeforeTheLastSeparator) {
    EXPECT_EQ(result(zPath_Directory, "a/b"), "a");
    EXPECT_EQ(result(zPath_Directory, "a\\b"), "a");
    EXPECT_EQ(result(zPath_Directory, "a/b\\c"), "a/b");
    EXPECT_EQ(result(zPath_Directory, "a/b/"), "a/b");
    EXPECT_EQ(result(zPath_Directory, "b"), "");
    EXPECT_EQ(result(zPath_Directory, ""), "");
}

TEST(PathDirectory, keepsARoot) {
    EXPECT_EQ(result(zPath_Directory, "/x"), "/");
    EXPECT_EQ(result(zPath_Directory, "\\x"), "\\");
    EXPECT_EQ(result(zPath_Directory, "/"), "/");
    EXPECT_EQ(result(zPath_Directory, "C:\\x"), onWindows ? "C:\\" : "C:");
    EXPECT_EQ(result(zPath_Directory, "C:\\x\\y"), "C:\\x");
}

TEST(PathFileName, isWhatStandsBehindTheLastSeparator) {
    EXPECT_EQ(result(zPath_FileName, "a/b.so"), "b.so");
    EXPECT_EQ(result(zPath_FileName, "a\\b.so"), "b.so");
    EXPECT_EQ(result(zPath_FileName, "a/b\\c"), "c");
    EXPECT_EQ(result(zPath_FileName, "b.so"), "b.so");
    EXPECT_EQ(result(zPath_FileName, "a/"), "");
    EXPECT_EQ(result(zPath_FileName, ""), "");
}

TEST(PathExtension, isWhatStandsBehindTheLastDot) {
    EXPECT_EQ(result(zPath_Extension, "a/b.so"), "so");
    EXPECT_EQ(result(zPath_Extension, "b.tar.gz"), "gz");
    EXPECT_EQ(result(zPath_Extension, "b."), "");
    EXPECT_EQ(result(zPath_Extension, "b"), "");
    EXPECT_EQ(result(zPath_Extension, "a.d/b"), "") << "that of the directory is none";
    EXPECT_EQ(result(zPath_Extension, "a.d\\b"), "");
    EXPECT_EQ(result(zPath_Extension, ""), "");
}

TEST(PathExtension, isNoneAfterALeadingDot) {
    EXPECT_EQ(result(zPath_Extension, ".profile"), "");
    EXPECT_EQ(result(zPath_Extension, "a/.profile"), "");
    EXPECT_EQ(result(zPath_Extension, ".profile.so"), "so");
    EXPECT_EQ(result(zPath_Extension, ".."), "");
    EXPECT_EQ(result(zPath_Extension, "a.b/.."), "");
}

TEST(PathStripExtension, takesItWithItsDot) {
    EXPECT_EQ(result(zPath_StripExtension, "a/b.tar.gz"), "a/b.tar");
    EXPECT_EQ(result(zPath_StripExtension, "C:\\pkgs\\app.tar"), "C:\\pkgs\\app");
    EXPECT_EQ(result(zPath_StripExtension, "b."), "b");
}

TEST(PathStripExtension, leavesAPathWithoutOne) {
    EXPECT_EQ(result(zPath_StripExtension, "a.d/b"), "a.d/b");
    EXPECT_EQ(result(zPath_StripExtension, "a/.profile"), "a/.profile");
    EXPECT_EQ(result(zPath_StripExtension, "old.tar/.."), "old.tar/..");
    EXPECT_EQ(result(zPath_StripExtension, ""), "");
}

TEST(PathIsAbsolute, goesByTheFirstCharacters) {
    EXPECT_TRUE(zPath_IsAbsolute("/a"));
    EXPECT_TRUE(zPath_IsAbsolute("\\a"));
    EXPECT_FALSE(zPath_IsAbsolute("a/b"));
    EXPECT_FALSE(zPath_IsAbsolute(""));
    EXPECT_EQ(zPath_IsAbsolute("C:\\a"), onWindows);
}

struct Part {
    const char* name;
    Operation operation;
    const char* path;
    const char* answer;
};

class PathPart : public testing::TestWithParam<Part> {};

INSTANTIATE_TEST_SUITE_P(Each, PathPart,
                         testing::Values(Part{"Directory", zPath_Directory, "abc/x.y", "abc"},
                                         Part{"FileName", zPath_FileName, "x/a.c", "a.c"},
                                         Part{"Extension", zPath_Extension, "x.abc", "abc"},
                                         Part{"StripExtension", zPath_StripExtension, "abc.x", "abc"}),
                         [](const auto& part) { return part.param.name; });

TEST_P(PathPart, worksInPlace) {
    char buffer[16] = "";
    const std::string path = GetParam().path;
    path.copy(buffer, path.size());
    EXPECT_EQ(GetParam().operation(buffer, buffer, sizeof buffer), zStatus_Success);
    EXPECT_STREQ(buffer, GetParam().answer);
}

TEST_P(PathPart, fillsTheBufferToTheLastCharacter) {
    char buffer[4] = "xyz";
    EXPECT_EQ(GetParam().operation(GetParam().path, buffer, sizeof buffer), zStatus_Success);
    EXPECT_STREQ(buffer, GetParam().answer);
}

TEST_P(PathPart, leavesTheBufferEmptyWhenTheResultDoesNotFit) {
    char buffer[4] = "xyz";
    EXPECT_EQ(GetParam().operation(GetParam().path, buffer, 3), zStatus_DoesNotFit);
    EXPECT_STREQ(buffer, "");
}

TEST_P(PathPart, refusesABufferWithoutRoom) {
    char buffer[4] = "xyz";
    EXPECT_EQ(GetParam().operation("a", buffer, 0), zStatus_BadArgument);
    EXPECT_STREQ(buffer, "xyz");
    EXPECT_EQ(GetParam().operation("a", nullptr, 4), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the buffer has no room for a path");
}

}  // namespace
