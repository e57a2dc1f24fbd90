#include <gtest/gtest.h>

#include "platform/os/os.h"
#include "tests/platform/os/files.h"
#include "tests/testing/scratch_directory.h"

namespace {

using os::FileType;
using testing::ScratchDirectory;
using testing::typeOf;

TEST(RootLength, countsASeparatorOfEitherKind) {
    EXPECT_EQ(os::rootLength("/"), 1u);
    EXPECT_EQ(os::rootLength("/x"), 1u);
    EXPECT_EQ(os::rootLength("\\x"), 1u);
    EXPECT_EQ(os::rootLength("x/y"), 0u);
    EXPECT_EQ(os::rootLength(""), 0u);
}

TEST(IsAbsolute, goesByTheFirstSeparator) {
    EXPECT_TRUE(os::isAbsolute("/x"));
    EXPECT_TRUE(os::isAbsolute("\\x"));
    EXPECT_FALSE(os::isAbsolute("x/y"));
    EXPECT_FALSE(os::isAbsolute("./x"));
    EXPECT_FALSE(os::isAbsolute(""));
}

TEST(FileType, tellsWhatAPathNames) {
    const ScratchDirectory scratch;
    EXPECT_EQ(typeOf(scratch.write("a.txt", "")), FileType::regular);
    EXPECT_EQ(typeOf(scratch.path()), FileType::directory);
    EXPECT_EQ(typeOf(scratch.path() + "/"), FileType::directory);
    EXPECT_EQ(typeOf("."), FileType::directory);
}

TEST(FileType, answersAbsentForWhateverLeadsNowhere) {
    const ScratchDirectory scratch;
    scratch.write("a.txt", "");
    EXPECT_EQ(typeOf(scratch.path("b.txt")), FileType::absent);
    EXPECT_EQ(typeOf(scratch.path("no/such/file")), FileType::absent);
    EXPECT_EQ(typeOf(scratch.path("a.txt/b.txt")), FileType::absent);
    EXPECT_EQ(typeOf(""), FileType::absent);
}

TEST(FileType, takesEitherSeparator) {
    const ScratchDirectory scratch;
    scratch.write("a/b.txt", "");
    EXPECT_EQ(typeOf(scratch.path("a\\b.txt")), FileType::regular);
    EXPECT_EQ(typeOf(scratch.path("a\\")), FileType::directory);
}

TEST(FileType, takesNamesInUtf8) {
    const ScratchDirectory scratch;
    EXPECT_EQ(typeOf(scratch.write("größe-日本-😀.txt", "")), FileType::regular);
}

TEST(ThroughAFile, nothingIsFound) {
    const ScratchDirectory scratch;
    const std::string below = scratch.write("a.txt", "") + "/b.txt";
    os::InputFile input;
    EXPECT_EQ(input.open(below), std::errc::not_a_directory);
    EXPECT_EQ(input.open(below + "/c.txt"), std::errc::not_a_directory);
    os::OutputFile output;
    EXPECT_EQ(output.open(below), std::errc::not_a_directory);
    EXPECT_EQ(os::removeFile(below), std::errc::not_a_directory);
}

}  // namespace
