#include <gmock/gmock.h>

#include <filesystem>
#include <thread>

#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ScratchDirectory;
using testing::UnorderedElementsAre;

TEST(CreateDirectories, makesMissingParents) {
    const ScratchDirectory scratch;
    EXPECT_FALSE(os::createDirectories(scratch.path("a/b/c")));
    EXPECT_TRUE(fs::is_directory(scratch.path("a/b/c")));
}

TEST(CreateDirectories, takesEitherSeparatorAndOnesAtTheEnd) {
    const ScratchDirectory scratch;
    EXPECT_FALSE(os::createDirectories(scratch.path("a\\b/")));
    EXPECT_FALSE(os::createDirectories(scratch.path("a\\b\\c//")));
    EXPECT_TRUE(fs::is_directory(scratch.path("a/b/c")));
    EXPECT_THAT(scratch.entries(), ElementsAre("a"));
}

TEST(CreateDirectories, takesComponentsThatNameNoDirectoryOfTheirOwn) {
    const ScratchDirectory scratch;
    EXPECT_FALSE(os::createDirectories(scratch.path("a/.")));
    EXPECT_FALSE(os::createDirectories(scratch.path("b/../c/./d/.")));
    EXPECT_TRUE(fs::is_directory(scratch.path("a")));
    EXPECT_TRUE(fs::is_directory(scratch.path("c/d")));
}

TEST(CreateDirectories, succeedsWhenItExists) {
    const ScratchDirectory scratch;
    EXPECT_FALSE(os::createDirectories(scratch.path()));
    EXPECT_FALSE(os::createDirectories("/"));
    EXPECT_FALSE(os::createDirectories("."));
}

TEST(CreateDirectories, takesARelativePath) {
    const ScratchDirectory scratch;
    const fs::path before = fs::current_path();
    fs::current_path(scratch.path());
    const std::error_code one = os::createDirectories("a");
    const std::error_code two = os::createDirectories("b/c");
    fs::current_path(before);
    EXPECT_FALSE(one || two);
    EXPECT_THAT(scratch.entries(), ElementsAre("a", "b"));
}

TEST(CreateDirectories, succeedsWhenOthersMakeTheSameMeanwhile) {
    const ScratchDirectory scratch;
    for (int round = 0; round < 100; ++round) {
        const std::string path = scratch.path("a" + std::to_string(round) + "/b/c/d");
        std::error_code errors[4];
        std::vector<std::thread> makers;
        for (std::error_code& error : errors) {
            makers.emplace_back([&] { error = os::createDirectories(path); });
        }
        for (std::thread& maker : makers) maker.join();
        for (const std::error_code& error : errors) ASSERT_FALSE(error) << error.message();
        ASSERT_TRUE(fs::is_directory(path));
    }
}

TEST(CreateDirectories, tellsWhyItCannot) {
    const ScratchDirectory scratch;
    scratch.write("file", "content");
    const std::error_code exists = os::createDirectories(scratch.path("file"));
    EXPECT_EQ(exists, std::errc::file_exists);
    EXPECT_EQ(exists.message(), "File exists");
    const std::error_code below = os::createDirectories(scratch.path("file/a/b"));
    EXPECT_EQ(below, std::errc::not_a_directory);
    EXPECT_EQ(below.message(), "Not a directory");
    EXPECT_EQ(os::createDirectories(""), std::errc::no_such_file_or_directory);
    EXPECT_EQ(scratch.read("file"), "content");
}

TEST(ListFiles, givesPlainFilesOnly) {
    const ScratchDirectory scratch;
    scratch.write("a.txt", "");
    scratch.write(".hidden", "");
    scratch.write("größe-日本.txt", "");
    scratch.write("directory/inside.txt", "");
    std::vector<std::string> names;
    ASSERT_FALSE(os::listFiles(scratch.path(), names));
    EXPECT_THAT(names, UnorderedElementsAre("a.txt", ".hidden", "größe-日本.txt"));
}

TEST(ListFiles, appends) {
    const ScratchDirectory scratch;
    scratch.write("a.txt", "");
    std::vector<std::string> names{"before"};
    ASSERT_FALSE(os::listFiles(scratch.path(), names));
    EXPECT_THAT(names, ElementsAre("before", "a.txt"));
}

TEST(ListFiles, givesAllOfManyFiles) {
    const ScratchDirectory scratch;
    for (int i = 0; i < 1000; ++i) scratch.write(std::to_string(i), "");
    std::vector<std::string> names;
    ASSERT_FALSE(os::listFiles(scratch.path(), names));
    EXPECT_EQ(names.size(), 1000u);
}

TEST(ListFiles, takesEitherSeparator) {
    const ScratchDirectory scratch;
    scratch.write("a/b/file.txt", "");
    std::vector<std::string> names;
    ASSERT_FALSE(os::listFiles(scratch.path("a\\b\\"), names));
    EXPECT_THAT(names, ElementsAre("file.txt"));
}

TEST(ListFiles, answersNothingForAnEmptyDirectory) {
    const ScratchDirectory scratch;
    std::vector<std::string> names;
    EXPECT_FALSE(os::listFiles(scratch.path(), names));
    EXPECT_TRUE(names.empty());
}

TEST(ListFiles, leavesTheNamesAloneWhenItFails) {
    const ScratchDirectory scratch;
    std::vector<std::string> names{"before"};
    EXPECT_EQ(os::listFiles(scratch.path("missing"), names), std::errc::no_such_file_or_directory);
    EXPECT_EQ(os::listFiles("", names), std::errc::no_such_file_or_directory);
    EXPECT_EQ(os::listFiles(scratch.write("file", ""), names), std::errc::not_a_directory);
    EXPECT_THAT(names, ElementsAre("before"));
}

TEST(ApplicationDirectory, holdsThisProgram) {
    std::string directory;
    ASSERT_FALSE(os::applicationDirectory(directory));
    EXPECT_TRUE(os::isAbsolute(directory));
    std::vector<std::string> names;
    ASSERT_FALSE(os::listFiles(directory, names));
    EXPECT_THAT(names, testing::Contains(testing::StartsWith("platform_os_test")));
}

}  // namespace
