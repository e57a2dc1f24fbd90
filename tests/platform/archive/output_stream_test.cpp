#include "platform/archive/output_stream.h"

#include <gmock/gmock.h>

#include "platform/base/failure.h"
#include "tests/testing/scratch_directory.h"

namespace {

using namespace testing;

std::span<const std::uint8_t> asBytes(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(OutputStream, writesWhatItWasGivenInOrder) {
    const ScratchDirectory scratch;
    std::string expected;
    {
        OutputStream stream;
        ASSERT_EQ(stream.open(scratch.path("out")), zStatus_Success);
        for (std::size_t i = 0; i < 300; ++i) {
            const std::string part(i * i % 7000, static_cast<char>('a' + i % 26));
            ASSERT_EQ(stream.write(asBytes(part)), zStatus_Success);
            expected += part;
            ASSERT_EQ(stream.position(), expected.size());
        }
        EXPECT_FALSE(scratch.exists("out"));
        ASSERT_EQ(stream.commit(), zStatus_Success);
    }
    EXPECT_EQ(scratch.read("out"), expected);
    EXPECT_THAT(scratch.entries(), ElementsAre("out"));
}

TEST(OutputStream, takesWhatIsPutIntoItsRoom) {
    const ScratchDirectory scratch;
    OutputStream stream;
    ASSERT_EQ(stream.open(scratch.path("out")), zStatus_Success);
    std::string expected;
    for (char c = 'a'; c < 'p'; ++c) {
        std::span<std::uint8_t> room;
        ASSERT_EQ(stream.room(room), zStatus_Success);
        ASSERT_GE(room.size(), OutputStream::leastRoom);
        const std::size_t count = c % 2 == 0 ? room.size() : 10;
        std::fill_n(room.begin(), count, static_cast<std::uint8_t>(c));
        stream.commitRoom(count);
        expected.append(count, c);
        ASSERT_EQ(stream.write(asBytes("-")), zStatus_Success);
        expected += '-';
    }
    ASSERT_EQ(stream.commit(), zStatus_Success);
    EXPECT_EQ(scratch.read("out"), expected);
}

TEST(OutputStream, leavesNothingBehindWithoutACommit) {
    const ScratchDirectory scratch;
    scratch.write("out", "old");
    {
        OutputStream stream;
        ASSERT_EQ(stream.open(scratch.path("out")), zStatus_Success);
        ASSERT_EQ(stream.write(asBytes(std::string(1'000'000, 'n'))), zStatus_Success);
    }
    EXPECT_EQ(scratch.read("out"), "old");
    EXPECT_THAT(scratch.entries(), ElementsAre("out"));
}

TEST(OutputStream, withoutAFileCountsAndForgets) {
    OutputStream stream;
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(stream.write(asBytes(std::string(100'000, 'x'))), zStatus_Success);
    }
    EXPECT_EQ(stream.position(), 10'000'000u);
}

TEST(OutputStream, namesWhatItCannotOpen) {
    const ScratchDirectory scratch;
    OutputStream stream;
    EXPECT_EQ(stream.open(scratch.path("absent/out")), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound),
              scratch.path("absent/out") + ": No such file or directory");
    EXPECT_EQ(stream.open(scratch.path()), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), scratch.path() + ": Is a directory");
}

}  // namespace
