#include "platform/archive/crc32.h"

#include <array>

namespace checksum {
namespace {

constexpr std::uint32_t polynomial = 0xEDB88320;  // reflected
constexpr std::size_t slices = 8;

using Table = std::array<std::uint32_t, 256>;

/// Table k holds what a byte contributes once k more bytes have followed it.
constexpr std::array<Table, slices> makeTables() {
    std::array<Table, slices> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? polynomial : 0);
        tables[0][byte] = crc;
    }
    for (std::size_t k = 1; k < slices; ++k) {
        for (std::uint32_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t before = tables[k - 1][byte];
            tables[k][byte] = before >> 8 ^ tables[0][before & 0xFF];
        }
    }
    return tables;
}

constexpr std::array<Table, slices> tables = makeTables();

std::uint32_t load32(const std::uint8_t* at) {
    return static_cast<std::uint32_t>(at[0]) | static_cast<std::uint32_t>(at[1]) << 8 |
           static_cast<std::uint32_t>(at[2]) << 16 | static_cast<std::uint32_t>(at[3]) << 24;
}

}  // namespace

std::uint32_t updatePortable(std::uint32_t crc, const void* bytes, std::size_t size) {
    const auto* next = static_cast<const std::uint8_t*>(bytes);
    crc = ~crc;
    for (; size >= slices; size -= slices, next += slices) {
        const std::uint32_t low = crc ^ load32(next);
        const std::uint32_t high = load32(next + 4);
        crc = tables[7][low & 0xFF] ^ tables[6][low >> 8 & 0xFF] ^ tables[5][low >> 16 & 0xFF] ^
              tables[4][low >> 24] ^ tables[3][high & 0xFF] ^ tables[2][high >> 8 & 0xFF] ^
              tables[1][high >> 16 & 0xFF] ^ tables[0][high >> 24];
    }
    for (; size > 0; --size, ++next) crc = crc >> 8 ^ tables[0][(crc ^ *next) & 0xFF];
    return ~crc;
}

std::uint32_t update(std::uint32_t crc, const void* bytes, std::size_t size) {
    static const Function best = accelerated() != nullptr ? accelerated() : updatePortable;
    return best(crc, bytes, size);
}

}  // namespace checksum
