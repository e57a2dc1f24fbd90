// Links as POSIX systems know them: followed, dangling, in a circle.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/os/os.h"
#include "tests/platform/os/files.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using os::FileType;
using os::InputFile;
using testing::ElementsAre;
using testing::save;
using testing::ScratchDirectory;
using testing::typeOf;

TEST(Link, isFollowedAndNotReplaced) {
    const ScratchDirectory scratch;
    scratch.write("directory/a.txt", "old");
    fs::create_symlink("directory/a.txt", scratch.path("relative"));
    fs::create_symlink(scratch.path("relative"), scratch.path("absolute"));
    ASSERT_FALSE(save(scratch.path("absolute"), "new"));
    EXPECT_EQ(scratch.read("directory/a.txt"), "new");
    EXPECT_TRUE(fs::is_symlink(scratch.path("absolute")));
    EXPECT_TRUE(fs::is_symlink(scratch.path("relative")));
    EXPECT_THAT(scratch.entries(), ElementsAre("absolute", "directory", "relative"));
}

TEST(Link, thatDanglesIsFollowedToItsPlace) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch.path("directory"));
    fs::create_symlink("directory/a.txt", scratch.path("first"));
    fs::create_symlink("first", scratch.path("second"));
    EXPECT_EQ(typeOf(scratch.path("second")), FileType::absent);
    ASSERT_FALSE(save(scratch.path("second"), "new"));
    EXPECT_EQ(scratch.read("directory/a.txt"), "new");
    EXPECT_TRUE(fs::is_symlink(scratch.path("first")));
    EXPECT_TRUE(fs::is_symlink(scratch.path("second")));
}

TEST(Link, thatDanglesToANameWithABackslashIsFollowedThere) {
    const ScratchDirectory scratch;
    fs::create_symlink("\\new.txt", scratch.path("link"));
    ASSERT_FALSE(save(scratch.path("link"), "new"));
    EXPECT_THAT(scratch.entries(), ElementsAre("\\new.txt", "link"));
    EXPECT_EQ(testing::readFile(scratch.path("link")), "new");
}

TEST(Link, inACircleIsRefused) {
    const ScratchDirectory scratch;
    fs::create_symlink("b", scratch.path("a"));
    fs::create_symlink("a", scratch.path("b"));
    const std::error_code error = save(scratch.path("a"), "x");
    EXPECT_EQ(error, std::errc::too_many_symbolic_link_levels);
    FileType type{};
    EXPECT_EQ(os::fileType(scratch.path("a"), type), std::errc::too_many_symbolic_link_levels);
    InputFile file;
    EXPECT_EQ(file.open(scratch.path("a")), std::errc::too_many_symbolic_link_levels);
}

TEST(Link, thatDanglesIsFollowedAsFarAsTheSystemFollowsOne) {
    constexpr int mostLinks = 40;
    const ScratchDirectory scratch;
    const auto name = [](int i) { return "link" + std::to_string(i); };
    for (int i = 1; i <= mostLinks + 1; ++i) fs::create_symlink(name(i - 1), scratch.path(name(i)));
    EXPECT_EQ(save(scratch.path(name(mostLinks + 1)), "x"), std::errc::too_many_symbolic_link_levels);
    ASSERT_FALSE(save(scratch.path(name(mostLinks)), "new"));
    EXPECT_EQ(scratch.read(name(0)), "new");
}

TEST(Link, toADirectoryIsADirectory) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch.path("directory"));
    fs::create_symlink("directory", scratch.path("link"));
    EXPECT_EQ(typeOf(scratch.path("link")), FileType::directory);
    EXPECT_EQ(save(scratch.path("link"), "x"), std::errc::is_a_directory);
    EXPECT_FALSE(os::createDirectories(scratch.path("link")));
    EXPECT_FALSE(os::createDirectories(scratch.path("link/below")));
}

TEST(Link, isListedWhenItLeadsToAPlainFile) {
    const ScratchDirectory scratch;
    scratch.write("directory/a.txt", "");
    fs::create_symlink("directory/a.txt", scratch.path("to-file"));
    fs::create_symlink("directory", scratch.path("to-directory"));
    fs::create_symlink("nowhere", scratch.path("dangling"));
    fs::create_symlink("circle", scratch.path("circle"));
    ASSERT_EQ(::mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    std::vector<std::string> names;
    ASSERT_FALSE(os::listFiles(scratch.path(), names));
    EXPECT_THAT(names, ElementsAre("to-file"));
}

TEST(Link, ofWhichTheEndCannotBeToldIsNotPassedOver) {
    const ScratchDirectory scratch;
    fs::create_symlink(std::string(300, 'x'), scratch.path("too-long"));
    std::vector<std::string> names{"before"};
    EXPECT_EQ(os::listFiles(scratch.path(), names), std::errc::filename_too_long);
    EXPECT_THAT(names, ElementsAre("before"));
}

TEST(Link, isRemovedItselfAndNotItsTarget) {
    const ScratchDirectory scratch;
    scratch.write("a.txt", "content");
    fs::create_symlink("a.txt", scratch.path("link"));
    ASSERT_FALSE(os::removeFile(scratch.path("link")));
    EXPECT_THAT(scratch.entries(), ElementsAre("a.txt"));
}

TEST(Link, toTheSameFileIsTheSameFile) {
    const ScratchDirectory scratch;
    fs::create_symlink("a.txt", scratch.path("link"));
    InputFile file;
    ASSERT_FALSE(file.open(scratch.write("a.txt", "")));
    EXPECT_TRUE(file.isSameFileAs(scratch.path("link")));
}

TEST(SymbolicLink, holdsItsDestinationAsItIs) {
    const ScratchDirectory scratch;
    ASSERT_FALSE(os::createSymbolicLink("no\\such/place", scratch.path("link")));
    EXPECT_EQ(fs::read_symlink(scratch.path("link")), "no\\such/place");
    EXPECT_EQ(os::createSymbolicLink("a", scratch.path("link")), std::errc::file_exists);
}

TEST(SymbolicLink, isGivenTheTimeItself) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "");
    ASSERT_FALSE(os::createSymbolicLink("a.txt", scratch.path("link")));
    ASSERT_FALSE(os::setModificationTime(path, {1, 0}));
    ASSERT_FALSE(os::setModificationTime(scratch.path("link"), {1'600'000'000, 5}));
    struct stat status {};
    ASSERT_EQ(::lstat(scratch.path("link").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'600'000'000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 5);
    ASSERT_EQ(::lstat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1);
}

TEST(HardLink, toASymbolicLinkIsALinkToIt) {
    const ScratchDirectory scratch;
    fs::create_symlink("nowhere", scratch.path("link"));
    ASSERT_FALSE(os::createHardLink(scratch.path("link"), scratch.path("other")));
    EXPECT_TRUE(fs::is_symlink(scratch.path("other")));
}

}  // namespace
