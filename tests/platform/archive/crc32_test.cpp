#include "platform/archive/crc32.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/platform/archive/zip_image.h"

namespace {

using testing::crcOf;

struct Variant {
    const char* name;
    checksum::Function update;
};

std::vector<Variant> variants() {
    std::vector<Variant> all{{"best", checksum::update}, {"portable", checksum::updatePortable}};
    if (checksum::accelerated() != nullptr) all.push_back({"accelerated", checksum::accelerated()});
    return all;
}

class Crc32 : public testing::TestWithParam<Variant> {
  protected:
    static std::uint32_t of(std::string_view bytes, std::uint32_t before = 0) {
        return GetParam().update(before, bytes.data(), bytes.size());
    }
    static std::string sample(std::size_t size) {
        std::string bytes(size, '\0');
        std::uint32_t state = 1;
        for (char& byte : bytes) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        return bytes;
    }
};

INSTANTIATE_TEST_SUITE_P(Variants, Crc32, testing::ValuesIn(variants()),
                         [](const auto& variant) { return variant.param.name; });

TEST_P(Crc32, givesTheKnownValues) {
    EXPECT_EQ(of(""), 0u);
    EXPECT_EQ(of("123456789"), 0xCBF43926u);  // the check value of CRC catalogues
    EXPECT_EQ(of(std::string(1, '\0')), 0xD202EF8Du);
    EXPECT_EQ(of(std::string(32, '\xFF')), 0xFF6CAB0Bu);
    EXPECT_EQ(of("The quick brown fox jumps over the lazy dog"), 0x414FA339u);
}

TEST_P(Crc32, isThatOfBitByBitForEveryLength) {
    const std::string bytes = sample(1000);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        // A block of its exact size, so that a sanitizer notices a byte read beyond it.
        const std::vector<char> block(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(GetParam().update(0, block.data(), size), crcOf(bytes.substr(0, size))) << size;
    }
}

TEST_P(Crc32, doesNotDependOnAlignment) {
    const std::string bytes = sample(700);
    const auto block = std::make_unique<char[]>(bytes.size() + 64);
    for (std::size_t shift = 0; shift < 64; ++shift) {
        bytes.copy(block.get() + shift, bytes.size());
        EXPECT_EQ(of({block.get() + shift, bytes.size()}), crcOf(bytes)) << shift;
    }
}

TEST_P(Crc32, goesOnFromWhatWasSummedUpBefore) {
    const std::string bytes = sample(600);
    const std::uint32_t whole = crcOf(bytes);
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        EXPECT_EQ(of(std::string_view(bytes).substr(cut), of(std::string_view(bytes).substr(0, cut))), whole);
    }
}

TEST_P(Crc32, isThatOfBitByBitForLongInputs) {
    for (const std::size_t size : {65'536u, 100'001u, 1'000'003u}) {
        EXPECT_EQ(of(sample(size)), crcOf(sample(size))) << size;
    }
}

TEST_P(Crc32, noticesEveryChangedBit) {
    const std::string bytes = sample(200);
    const std::uint32_t sound = of(bytes);
    for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
        std::string changed = bytes;
        changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ 1 << bit % 8);
        EXPECT_NE(of(changed), sound) << bit;
    }
}

}  // namespace
