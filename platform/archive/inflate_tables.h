#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The look-up tables that decode the Huffman codes of a DEFLATE block (RFC 1951).
///
/// A table is indexed with the next bits of the stream. An entry says what the code means and how many bits
/// it takes; a code longer than the index leads to a subtable, indexed with the bits behind. Where two
/// literals fit into the index together, their entry gives both at once.
namespace inflation {

/// One entry, packed for a single load:
///
///     bits 0-5    bits to drop: the code, and behind it the extra bits of a length or distance
///     bits 8-11   length: length of the code alone; literal: how many (1 or 2); link: subtable index bits
///     bits 12-15  what it is: the flags below
///     bits 16-31  the literals (first one low), the base of a length or distance, the subtable's place
using Entry = std::uint32_t;

inline constexpr Entry literalFlag = 1 << 15;
inline constexpr Entry specialFlag = 1 << 14;  // neither a literal nor a length or distance:
inline constexpr Entry linkFlag = 1 << 13;     //   a link to a subtable,
inline constexpr Entry endFlag = 1 << 12;      //   the end of the block; with neither, no valid code

inline unsigned dropOf(Entry entry) {
    return entry & 63;
}
inline unsigned countOf(Entry entry) {
    return entry >> 8 & 15;
}
inline std::uint32_t valueOf(Entry entry) {
    return entry >> 16;
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

}  // namespace inflation
