#include "tools/tar/header.h"

#include <gtest/gtest.h>

#include "tests/tools/tar/refusal.h"
#include "tests/tools/tar/tar_builder.h"

namespace {

using tar::Kind;
using testing::refusalOf;
using testing::TarEntry;
using testing::tarHeader;

tar::Member read(const TarEntry& entry) {
    return tar::readHeader(tarHeader(entry));
}

TEST(TarHeader, isReadFieldByField) {
    const tar::Member member = read({.name = "a/b",
                                     .content = "12345",
                                     .kind = '2',
                                     .link = "c",
                                     .mode = "0104755",
                                     .time = "00000001750"});
    EXPECT_EQ(member.name, "a/b");
    EXPECT_EQ(member.link, "c");
    EXPECT_EQ(member.size, 5u);
    EXPECT_EQ(member.mode, 0755u) << "the nine bits alone";
    EXPECT_EQ(member.time.seconds, 1000);
    EXPECT_EQ(member.kind, Kind::symbolicLink);
}

TEST(TarHeader, knowsTheKinds) {
    EXPECT_EQ(read({.name = "a", .kind = '0'}).kind, Kind::file);
    EXPECT_EQ(read({.name = "a", .kind = '\0'}).kind, Kind::file);
    EXPECT_EQ(read({.name = "a", .kind = '7'}).kind, Kind::file);
    EXPECT_EQ(read({.name = "a/", .kind = '\0'}).kind, Kind::directory) << "as the oldest archives have it";
    EXPECT_EQ(read({.name = "a", .kind = '5'}).kind, Kind::directory);
    EXPECT_EQ(read({.name = "a", .kind = '1'}).kind, Kind::hardLink);
    EXPECT_EQ(read({.name = "a", .kind = 'L'}).kind, Kind::longName);
    EXPECT_EQ(read({.name = "a", .kind = 'K'}).kind, Kind::longLink);
    EXPECT_EQ(read({.name = "a", .kind = 'x'}).kind, Kind::extended);
    EXPECT_EQ(read({.name = "a", .kind = 'g'}).kind, Kind::globallyExtended);
    for (const char kind : {'3', '4', '6', 'S', 'M', 'V', 'D', 'N', 'X', 'A'}) {
        EXPECT_EQ(read({.name = "a", .kind = kind}).kind, Kind::unsupported) << kind;
    }
}

TEST(TarHeader, joinsThePrefixInTheStandardsFormatAlone) {
    EXPECT_EQ(read({.name = "b", .prefix = "a"}).name, "a/b");
    EXPECT_EQ(read({.name = "b", .magic = "ustar", .prefix = "a"}).name, "a/b") << "without a version";
    EXPECT_EQ(read({.name = "b", .magic = "ustar  ", .prefix = "00000000001"}).name, "b")
        << "times, in GNU's";
    EXPECT_EQ(read({.name = "b", .magic = "", .prefix = "a"}).name, "b");
}

TEST(TarHeader, takesTextsThatFillTheirFields) {
    const std::string name(100, 'n'), prefix(155, 'p'), link(100, 'l');
    const tar::Member member = read({.name = name, .link = link, .prefix = prefix});
    EXPECT_EQ(member.name, prefix + '/' + name);
    EXPECT_EQ(member.link, link);
}

TEST(TarHeader, readsNumbersInEveryWriting) {
    EXPECT_EQ(read({.name = "a", .size = "   17 "}).size, 15u);
    EXPECT_EQ(read({.name = "a", .size = "777777777777"}).size, 0xFFFFFFFFFu);
    EXPECT_EQ(read({.name = "a", .size = " "}).size, 0u);
    const std::string large("\x80\0\0\0\0\0\0\x02\0\0\0\1", 12);
    EXPECT_EQ(read({.name = "a", .size = large}).size, 0x200000001u);
    EXPECT_EQ(read({.name = "a", .time = std::string(11, '\xFF') + '\xFE'}).time.seconds, -2);
}

TEST(TarHeader, refusesNumbersThatAreNone) {
    const std::string fault = "a header with a number that is none";
    EXPECT_EQ(refusalOf([] { read({.name = "a", .size = "8"}); }), fault);
    EXPECT_EQ(refusalOf([] { read({.name = "a", .size = "1 1"}); }), fault);
    EXPECT_EQ(refusalOf([] { read({.name = "a", .time = "-1"}); }), fault);
    EXPECT_EQ(refusalOf([] { read({.name = "a", .size = std::string(12, '\xFF')}); }), fault) << "negative";
    const std::string absurd("\x80\0\0\1\0\0\0\0\0\0\0\0", 12);
    EXPECT_EQ(refusalOf([&] { read({.name = "a", .size = absurd}); }), fault);
    const std::string bit63("\x80\0\0\0\x80\0\0\0\0\0\0\0", 12);
    EXPECT_EQ(refusalOf([&] { read({.name = "a", .size = bit63}); }), fault);
}

TEST(TarHeader, hasTheRightChecksum) {
    tar::Block block = tarHeader({.name = "a"});
    EXPECT_TRUE(tar::isHeader(block));
    for (const std::size_t place : {0u, 100u, 150u, 511u}) {
        tar::Block damaged = block;
        damaged[place] ^= 1;
        EXPECT_FALSE(tar::isHeader(damaged)) << place;
    }
    block[150] = 'x';
    EXPECT_FALSE(tar::isHeader(block));
}

TEST(TarHeader, mayHaveAChecksumOfSignedBytes) {
    tar::Block block = tarHeader({.name = "a\xC3\xA4"});
    int sum = 0;
    for (std::size_t i = 0; i < block.size(); ++i) {
        const bool inChecksum = i >= 148 && i < 156;
        sum += inChecksum ? ' ' : static_cast<std::int8_t>(block[i]);
    }
    char text[8];
    std::snprintf(text, sizeof text, "%06o", static_cast<unsigned>(sum));
    std::copy_n(text, 7, block.begin() + 148);
    EXPECT_TRUE(tar::isHeader(block));
}

TEST(TarHeader, isNoEndMark) {
    tar::Block block{};
    EXPECT_TRUE(tar::isEndMark(block));
    block[511] = 1;
    EXPECT_FALSE(tar::isEndMark(block));
}

}  // namespace
