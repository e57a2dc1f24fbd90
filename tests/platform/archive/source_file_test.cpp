#include "platform/archive/source_file.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <random>
#include <vector>

#include "platform/base/failure.h"
#include "tests/testing/scratch_directory.h"

namespace {

using namespace testing;

class SourceFileTest : public Test {
  protected:
    std::string openWith(const std::string& content) {
        EXPECT_EQ(file.open(scratch.write("in", content)), zStatus_Success);
        return scratch.path("in") + ": ";
    }
    static std::string noise(std::size_t size) {
        std::mt19937 random(1);
        std::string bytes(size, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        return bytes;
    }
    const ScratchDirectory scratch;
    SourceFile file;
};

TEST_F(SourceFileTest, readsExactlyWhatIsAskedFor) {
    openWith("0123456789");
    EXPECT_EQ(file.size(), 10u);
    char bytes[4] = {};
    EXPECT_EQ(file.read(6, bytes, 4), zStatus_Success);
    EXPECT_EQ(std::string(bytes, 4), "6789");
}

TEST_F(SourceFileTest, saysThatTheFileBecameShorter) {
    const std::string path = openWith("0123456789");
    char bytes[4] = {};
    EXPECT_EQ(file.read(7, bytes, 4), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), path + "the file became shorter while it was read");
}

TEST_F(SourceFileTest, saysWhyItCannotBeOpened) {
    EXPECT_EQ(file.open(scratch.path("absent")), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), scratch.path("absent") + ": No such file or directory");
    EXPECT_EQ(file.open(scratch.path()), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), scratch.path() + ": Is a directory");
    EXPECT_FALSE(file.isOpen());
}

TEST_F(SourceFileTest, takesPlainFilesAlone) {
    const std::string device = std::filesystem::path("/dev/null").string();
    if (!std::filesystem::exists(device)) GTEST_SKIP() << "there is no " << device << " on this system";
    EXPECT_EQ(file.open(device), zStatus_Unsupported);
    EXPECT_EQ(failure::detailOf(zStatus_Unsupported), device + ": not a plain file");
}

TEST_F(SourceFileTest, complainsWithPathAndMember) {
    const std::string path = openWith("");
    EXPECT_EQ(file.refuse("a fault"), zStatus_Malformed);
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), path + "a fault");
    EXPECT_EQ(file.refuseMember("na\nme", "a fault"), zStatus_Malformed);
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), path + "member na?me: a fault");
    EXPECT_EQ(file.refuseMember("name", "a fault", zStatus_Unsupported), zStatus_Unsupported);
}

TEST_F(SourceFileTest, isOpenedAnewWhenItIsTheSameStill) {
    const std::string path = openWith("0123456789");
    EXPECT_TRUE(file.isSameFileAs(scratch.path("in")));
    file.close();
    EXPECT_FALSE(file.isSameFileAs(scratch.path("in")));
    char byte = 0;
    EXPECT_EQ(file.read(0, &byte, 1), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), path + "the file is not open any more");
    EXPECT_EQ(file.reopen(scratch.path("in"), 10), zStatus_Success);
    EXPECT_EQ(file.read(0, &byte, 1), zStatus_Success);
    file.close();
    EXPECT_EQ(file.reopen(scratch.path("in"), 11), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), path + "the file was replaced by another");
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.reopen(scratch.path("absent"), 10), zStatus_NotFound);
}

TEST_F(SourceFileTest, isSeenThroughAWindowThatMovesEverywhere) {
    const std::string content = noise(1'000'000);
    openWith(content);
    FileWindow window(file);
    std::mt19937 random(2);
    std::uint64_t straight = 0;
    for (int round = 0; round < 3000; ++round) {
        // Straight on mostly, sometimes a jump; small pieces mostly, sometimes large ones.
        const std::size_t size = random() % (random() % 20 == 0 ? 100'000 : 300);
        const std::uint64_t offset = random() % 5 == 0 || straight + size > content.size()
                                         ? random() % (content.size() - size + 1)
                                         : straight;
        const std::string expected = content.substr(static_cast<std::size_t>(offset), size);
        if (random() % 2 == 0) {
            const std::uint8_t* bytes = nullptr;
            ASSERT_EQ(window.view(offset, size, bytes), zStatus_Success);
            ASSERT_EQ(std::string(reinterpret_cast<const char*>(bytes), size), expected);
        } else {
            std::vector<std::uint8_t> bytes(size);
            ASSERT_EQ(window.copy(offset, size, bytes.data()), zStatus_Success);
            ASSERT_EQ(std::string(bytes.begin(), bytes.end()), expected);
        }
        straight = offset + size;
    }
}

TEST_F(SourceFileTest, failingLeavesAWindowThatHoldsNothing) {
    openWith(noise(10'000));
    FileWindow window(file);
    const std::uint8_t* bytes = nullptr;
    EXPECT_EQ(window.view(0, 100, bytes), zStatus_Success);
    file.close();
    EXPECT_EQ(window.view(50, 10, bytes), zStatus_Success);  // seen before
    EXPECT_EQ(window.view(9000, 100, bytes), zStatus_IoError);
    EXPECT_EQ(window.view(50, 10, bytes), zStatus_IoError);
}

}  // namespace
