#include "platform/archive/inflate_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace {

using namespace inflation;

using Lengths = std::vector<std::uint8_t>;

/// The codes that RFC 1951, section 3.2.2 gives to symbols of these lengths, first bit lowest.
std::vector<unsigned> codesOf(const Lengths& lengths) {
    std::vector<unsigned> codes(lengths.size());
    unsigned code = 0;
    for (unsigned length = 1; length <= longestCode; ++length, code <<= 1) {
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            if (lengths[symbol] != length) continue;
            for (unsigned bit = 0; bit < length; ++bit)
                codes[symbol] |= (code >> bit & 1) << (length - 1 - bit);
            ++code;
        }
    }
    return codes;
}

Entry lookUp(const Entry* table, unsigned indexBits, std::uint64_t bits) {
    const Entry entry = table[bits & ((1u << indexBits) - 1)];
    return entry & linkFlag ? followLink(table, entry, bits >> indexBits) : entry;
}

/// Every symbol must be found by its code, whatever bits follow.
void expectSymbols(const Lengths& lengths, const SymbolTable& table) {
    const std::vector<unsigned> codes = codesOf(lengths);
    for (std::size_t symbol = 0; symbol < lengths.size() && symbol < 256; ++symbol) {
        if (lengths[symbol] == 0) continue;
        for (const std::uint64_t behind : {0x0000ull, 0xFFFFull, 0x5A5Aull}) {
            const Entry entry =
                lookUp(table.data(), symbolIndexBits, codes[symbol] | behind << lengths[symbol]);
            ASSERT_EQ(entry & (literalFlag | specialFlag), literalFlag) << symbol;
            ASSERT_EQ(valueOf(entry), symbol);
            ASSERT_EQ(dropOf(entry), lengths[symbol]);
        }
    }
}

/// Random lengths of a complete code of `count` symbols: leaves of a tree that is split at random.
Lengths randomCode(std::mt19937& random, std::size_t count) {
    Lengths lengths{1, 1};
    while (lengths.size() < count) {
        const std::size_t leaf = random() % lengths.size();
        if (lengths[leaf] == longestCode) continue;
        ++lengths[leaf];
        lengths.push_back(lengths[leaf]);
    }
    std::shuffle(lengths.begin(), lengths.end(), random);
    return lengths;
}

TEST(InflateTables, decodeEveryCompleteCode) {
    std::mt19937 random(1);
    SymbolTable table;
    for (int round = 0; round < 300; ++round) {
        const Lengths lengths = randomCode(random, 2 + random() % 255);
        ASSERT_TRUE(buildSymbols(lengths.data(), lengths.size(), table));
        expectSymbols(lengths, table);
    }
}

TEST(InflateTables, haveRoomForTheDeepestCodes) {
    // As many long codes as a code of 288 symbols can have: under each of the shortest prefixes a full
    // subtree.
    for (unsigned depth = symbolIndexBits + 1; depth <= longestCode; ++depth) {
        Lengths lengths;
        unsigned spare = 1u << depth;  // of the codes of that depth
        for (unsigned length = 1; lengths.size() + 2 < symbolCount && length < depth; ++length) {
            lengths.push_back(static_cast<std::uint8_t>(length));
            spare -= 1u << (depth - length);
        }
        for (; spare > 0; --spare) lengths.push_back(static_cast<std::uint8_t>(depth));
        const auto table = std::make_unique<SymbolTable>();
        ASSERT_TRUE(buildSymbols(lengths.data(), lengths.size(), *table)) << depth;
        expectSymbols(lengths, *table);
    }
}

TEST(InflateTables, refuseWhatIsNoCode) {
    SymbolTable symbols;
    DistanceTable distances;
    LengthCodeTable lengthCodes;
    const auto refused = [&](const Lengths& lengths) {
        return !buildSymbols(lengths.data(), lengths.size(), symbols) &&
               !buildDistances(lengths.data(), lengths.size(), distances) &&
               !buildLengthCodes(lengths.data(), lengths.size(), lengthCodes);
    };
    EXPECT_TRUE(refused({1, 1, 1}));
    EXPECT_TRUE(refused({1, 1, 7}));
    EXPECT_TRUE(refused({1, 2, 2, 2}));
    EXPECT_TRUE(refused({2}));
    EXPECT_TRUE(refused({1, 2}));
    EXPECT_TRUE(refused({2, 2, 2}));
    EXPECT_TRUE(refused({7}));
}

TEST(InflateTables, letSymbolsAndDistancesHaveOneCodeOrNone) {
    SymbolTable symbols;
    DistanceTable distances;
    LengthCodeTable lengthCodes;
    for (const Lengths& lengths : {Lengths{0, 0}, Lengths{0, 1}, Lengths{1, 0}}) {
        EXPECT_TRUE(buildSymbols(lengths.data(), lengths.size(), symbols));
        EXPECT_TRUE(buildDistances(lengths.data(), lengths.size(), distances));
        EXPECT_FALSE(buildLengthCodes(lengths.data(), lengths.size(), lengthCodes));
        // What has no code is known as such, by its one bit at most.
        const Entry over = lookUp(symbols.data(), symbolIndexBits, 1);
        EXPECT_EQ(over & (specialFlag | endFlag | linkFlag), specialFlag);
        EXPECT_EQ(dropOf(over), 1u);
    }
}

TEST(InflateTables, giveBasesAndExtraBits) {
    SymbolTable symbols;
    DistanceTable distances;
    buildFixed(symbols, distances);
    // Length symbol 269: code 0001101, base 19, two extra bits. Distance 29: base 24577, thirteen.
    const std::uint64_t length = 0b1011000 | 3ull << 7;
    EXPECT_EQ(baseAndExtra(lookUp(symbols.data(), symbolIndexBits, length), length), 22u);
    const std::uint64_t distance = 0b10111 | 0x1FFFull << 5;
    EXPECT_EQ(baseAndExtra(lookUp(distances.data(), distanceIndexBits, distance), distance), 32'768u);
    const Entry end = lookUp(symbols.data(), symbolIndexBits, 0);
    EXPECT_EQ(end & (specialFlag | endFlag), specialFlag | endFlag);
    EXPECT_EQ(dropOf(end), 7u);
}

}  // namespace
