#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using os::InputFile;
using testing::ScratchDirectory;

std::string readAt(const InputFile& file, std::uint64_t offset, std::size_t capacity) {
    std::string bytes(capacity, '?');
    std::size_t count = 99;
    const std::error_code error = file.read(offset, bytes.data(), capacity, count);
    EXPECT_FALSE(error) << error.message();
    return bytes.substr(0, count);
}

std::string readNext(InputFile& file, std::size_t capacity) {
    std::string bytes(capacity, '?');
    std::size_t count = 99;
    const std::error_code error = file.readNext(bytes.data(), capacity, count);
    EXPECT_FALSE(error) << error.message();
    return bytes.substr(0, count);
}

class OpenInputFile : public testing::Test {
  protected:
    void SetUp() override { ASSERT_FALSE(file.open(scratch.write("a.txt", "0123456789"))); }

    const ScratchDirectory scratch;
    InputFile file;
};

TEST_F(OpenInputFile, readsAtAnyPlace) {
    EXPECT_EQ(readAt(file, 0, 4), "0123");
    EXPECT_EQ(readAt(file, 8, 2), "89");
    EXPECT_EQ(readAt(file, 3, 1), "3");
}

TEST_F(OpenInputFile, readsLessOnlyAtTheEnd) {
    EXPECT_EQ(readAt(file, 8, 4), "89");
    EXPECT_EQ(readAt(file, 10, 4), "");
    EXPECT_EQ(readAt(file, 1'000'000'000'000, 4), "");
    EXPECT_EQ(readAt(file, 2, 0), "");
}

TEST_F(OpenInputFile, readsFromFrontToBack) {
    EXPECT_EQ(readNext(file, 4), "0123");
    EXPECT_EQ(readNext(file, 4), "4567");
    EXPECT_EQ(readNext(file, 4), "89");
    EXPECT_EQ(readNext(file, 4), "");
}

TEST_F(OpenInputFile, keepsBothWaysOfReadingApart) {
    EXPECT_EQ(readNext(file, 2), "01");
    EXPECT_EQ(readAt(file, 7, 2), "78");
    EXPECT_EQ(readNext(file, 2), "23");
}

TEST_F(OpenInputFile, knowsItsSizeAndKind) {
    EXPECT_TRUE(file.isOpen());
    EXPECT_TRUE(file.isRegular());
    EXPECT_EQ(file.size(), 10u);
}

TEST_F(OpenInputFile, canBeClosedMovedAndOpenedAgain) {
    InputFile other = std::move(file);
    EXPECT_EQ(readNext(other, 2), "01");
    ASSERT_FALSE(other.open(scratch.write("b.txt", "b")));
    EXPECT_EQ(readNext(other, 4), "b");
    EXPECT_TRUE(other.open(scratch.path("missing.txt")));
    EXPECT_EQ(readAt(other, 0, 4), "b") << "what cannot be opened closes nothing";
    other.close();
    EXPECT_FALSE(other.isOpen());
}

TEST_F(OpenInputFile, lastsWhateverOthersDoToItsName) {
    fs::rename(scratch.path("a.txt"), scratch.path("b.txt"));
    EXPECT_EQ(readAt(file, 0, 2), "01");
    fs::remove(scratch.path("b.txt"));
    EXPECT_EQ(readAt(file, 2, 2), "23");
}

TEST_F(OpenInputFile, knowsItselfUnderEveryName) {
    EXPECT_TRUE(file.isSameFileAs(scratch.path("a.txt")));
    EXPECT_TRUE(file.isSameFileAs(scratch.path("./a.txt")));
    EXPECT_TRUE(file.isSameFileAs(scratch.path() + "\\a.txt"));
    fs::create_hard_link(scratch.path("a.txt"), scratch.path("hard.txt"));
    EXPECT_TRUE(file.isSameFileAs(scratch.path("hard.txt")));
}

TEST_F(OpenInputFile, isNoOtherFile) {
    scratch.write("copy.txt", "0123456789");
    EXPECT_FALSE(file.isSameFileAs(scratch.path("copy.txt")));
    EXPECT_FALSE(file.isSameFileAs(scratch.path("missing.txt")));
    EXPECT_FALSE(file.isSameFileAs(scratch.path()));
    EXPECT_FALSE(file.isSameFileAs(""));
}

TEST(InputFile, isClosedAtFirst) {
    EXPECT_FALSE(InputFile().isOpen());
}

TEST(InputFile, tellsWhyItCannotBeOpened) {
    const ScratchDirectory scratch;
    InputFile file;
    const std::error_code missing = file.open(scratch.path("missing.txt"));
    EXPECT_EQ(missing, std::errc::no_such_file_or_directory);
    EXPECT_EQ(missing.message(), "No such file or directory");
    EXPECT_EQ(file.open(""), std::errc::no_such_file_or_directory);
    const std::error_code directory = file.open(scratch.path());
    EXPECT_EQ(directory, std::errc::is_a_directory);
    EXPECT_EQ(directory.message(), "Is a directory");
    EXPECT_FALSE(file.isOpen());
}

TEST(InputFile, readsBeyondFourGibibytes) {
    const ScratchDirectory scratch;
    constexpr std::uint64_t far = 5'000'000'000;
    scratch.write("large.bin", "");
    fs::resize_file(scratch.path("large.bin"), far);  // takes no room on disk
    {
        std::ofstream stream(scratch.path("large.bin"), std::ios::binary | std::ios::app);
        stream << "end";
    }
    InputFile file;
    ASSERT_FALSE(file.open(scratch.path("large.bin")));
    EXPECT_EQ(file.size(), far + 3);
    EXPECT_EQ(readAt(file, far - 1, 8), std::string("\0end", 4));
}

}  // namespace
