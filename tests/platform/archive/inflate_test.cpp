#include "platform/archive/inflate.h"

#include <gtest/gtest.h>

#include "tests/platform/archive/deflate_stream.h"
#include "tests/platform/archive/inflate_fixture.h"

// Streams built bit by bit, each with the verdict it must get and why.

namespace {

using namespace testing;
using inflation::Verdict;
using S = DeflateStream;

/// Decodes the stream as a whole and in pieces of small sizes; all must agree. What comes out before a fault
/// must be the beginning of `content`.
void expectVerdict(const std::string& stream, Verdict verdict, const std::string& content) {
    for (const std::size_t piece : {0u, 1u, 2u, 3u, 7u, 8u, 21u, 23u}) {
        if (piece > 0 && piece < 21 && stream.size() > 10'000) continue;
        const Inflated result = inflate(stream, piece == 0 ? stream.size() + 1 : piece);
        EXPECT_EQ(result.verdict, verdict) << inflation::phraseOf(result.verdict) << ", pieces of " << piece;
        if (verdict == Verdict::complete) {
            EXPECT_EQ(result.content, content) << "pieces of " << piece;
            EXPECT_EQ(result.consumed, stream.size());
        } else {
            EXPECT_TRUE(content.starts_with(result.content)) << "pieces of " << piece;
        }
    }
}
void expectContent(const S& stream, const std::string& content) {
    expectVerdict(stream.bytes(), Verdict::complete, content);
}
void expectFault(const S& stream, Verdict verdict, const std::string& content = "") {
    expectVerdict(stream.bytes(), verdict, content);
    // The same where the fast loop meets it: with much before and behind it.
    const std::string before(1000, 'b');
    S long_;
    long_.storedBlock(before, false);
    expectVerdict(long_.bytes() + stream.bytes() + std::string(100, '\x55'), verdict, before + content);
}

// ---- Stored blocks --------------------------------------------------------------------------------------

TEST(InflateStored, givesItsBytes) {
    for (const std::size_t size : {0u, 1u, 7u, 8u, 9u, 100u, 65'535u}) {
        expectContent(S().storedBlock(std::string(size, 's')), std::string(size, 's'));
    }
}

TEST(InflateStored, beginsAtTheNextByteWhateverIsInTheBitsBefore) {
    expectContent(S().fixedBlock("a", false).storedBlock("b", false).storedBlock("c"), "abc");
    S stream;
    stream.header(true, S::storedType).bits(31, 5).bits(1, 16).bits(0xFFFE, 16).bits('x', 8);
    expectContent(stream, "x");
}

TEST(InflateStored, refusesALengthThatContradictsItsComplement) {
    expectFault(S().header(true, S::storedType).align().bits(1, 16).bits(0xFFFF, 16).bits('x', 8),
                Verdict::badStoredLength);
    expectFault(S().header(true, S::storedType).align().bits(0, 16).bits(0, 16), Verdict::badStoredLength);
}

TEST(InflateStored, needsAllItsBytes) {
    const std::string whole = S().storedBlock("content").bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        expectVerdict(whole.substr(0, size), Verdict::endsEarly,
                      size <= 5 ? "" : std::string("content").substr(0, size - 5));
    }
}

// ---- Blocks ---------------------------------------------------------------------------------------------

TEST(InflateBlocks, followEachOtherUpToTheLast) {
    S stream;
    stream.fixedBlock("one ", false).storedBlock("two ", false).fixedBlock("", false);
    stream.dynamicHeader(lengthsOf("3", 1), {0}, false);
    stream.code(0, 1).code(1, 1).fixedBlock(" four");
    expectContent(stream, "one two 3 four");
}

TEST(InflateBlocks, endWhereTheLastOneEnds) {
    const std::string stream = S().fixedBlock("x").bytes();
    const Inflated result = inflate(stream + "more", 1000);
    EXPECT_EQ(result.verdict, Verdict::complete);
    EXPECT_EQ(result.content, "x");
    EXPECT_EQ(result.consumed, stream.size());
}

TEST(InflateBlocks, refusesTheUnknownType) {
    expectFault(S().header(true, S::unknownType), Verdict::badBlockType);
    expectFault(S().header(false, S::unknownType), Verdict::badBlockType);
}

TEST(InflateBlocks, refusesAStreamWithoutALastBlock) {
    expectVerdict("", Verdict::endsEarly, "");
    expectVerdict(S().storedBlock("x", false).bytes(), Verdict::endsEarly, "x");
}

// ---- Fixed codes ----------------------------------------------------------------------------------------

TEST(InflateFixed, knowsEveryLiteral) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    expectContent(S().fixedBlock(all + all), all + all);
}

TEST(InflateFixed, knowsEveryLength) {
    // Symbol, extra bits and base of RFC 1951, section 3.2.5.
    unsigned base = 3;
    for (unsigned symbol = 257; symbol <= 284; ++symbol) {
        const unsigned extraBits = symbol < 265 ? 0 : (symbol - 261) / 4;
        for (const unsigned extra : {0u, (1u << extraBits) - 1}) {
            S stream;
            stream.header(true, S::fixedType).fixedLiterals("xy").fixedSymbol(symbol).bits(extra, extraBits);
            stream.code(0, 5).fixedSymbol(256);
            expectContent(stream, "x" + std::string(1 + base + extra, 'y'));
        }
        base += 1u << extraBits;
    }
    S longest;
    longest.header(true, S::fixedType).fixedLiterals("x").fixedSymbol(285).code(0, 5).fixedSymbol(256);
    expectContent(longest, std::string(259, 'x'));
}

TEST(InflateFixed, knowsEveryDistance) {
    std::string before(32'768, '\0');
    for (std::size_t i = 0; i < before.size(); ++i) before[i] = static_cast<char>(i * 7919 >> 5);
    unsigned base = 1;
    for (unsigned symbol = 0; symbol < 30; ++symbol) {
        const unsigned extraBits = symbol < 4 ? 0 : symbol / 2 - 1;
        for (const unsigned extra : {0u, (1u << extraBits) - 1}) {
            S stream;
            stream.storedBlock(before, false).header(true, S::fixedType).fixedSymbol(260);
            stream.code(symbol, 5).bits(extra, extraBits).fixedSymbol(256);
            std::string expected = before;
            for (int i = 0; i < 6; ++i) expected += expected[expected.size() - base - extra];
            expectContent(stream, expected);
        }
        base += 1u << extraBits;
    }
}

TEST(InflateFixed, repeatsWhatAMatchItselfWrites) {
    for (unsigned distance = 1; distance <= 40; ++distance) {
        std::string expected;
        for (unsigned i = 0; i < distance; ++i) expected += static_cast<char>('A' + i);
        S stream;
        stream.header(true, S::fixedType).fixedLiterals(expected).fixedSymbol(284).bits(30, 5);  // length 257
        const unsigned symbol = distance < 5    ? distance - 1
                                : distance < 9  ? 4 + (distance - 5) / 2
                                : distance < 17 ? 6 + (distance - 9) / 4
                                : distance < 33 ? 8 + (distance - 17) / 8
                                                : 10;
        const unsigned extraBits = symbol < 4 ? 0 : symbol / 2 - 1;
        const unsigned first = distance < 5    ? distance
                               : distance < 9  ? 5
                               : distance < 17 ? 9
                               : distance < 33 ? 17
                                               : 33;
        stream.code(symbol, 5).bits((distance - first) & ((1u << extraBits) - 1), extraBits).fixedSymbol(256);
        for (int i = 0; i < 257; ++i) expected += expected[expected.size() - distance];
        expectContent(stream, expected);
    }
}

TEST(InflateFixed, refusesSymbolsWithoutAMeaning) {
    for (const unsigned symbol : {286u, 287u}) {
        expectFault(S().header(true, S::fixedType).fixedLiterals("a").fixedSymbol(symbol), Verdict::badCode,
                    "a");
    }
    for (const unsigned distance : {30u, 31u}) {
        expectFault(S().header(true, S::fixedType).fixedLiterals("a").fixedSymbol(257).code(distance, 5),
                    Verdict::badCode, "a");
    }
}

TEST(InflateFixed, refusesAMatchBeforeTheFirstByte) {
    S first;
    first.header(true, S::fixedType).fixedSymbol(257).code(0, 5);
    expectVerdict(first.bytes() + std::string(40, 'x'), Verdict::distanceTooFar, "");
    for (std::size_t size = 1; size < 30; ++size) {
        // One further than what is there.
        S stream;
        stream.header(true, S::fixedType).fixedLiterals(std::string(size, 'x')).fixedSymbol(257);
        stream.code(9, 5).bits(7, 3).fixedSymbol(256);  // distance 32
        expectVerdict(stream.bytes(), Verdict::distanceTooFar, std::string(size, 'x'));
    }
}

TEST(InflateFixed, refusesAMatchBeforeTheFirstByteOnceTheWindowHasMoved) {
    // 300 KiB on, the buffer has been slid: what lies before it is still within reach of no match beyond 32
    // KiB.
    const std::string before(300'000, 'w');
    S stream;
    for (std::size_t at = 0; at < before.size(); at += 60'000)
        stream.storedBlock(before.substr(at, 60'000), false);
    stream.header(true, S::fixedType).fixedSymbol(257).code(29, 5).bits(8191, 13).fixedSymbol(256);
    expectContent(stream, before + "www");
}

TEST(InflateFixed, needsItsEnd) {
    const std::string content = "some content that is long enough for the fast loop, too";
    const std::string whole = S().fixedBlock(content).bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Inflated result = inflate(whole.substr(0, size), 1000);
        EXPECT_EQ(result.verdict, Verdict::endsEarly) << size;
        EXPECT_TRUE(content.starts_with(result.content)) << size;
    }
}

// ---- Dynamic codes --------------------------------------------------------------------------------------

TEST(InflateDynamic, decodesWithItsOwnCodes) {
    // a and the end: one bit each. Distances: one code of one bit, as a code that is not complete may be.
    std::vector<unsigned> symbols = lengthsOf("a", 2);
    symbols.resize(286);
    symbols[285] = 1;
    S stream;
    stream.dynamicHeader(symbols, {1}).code(2, 2).code(0, 1).code(0, 1).code(3, 2);
    expectContent(stream, std::string(259, 'a'));
}

TEST(InflateDynamic, decodesTheLongestCodes) {
    // Lengths 1, 2, 3 ... 14, 15, 15: the code of symbol i is i ones and a zero.
    std::vector<unsigned> symbols(257);
    std::string literals;
    for (unsigned i = 0; i < 15; ++i) {
        literals += static_cast<char>('a' + i);
        symbols['a' + i] = i + 1;
    }
    symbols[256] = 15;
    S stream;
    stream.dynamicHeader(symbols, {0});
    for (int times = 0; times < 5; ++times) {
        for (unsigned i = 0; i < 15; ++i) stream.code((1u << (i + 1)) - 2, i + 1);
    }
    stream.code(0x7FFF, 15);
    std::string expected;
    for (int times = 0; times < 5; ++times) expected += literals;
    expectContent(stream, expected);
}

TEST(InflateDynamic, decodesTheLongestMatches) {
    // Codes as above: a literal of eleven bits, as long as one lookup finds, and a length, a distance and the
    // end of fifteen; with their extra bits one turn takes 59 bits, and whatever comes next has long codes
    // again.
    std::vector<unsigned> symbols(286), distances(30);
    for (unsigned i = 0; i < 14; ++i) symbols['a' + i] = distances[14 + i] = i + 1;
    symbols[256] = symbols[284] = distances[28] = distances[29] = 15;
    std::string expected;
    for (unsigned i = 0; i < 1000; ++i) expected += static_cast<char>(i * i % 251);
    S stream;
    stream.storedBlock(expected, false).header(false, S::fixedType);
    while (expected.size() < 30'000) {  // a history to reach back into: matches of 258 bytes, 1,000 back
        stream.fixedSymbol(285).code(19, 5).bits(1000 - 769, 8);
        expected += expected.substr(expected.size() - 1000, 258);
    }
    stream.fixedSymbol(256).dynamicHeader(symbols, distances);
    for (unsigned turn = 0; turn < 64; ++turn) {
        const unsigned length = 227 + turn % 31, distance = 16385 + turn * 127;
        for (unsigned i = 0; i < turn % 8; ++i) stream.code(0, 1);
        stream.code(0x7FE, 11).code(0x7FFF, 15).bits(length - 227, 5);
        stream.code(0x7FFE, 15).bits(distance - 16385, 13);
        expected += std::string(turn % 8, 'a') + 'k';
        expected += expected.substr(expected.size() - distance, length);
    }
    expectContent(stream.code(0x7FFE, 15), expected);
}

TEST(InflateDynamic, takesABlockOfNothingButItsEnd) {
    std::vector<unsigned> symbols(257);
    symbols[256] = 1;
    expectContent(S().dynamicHeader(symbols, {0}).code(0, 1), "");
}

TEST(InflateDynamic, refusesTheBitThatTheOnlyCodeLeavesOver) {
    std::vector<unsigned> symbols(257);
    symbols[256] = 1;
    expectFault(S().dynamicHeader(symbols, {0}).code(1, 1).bits(0, 32), Verdict::badCode);
    // A match without any distance code, and with the other bit of the only one.
    symbols = lengthsOf("a", 2);
    symbols.resize(258);
    symbols[257] = 1;
    expectFault(S().dynamicHeader(symbols, {0}).code(2, 2).code(0, 1).bits(0, 32), Verdict::badCode, "a");
    expectFault(S().dynamicHeader(symbols, {1}).code(2, 2).code(0, 1).code(1, 1).bits(0, 32),
                Verdict::badCode, "a");
}

TEST(InflateDynamic, refusesCodesThatLeaveBitsOver) {
    std::vector<unsigned> symbols(257);
    symbols[256] = 2;  // one code of two bits
    expectFault(S().dynamicHeader(symbols, {0}).bits(0, 32), Verdict::badCodeLengths);
    expectFault(S().dynamicHeader(lengthsOf("ab", 2), {0}).bits(0, 32), Verdict::badCodeLengths);
    expectFault(S().dynamicHeader(lengthsOf("a", 1), {2}).bits(0, 32), Verdict::badCodeLengths);
    expectFault(S().dynamicHeader(lengthsOf("a", 1), {2, 2, 2}).bits(0, 32), Verdict::badCodeLengths);
}

TEST(InflateDynamic, refusesCodesThatOverlap) {
    expectFault(S().dynamicHeader(lengthsOf("ab", 1), {0}).bits(0, 32), Verdict::badCodeLengths);
    expectFault(S().dynamicHeader(lengthsOf("a", 1), {1, 1, 1}).bits(0, 32), Verdict::badCodeLengths);
}

TEST(InflateDynamic, refusesABlockThatCannotEnd) {
    std::vector<unsigned> symbols(257);
    symbols['a'] = symbols['b'] = 1;
    expectFault(S().dynamicHeader(symbols, {0}).bits(0, 32), Verdict::noEndCode);
}

TEST(InflateDynamic, refusesMoreCodesThanThereAre) {
    for (const unsigned count : {287u, 288u}) {
        std::vector<unsigned> symbols = lengthsOf("a", 1);
        symbols.resize(count);
        expectFault(S().dynamicHeader(symbols, {0}).bits(0, 32), Verdict::badCodeCount);
    }
    for (const unsigned count : {31u, 32u}) {
        expectFault(S().dynamicHeader(lengthsOf("a", 1), std::vector<unsigned>(count)).bits(0, 32),
                    Verdict::badCodeCount);
    }
    std::vector<unsigned> most = lengthsOf("a", 1);
    most.resize(286);
    expectContent(S().dynamicHeader(most, std::vector<unsigned>(30)).code(0, 1).code(1, 1), "a");
}

/// A dynamic block whose code for lengths has symbols 0 (of one bit), `first` and `second` (of two).
S withLengthCodes(unsigned first, unsigned second) {
    static const std::vector<unsigned> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                             11, 4,  12, 3, 13, 2, 14, 1, 15};
    S stream;
    stream.header(true, S::dynamicType).bits(0, 5).bits(0, 5).bits(19 - 4, 4);
    for (const unsigned symbol : order)
        stream.bits(symbol == 0 ? 1 : symbol == first || symbol == second ? 2 : 0, 3);
    return stream;
}

TEST(InflateLengths, repeatTheLastOneAndZeros) {
    // 97 zeros as 18 (11 + 86), a one for "a", 158 zeros as 18 (138) and 20 times 0, ones for the end ...
    S stream = withLengthCodes(1, 18);
    stream.code(3, 2).bits(86, 7).code(2, 2);
    stream.code(3, 2).bits(127, 7);
    for (int i = 0; i < 20; ++i) stream.code(0, 1);
    stream.code(2, 2).code(0, 1);  // ... and no distance
    stream.code(0, 1).code(0, 1).code(1, 1);
    expectContent(stream, "aa");
}

TEST(InflateLengths, refuseARepetitionOfNothing) {
    expectFault(withLengthCodes(1, 16).code(3, 2).bits(0, 2).bits(0, 32), Verdict::badCodeLengths);
}

TEST(InflateLengths, refuseARepetitionBeyondTheirNumber) {
    S stream = withLengthCodes(1, 18);
    stream.code(3, 2).bits(127, 7).code(3, 2).bits(127, 7).bits(0, 32);
    expectFault(stream, Verdict::badCodeLengths);
}

TEST(InflateLengths, refuseACodeThatIsNotComplete) {
    // Other codes may leave bits over, that for lengths never: none at all, one of one bit, two of two.
    S none;
    none.header(true, S::dynamicType).bits(0, 5).bits(0, 5).bits(0, 4).bits(0, 12).bits(0, 32);
    expectFault(none, Verdict::badCodeLengths);
    S one;
    one.header(true, S::dynamicType).bits(0, 5).bits(0, 5).bits(0, 4).bits(0, 9).bits(1, 3).bits(0, 32);
    expectFault(one, Verdict::badCodeLengths);
    S overlapping;
    overlapping.header(true, S::dynamicType).bits(0, 5).bits(0, 5).bits(0, 4).bits(0x249, 12).bits(0, 32);
    expectFault(overlapping, Verdict::badCodeLengths);
}

TEST(InflateDynamic, needsItsEnd) {
    S stream;
    stream.dynamicHeader(lengthsOf("a", 1), {0}).code(0, 1).code(1, 1);
    for (std::size_t size = 0; size + 1 < stream.bytes().size(); ++size) {
        expectVerdict(stream.bytes().substr(0, size), Verdict::endsEarly, "");
    }
}

}  // namespace
