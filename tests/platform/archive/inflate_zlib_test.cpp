// The decoder beside zlib, which must agree on every verdict: on streams that zlib made of random content in
// every manner it knows, on damaged ones, and on noise.

#include <gtest/gtest.h>

#include "tests/platform/archive/inflate_fixture.h"

#ifdef TAVEK_ZLIB

#include <zlib.h>

#include <random>
#include <vector>

#include "tests/testing/thoroughness.h"

namespace {

using namespace testing;
using inflation::Verdict;

std::string randomContent(std::mt19937& random) {
    const std::size_t size = random() % 3 == 0 ? random() % 40 : random() % 100'000;
    const unsigned letters = 1 + random() % 256;
    std::string content;
    while (content.size() < size) {
        // Letters at random, runs, and repetitions of what was before.
        const std::size_t length = 1 + random() % (random() % 8 == 0 ? 3000 : 30);
        const unsigned kind = random() % 4;
        if (kind == 0 && !content.empty()) {
            const std::size_t from =
                content.size() - 1 - random() % std::min<std::size_t>(content.size(), 40'000);
            for (std::size_t i = 0; i < length; ++i) content += content[from + i];
        } else if (kind == 1) {
            content.append(length, static_cast<char>(random() % letters));
        } else {
            for (std::size_t i = 0; i < length; ++i) content += static_cast<char>(random() % letters);
        }
    }
    return content;
}

std::string deflated(const std::string& content, std::mt19937& random) {
    static constexpr int strategies[] = {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};
    static constexpr int flushes[] = {Z_NO_FLUSH, Z_PARTIAL_FLUSH, Z_SYNC_FLUSH, Z_FULL_FLUSH, Z_BLOCK};
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, static_cast<int>(random() % 10), Z_DEFLATED, -15,
                           static_cast<int>(1 + random() % 9), strategies[random() % 5]),
              Z_OK);
    std::string packed(deflateBound(&stream, content.size()) + 100'000, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    for (std::size_t left = content.size(); left > 0;) {
        const std::size_t count = std::min<std::size_t>(left, 1 + random() % 50'000);
        stream.avail_in = static_cast<uInt>(count);
        left -= count;
        EXPECT_EQ(deflate(&stream, flushes[random() % 5]), Z_OK);
    }
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

struct Reference {
    bool complete = false;
    std::string content;
    std::size_t consumed = 0;
};

Reference inflatedByZlib(const std::string& packed, std::size_t limit) {
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, -15), Z_OK);
    Reference result;
    result.content.resize(limit);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(result.content.data());
    stream.avail_out = static_cast<uInt>(limit);
    result.complete = ::inflate(&stream, Z_FINISH) == Z_STREAM_END;
    result.content.resize(stream.total_out);
    result.consumed = stream.total_in;
    inflateEnd(&stream);
    return result;
}

/// zlib must agree on whether the stream is sound, on what it holds and on where it ends. True when it is.
bool expectAgreement(const std::string& packed, std::size_t piece) {
    constexpr std::size_t limit = 1 << 20;
    const Reference reference = inflatedByZlib(packed, limit);
    const Inflated mine = inflate(packed, piece);
    if (mine.content.size() > limit) return false;  // zlib had no room for it
    EXPECT_EQ(mine.verdict == Verdict::complete, reference.complete) << inflation::phraseOf(mine.verdict);
    if (mine.verdict != Verdict::complete) return false;
    EXPECT_EQ(mine.content, reference.content);
    EXPECT_EQ(mine.consumed, reference.consumed);
    return true;
}

TEST(InflateBesideZlib, decodesWhatZlibPacked) {
    std::mt19937 random(1);
    for (int round = 0; round < 150 / static_cast<int>(oneIn); ++round) {
        SCOPED_TRACE(round);
        const std::string content = randomContent(random);
        const std::string packed = deflated(content, random);
        for (const std::size_t piece : {packed.size(), 1 + random() % 100, std::size_t{64} * 1024}) {
            const Inflated result = inflate(packed, piece);
            ASSERT_EQ(result.verdict, Verdict::complete) << inflation::phraseOf(result.verdict);
            ASSERT_EQ(result.content, content);
            ASSERT_EQ(result.consumed, packed.size());
        }
    }
}

TEST(InflateBesideZlib, agreesOnEveryBeginning) {
    std::mt19937 random(2);
    for (int round = 0; round < 15; ++round) {
        const std::string packed = deflated(randomContent(random).substr(0, 500), random);
        for (std::size_t size = 0; size < packed.size(); size += oneIn) {
            ASSERT_FALSE(expectAgreement(packed.substr(0, size), 1 + random() % 40)) << round << ", " << size;
        }
    }
}

TEST(InflateBesideZlib, agreesOnEveryChangedBit) {
    std::mt19937 random(3);
    int sound = 0;
    for (int round = 0; round < 6; ++round) {
        const std::string packed = deflated(randomContent(random).substr(0, 300), random);
        for (std::size_t bit = 0; bit < 8 * packed.size(); bit += oneIn) {
            SCOPED_TRACE(bit);
            std::string changed = packed;
            changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ 1 << bit % 8);
            if (expectAgreement(changed, 1 + random() % 40)) ++sound;
        }
    }
    EXPECT_GT(sound, 0);  // a changed literal is a sound stream
}

TEST(InflateBesideZlib, agreesOnBytesChangedAnywhereInLongStreams) {
    std::mt19937 random(4);
    for (int round = 0; round < 200 / static_cast<int>(oneIn); ++round) {
        SCOPED_TRACE(round);
        std::string packed = deflated(randomContent(random), random);
        for (int change = 1 + static_cast<int>(random() % 3); change > 0; --change) {
            packed[random() % packed.size()] = static_cast<char>(random());
        }
        expectAgreement(packed, packed.size());
    }
}

TEST(InflateBesideZlib, agreesOnNoise) {
    std::mt19937 random(5);
    for (int round = 0; round < 20'000 / static_cast<int>(oneIn); ++round) {
        std::string noise(random() % 200, '\0');
        for (char& byte : noise) byte = static_cast<char>(random());
        // Blocks of every type alike: most noise would begin with a stored one that contradicts itself.
        if (!noise.empty()) noise[0] = static_cast<char>((noise[0] & ~7) | static_cast<int>(random() % 6));
        expectAgreement(noise, 1 + random() % 200);
    }
}

}  // namespace

#else

TEST(InflateBesideZlib, needsZlib) {
    GTEST_SKIP() << "zlib was not there when the tests were built (package zlib1g-dev; none for Windows)";
}

#endif
