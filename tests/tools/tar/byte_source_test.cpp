#include "tools/tar/byte_source.h"

#include <gmock/gmock.h>

#include "tests/testing/scratch_directory.h"
#include "tests/tools/tar/refusal.h"

namespace {

using testing::refusalOf;
using testing::ScratchDirectory;

std::string textOf(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST(ByteSource, givesOutEverything) {
    const ScratchDirectory scratch;
    std::string content;
    while (content.size() < 200'000) content += std::to_string(content.size()) + ' ';
    tar::ByteSource source(scratch.write("a", content));
    std::string read;
    for (auto piece = source.next(); !piece.empty(); piece = source.next()) read += textOf(piece);
    EXPECT_EQ(read, content);
    EXPECT_TRUE(source.next().empty()) << "the end stays";
}

TEST(ByteSource, takesBytesBackAlsoOverTheStartOfAPiece) {
    const ScratchDirectory scratch;
    const std::string content = std::string(64 * 1024, 'a') + "bcd";
    tar::ByteSource source(scratch.write("a", content));
    EXPECT_EQ(source.next().size(), 64u * 1024);
    EXPECT_EQ(textOf(source.next()), "bcd");
    source.giveBack(3 + 10);
    EXPECT_EQ(textOf(source.next()), "aaaaaaaaaabcd");
    EXPECT_TRUE(source.next().empty());
    source.giveBack(1);
    std::uint8_t byte = 0;
    ASSERT_TRUE(source.takeByte(byte));
    EXPECT_EQ(byte, 'd');
    EXPECT_FALSE(source.takeByte(byte));
}

TEST(ByteSource, tellsWhatItCannotOpen) {
    const ScratchDirectory scratch;
    EXPECT_EQ(refusalOf([&] { tar::ByteSource source(scratch.path("missing")); }),
              scratch.path("missing") + ": Cannot open: No such file or directory");
    EXPECT_EQ(refusalOf([&] { tar::ByteSource source(scratch.path()); }),
              scratch.path() + ": Cannot open: Is a directory");
}

}  // namespace
