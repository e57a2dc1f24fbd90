#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The look-up tables that decode the Huffman codes of a DEFLATE block (RFC 1951).
///
/// A table is indexed with the next bits of the stream. An entry says what the code means and how many bits
/// it takes; a code longer than the index leads to a subtable, indexed with the bits behind.
namespace inflation {

/// One entry, packed for a single load:
///
///     bits 0-5    bits to drop: the code, and behind it the extra bits of a length or distance
///     bits 8-11   length of the code alone; of a link: index bits of the subtable
///     bits 12-15  what it is: the flags below
///     bits 16-31  the literal, the base of a length or distance, the place of the subtable
using Entry = std::uint32_t;

inline constexpr Entry literalFlag = 1 << 15;
inline constexpr Entry specialFlag = 1 << 14;  // neither a literal nor a length or distance:
inline constexpr Entry linkFlag = 1 << 13;     //   a link to a subtable,
inline constexpr Entry endFlag = 1 << 12;      //   the end of the block; with neither, no valid code

inline unsigned dropOf(Entry entry) {
    return entry & 63;
}
inline unsigned codeLengthOf(Entry entry) {
    return entry >> 8 & 15;
}
inline std::uint32_t valueOf(Entry entry) {
    return entry >> 16;
}

/// The entry that `link` leads to; `bits` are those behind the index.
inline Entry followLink(const Entry* table, Entry link, std::uint64_t bits) {
    return table[valueOf(link) + (bits & ((1u << codeLengthOf(link)) - 1))];
}
/// The value of a length or distance: its base, and what its extra bits add. `bits` begin with its code.
inline std::size_t baseAndExtra(Entry entry, std::uint64_t bits) {
    const std::uint64_t codeAndExtra = bits & ((std::uint64_t{1} << dropOf(entry)) - 1);
    return valueOf(entry) + static_cast<std::size_t>(codeAndExtra >> codeLengthOf(entry));
}

inline constexpr unsigned longestCode = 15;
inline constexpr std::size_t symbolCount = 288, distanceCount = 32, lengthCodeCount = 19;
inline constexpr unsigned symbolIndexBits = 11, distanceIndexBits = 8, lengthCodeIndexBits = 7;

/// Most entries that the subtables of a code can need. A subtable of index width w is opened for codes that
/// fill it wholly, down to one of w bits: at least w + 1 codes, so at most 2^w / (w + 1) entries per symbol,
/// which grows with w up to longestCode - indexBits.
constexpr std::size_t subtableBound(std::size_t symbols, unsigned indexBits) {
    const unsigned width = longestCode - indexBits;
    return symbols * (std::size_t{1} << width) / (width + 1);
}

template <std::size_t symbols, unsigned indexBits>
using Table = std::array<Entry, (std::size_t{1} << indexBits) + subtableBound(symbols, indexBits)>;

using SymbolTable = Table<symbolCount, symbolIndexBits>;
using DistanceTable = Table<distanceCount, distanceIndexBits>;
using LengthCodeTable = std::array<Entry, std::size_t{1} << lengthCodeIndexBits>;

// Each builds a table from the code length of each symbol (0: not used), and answers false for lengths that
// make no code: too many short ones, or some bits left without a meaning. Only the symbol and distance codes
// may leave bits over, and only with at most one code, of one bit.

bool buildSymbols(const std::uint8_t* lengths, std::size_t count, SymbolTable& table);
bool buildDistances(const std::uint8_t* lengths, std::size_t count, DistanceTable& table);
bool buildLengthCodes(const std::uint8_t* lengths, std::size_t count, LengthCodeTable& table);

/// Builds the tables of the fixed codes.
void buildFixed(SymbolTable& symbols, DistanceTable& distances);

}  // namespace inflation
