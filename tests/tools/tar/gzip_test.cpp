#include "tools/tar/gzip.h"

#include <gtest/gtest.h>

#include "platform/archive/crc32.h"
#include "tests/testing/scratch_directory.h"
#include "tests/tools/tar/refusal.h"
#include "tests/tools/tar/tar_builder.h"

namespace {

using testing::gzipped;
using testing::refusalOf;
using testing::ScratchDirectory;

/// What the gzip file `content` holds.
std::string unzipped(const std::string& content) {
    const ScratchDirectory scratch;
    tar::ByteSource source(scratch.write("a.gz", content));
    std::string result;
    tar::unzip(source,
               [&](std::span<const std::uint8_t> bytes) { result.append(bytes.begin(), bytes.end()); });
    return result;
}

std::string refusal(const std::string& content) {
    return refusalOf([&] { unzipped(content); });
}

TEST(Gzip, isKnownByItsContent) {
    const ScratchDirectory scratch;
    const auto isGzip = [&](std::string_view content) {
        tar::ByteSource source(scratch.write("a", content));
        const bool answer = tar::isGzip(source);
        EXPECT_EQ(source.next().size(), content.size()) << "nothing is taken";
        return answer;
    };
    EXPECT_TRUE(isGzip(gzipped("x")));
    EXPECT_FALSE(isGzip("\x1F"));
    EXPECT_FALSE(isGzip(""));
    EXPECT_FALSE(isGzip("BZh"));
}

TEST(Gzip, givesBackItsContent) {
    std::string content;
    while (content.size() < 300'000) content += std::to_string(content.size());
    EXPECT_EQ(unzipped(gzipped(content)), content);
    EXPECT_EQ(unzipped(gzipped("")), "");
}

TEST(Gzip, mayHaveSeveralMembersAndZerosBehind) {
    EXPECT_EQ(unzipped(gzipped("one ") + gzipped("") + gzipped("two")), "one two");
    EXPECT_EQ(unzipped(gzipped("one") + std::string(1000, '\0')), "one");
}

TEST(Gzip, findsTheNextMemberWhereverPiecesOfTheFileEnd) {
    const std::string large(64 * 1024 - 30, 'x');
    for (std::size_t more = 0; more < 40; ++more) {
        const std::string content = large + std::string(more, 'y');
        ASSERT_EQ(unzipped(gzipped(content) + gzipped("end")), content + "end") << more;
    }
}

TEST(Gzip, mayHaveEveryFieldInItsHeader) {
    std::string file = gzipped("content");
    file[3] = 4 | 8 | 16;
    EXPECT_EQ(unzipped(file.substr(0, 10) + std::string("\3\0abc", 5) + std::string("name\0", 5) +
                       std::string("comment\0", 8) + file.substr(10)),
              "content");
}

TEST(Gzip, hasAHeaderThatAChecksumMayGuard) {
    std::string file = gzipped("content");
    file[3] = 2;
    // The CRC-32 of the ten bytes before, as computed by gzip's own rules; its lower half.
    const auto crc = checksum::update(0, file.data(), 10) & 0xFFFF;
    const std::string right{static_cast<char>(crc & 0xFF), static_cast<char>(crc >> 8)};
    EXPECT_EQ(unzipped(file.substr(0, 10) + right + file.substr(10)), "content");
    const std::string wrong{right[0], static_cast<char>(right[1] ^ 1)};
    EXPECT_EQ(refusal(file.substr(0, 10) + wrong + file.substr(10)),
              "damaged gzip file: checksum mismatch in a header");
}

TEST(Gzip, thatIsDamagedIsRefused) {
    const std::string start = "damaged gzip file: ";
    const std::string good = gzipped("content");
    std::string bad = good;
    bad[2] = 7;
    EXPECT_EQ(refusal(bad), start + "an unknown method of compression");
    bad = good;
    bad[3] = '\x20';
    EXPECT_EQ(refusal(bad), start + "a header of an unknown kind");
    bad = good;
    bad[good.size() - 8] ^= 1;
    EXPECT_EQ(refusal(bad), start + "checksum mismatch");
    bad = good;
    bad[good.size() - 1] ^= 1;
    EXPECT_EQ(refusal(bad), start + "length mismatch");
    bad = good;
    bad[10] = 7;
    EXPECT_EQ(refusal(bad), start + "a block of unknown type");
    EXPECT_EQ(refusal(good + "x"), start + "other data behind it");
    EXPECT_EQ(refusal(good + '\x1F' + 'x'), start + "other data behind it");
    EXPECT_EQ(refusal(good + std::string("\0\0x", 3)), start + "other data behind it");
}

TEST(Gzip, thatIsCutAnywhereIsRefused) {
    const std::string good = gzipped("content");
    for (std::size_t size = 1; size < good.size(); ++size) {
        EXPECT_NE(refusal(good.substr(0, size)), "") << size;
    }
}

}  // namespace
