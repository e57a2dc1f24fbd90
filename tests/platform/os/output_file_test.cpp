#include <gtest/gtest.h>

#include <filesystem>

#include "platform/os/os.h"
#include "tests/platform/os/files.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using os::OutputFile;
using testing::save;
using testing::ScratchDirectory;

std::vector<std::string> only(std::string name) {
    return {std::move(name)};
}

TEST(OutputFile, leavesNothingBehindWithoutCommit) {
    const ScratchDirectory scratch;
    {
        OutputFile file;
        ASSERT_FALSE(file.open(scratch.path("a.txt")));
        ASSERT_FALSE(file.write("abc", 3));
        EXPECT_EQ(scratch.entries().size(), 1u) << "the temporary file";
    }
    EXPECT_TRUE(scratch.entries().empty());
}

TEST(OutputFile, worksInAHiddenFileOfAShortName) {
    const ScratchDirectory scratch;
    OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    ASSERT_EQ(scratch.entries().size(), 1u);
    const std::string name = scratch.entries()[0];
    EXPECT_EQ(name[0], '.');
    EXPECT_LE(name.size(), 40u);
}

TEST(OutputFile, putsANewFileInPlaceOnCommit) {
    const ScratchDirectory scratch;
    OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    ASSERT_FALSE(file.write("first ", 6));
    ASSERT_FALSE(file.write("second", 6));
    EXPECT_FALSE(scratch.exists("a.txt"));
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(scratch.read("a.txt"), "first second");
    EXPECT_EQ(scratch.entries(), only("a.txt"));
}

TEST(OutputFile, replacesTheTargetOnCommit) {
    const ScratchDirectory scratch;
    scratch.write("a.txt", "old");
    OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    ASSERT_FALSE(file.write("new", 3));
    EXPECT_EQ(scratch.read("a.txt"), "old");
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(scratch.read("a.txt"), "new");
    EXPECT_EQ(scratch.entries(), only("a.txt"));
}

TEST(OutputFile, writesBytesAsTheyAre) {
    const ScratchDirectory scratch;
    const std::string bytes("a\nb\r\n\0\x1A\xFF", 8);
    ASSERT_FALSE(save(scratch.path("a.bin"), bytes));
    EXPECT_EQ(scratch.read("a.bin"), bytes);
    ASSERT_FALSE(save(scratch.path("a.bin"), ""));
    EXPECT_EQ(scratch.read("a.bin"), "");
}

TEST(OutputFile, canReplaceAFileThatIsBeingRead) {
    const ScratchDirectory scratch;
    os::InputFile reader;
    ASSERT_FALSE(reader.open(scratch.write("a.txt", "old")));
    ASSERT_FALSE(save(scratch.path("a.txt"), "new"));
    EXPECT_EQ(scratch.read("a.txt"), "new");
    char bytes[8] = {};
    std::size_t count = 0;
    ASSERT_FALSE(reader.read(0, bytes, sizeof bytes, count));
    EXPECT_EQ(std::string(bytes, count), "old") << "the reader keeps the file it opened";
    EXPECT_FALSE(reader.isSameFileAs(scratch.path("a.txt")));
}

TEST(OutputFile, takesNamesOf255Bytes) {
    const ScratchDirectory scratch;
    const std::string name(255, 'n');
    ASSERT_FALSE(save(scratch.path(name), "content"));
    EXPECT_EQ(scratch.entries(), only(name));
}

TEST(OutputFile, takesNamesInUtf8AndEitherSeparator) {
    const ScratchDirectory scratch;
    scratch.write("größe/日本", "old");
    ASSERT_FALSE(save(scratch.path("größe\\日本"), "new"));
    EXPECT_EQ(scratch.read("größe/日本"), "new");
}

TEST(OutputFile, takesANameWithoutDirectory) {
    const ScratchDirectory scratch;
    const fs::path before = fs::current_path();
    fs::current_path(scratch.path());
    const std::error_code error = save("a.txt", "content");
    fs::current_path(before);
    ASSERT_FALSE(error) << error.message();
    EXPECT_EQ(scratch.entries(), only("a.txt"));
}

TEST(OutputFile, refusesADirectory) {
    const ScratchDirectory scratch;
    const std::error_code error = save(scratch.path(), "content");
    EXPECT_EQ(error, std::errc::is_a_directory);
    EXPECT_EQ(error.message(), "Is a directory");
    EXPECT_TRUE(scratch.entries().empty());
}

TEST(OutputFile, refusesAPlaceThatIsNone) {
    const ScratchDirectory scratch;
    OutputFile file;
    EXPECT_EQ(file.open(scratch.path("no/such/a.txt")), std::errc::no_such_file_or_directory);
    EXPECT_EQ(file.open(""), std::errc::no_such_file_or_directory);
    EXPECT_TRUE(scratch.entries().empty());
}

TEST(OutputFile, losesNothingWhenTheTargetCannotBeReplaced) {
    const ScratchDirectory scratch;
    {
        OutputFile file;
        ASSERT_FALSE(file.open(scratch.path("a")));
        scratch.write("a/inside.txt", "somebody made a directory meanwhile");
        EXPECT_TRUE(file.commit());
    }
    EXPECT_EQ(scratch.entries(), only("a"));
    EXPECT_TRUE(scratch.exists("a/inside.txt"));
}

TEST(OutputFile, canBeMovedWhileItIsOpen) {
    const ScratchDirectory scratch;
    OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    OutputFile other = std::move(file);
    ASSERT_FALSE(other.write("abc", 3));
    file = std::move(other);
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(scratch.read("a.txt"), "abc");
}

TEST(OutputFile, givesUpTheFirstTargetWhenAnotherIsOpened) {
    const ScratchDirectory scratch;
    OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    ASSERT_FALSE(file.open(scratch.path("b.txt")));
    EXPECT_TRUE(file.open(scratch.path("no/such/c.txt")));
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(scratch.entries(), only("b.txt"));
}

TEST(OutputFile, opensTwoAtOnceForOneTarget) {
    const ScratchDirectory scratch;
    OutputFile a;
    OutputFile b;
    ASSERT_FALSE(a.open(scratch.path("a.txt")));
    ASSERT_FALSE(b.open(scratch.path("a.txt")));
    ASSERT_FALSE(a.write("a", 1));
    ASSERT_FALSE(b.write("b", 1));
    ASSERT_FALSE(a.commit());
    EXPECT_EQ(scratch.read("a.txt"), "a");
    ASSERT_FALSE(b.commit());
    EXPECT_EQ(scratch.read("a.txt"), "b");
    EXPECT_EQ(scratch.entries(), only("a.txt"));
}

TEST(RemoveFile, removesAFile) {
    const ScratchDirectory scratch;
    EXPECT_FALSE(os::removeFile(scratch.write("a.txt", "")));
    EXPECT_TRUE(scratch.entries().empty());
}

TEST(RemoveFile, tellsWhyItCannot) {
    const ScratchDirectory scratch;
    EXPECT_EQ(os::removeFile(scratch.path("a.txt")), std::errc::no_such_file_or_directory);
    EXPECT_EQ(os::removeFile(""), std::errc::no_such_file_or_directory);
    scratch.write("a/inside.txt", "");
    EXPECT_EQ(os::removeFile(scratch.path("a")), std::errc::is_a_directory);
    EXPECT_TRUE(scratch.exists("a/inside.txt"));
    fs::create_directory(scratch.path("empty"));
    EXPECT_EQ(os::removeFile(scratch.path("empty")), std::errc::is_a_directory);
    EXPECT_TRUE(scratch.exists("empty"));
}

}  // namespace
