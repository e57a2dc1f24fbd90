#include "platform/archive/inflate_tables.h"

#include <algorithm>
#include <cstring>

namespace inflation {
namespace {

/// What a symbol means, all but the length of its code.
using Meanings = std::array<Entry, symbolCount>;

constexpr Entry invalid = specialFlag;

/// An entry of a base value with `extraBits` behind the code.
constexpr Entry based(std::uint32_t base, unsigned extraBits) {
    return base << 16 | extraBits;
}

constexpr Meanings makeSymbolMeanings() {
    constexpr std::size_t endOfBlock = 256, firstLength = 257, longestMatchSymbol = 285;
    Meanings meanings{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) meanings[byte] = byte << 16 | literalFlag | 1 << 8;
    meanings[endOfBlock] = specialFlag | endFlag;
    std::uint32_t base = 3;
    for (std::size_t symbol = firstLength; symbol < longestMatchSymbol; ++symbol) {
        const auto step = static_cast<unsigned>(symbol - firstLength);
        const unsigned extraBits = step < 8 ? 0 : step / 4 - 1;
        meanings[symbol] = based(base, extraBits);
        base += 1u << extraBits;
    }
    meanings[longestMatchSymbol] = based(258, 0);
    for (std::size_t symbol = longestMatchSymbol + 1; symbol < symbolCount; ++symbol) {
        meanings[symbol] = invalid;
    }
    return meanings;
}

constexpr Meanings makeDistanceMeanings() {
    constexpr std::size_t used = 30;
    Meanings meanings{};
    std::uint32_t base = 1;
    for (std::size_t symbol = 0; symbol < distanceCount; ++symbol) {
        const auto step = static_cast<unsigned>(symbol);
        const unsigned extraBits = step < 4 ? 0 : step / 2 - 1;
        meanings[symbol] = symbol < used ? based(base, extraBits) : invalid;
        base += 1u << extraBits;
    }
    return meanings;
}

constexpr Meanings makeLengthCodeMeanings() {
    Meanings meanings{};
    for (std::uint32_t symbol = 0; symbol < lengthCodeCount; ++symbol) meanings[symbol] = based(symbol, 0);
    return meanings;
}

constexpr Meanings symbolMeanings = makeSymbolMeanings();
constexpr Meanings distanceMeanings = makeDistanceMeanings();
constexpr Meanings lengthCodeMeanings = makeLengthCodeMeanings();

/// The entry of a symbol whose code is `length` bits long.
Entry complete(Entry meaning, unsigned length) {
    // The count field of a literal is its own; everything else keeps the length of the code there.
    return meaning + length + (meaning & literalFlag ? 0 : length << 8);
}

/// The code that follows `code`, one of `length` bits, codes being written with their first bit lowest.
unsigned nextCode(unsigned code, unsigned length) {
    unsigned bit = 1u << (length - 1);
    while (code & bit) bit >>= 1;
    return bit == 0 ? 0 : (code & (bit - 1)) | bit;
}

/// Gives the symbols their codes, shortest first, and fills the table with them.
class Builder {
  public:
    Builder(const Meanings& meanings, Entry* table, unsigned indexBits)
        : meanings_(meanings), table_(table), indexBits_(indexBits) {}

    bool build(const std::uint8_t* lengths, std::size_t count, bool mayBeIncomplete) {
        sort(lengths, count);
        if (!isCode(mayBeIncomplete)) return false;
        fillIndex();
        fillSubtables();
        return true;
    }

  private:
    /// Orders the used symbols by the length of their codes.
    void sort(const std::uint8_t* lengths, std::size_t count) {
        for (std::size_t symbol = 0; symbol < count; ++symbol) ++left_[lengths[symbol]];
        left_[0] = 0;
        std::array<std::uint16_t, longestCode + 2> start{};
        for (unsigned length = 1; length <= longestCode; ++length) {
            start[length + 1] = static_cast<std::uint16_t>(start[length] + left_[length]);
            if (left_[length] > 0) longest_ = length;
        }
        for (std::size_t symbol = 0; symbol < count; ++symbol) {
            if (lengths[symbol] > 0) sorted_[start[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
        }
    }

    bool isCode(bool mayBeIncomplete) const {
        int room = 1;  // codes of the current length that are still free
        for (unsigned length = 1; length <= longestCode; ++length) {
            room = 2 * room - left_[length];
            if (room < 0) return false;
        }
        return room == 0 || (mayBeIncomplete && longest_ <= 1);
    }

    Entry takeSymbol(unsigned length) {
        --left_[length];
        return complete(meanings_[sorted_[next_++]], length);
    }

    /// The table of codes of up to n bits, twice over, is that of codes of up to n + 1 bits but for the new
    /// ones; so it grows by doubling.
    void fillIndex() {
        // What an incomplete code leaves over. The length lets the careful loop know that the bit is read.
        table_[0] = table_[1] = complete(invalid, 1);
        for (unsigned length = 1; length <= indexBits_; ++length) {
            while (left_[length] > 0) {
                table_[code_] = takeSymbol(length);
                code_ = nextCode(code_, length);
            }
            const std::size_t size = std::size_t{1} << length;
            if (length < indexBits_) std::memcpy(table_ + size, table_, size * sizeof(Entry));
        }
    }

    void fillSubtables() {
        const unsigned indexMask = (1u << indexBits_) - 1;
        std::size_t place = std::size_t{1} << indexBits_;
        for (unsigned length = indexBits_ + 1; length <= longest_;) {
            if (left_[length] == 0) {
                ++length;
                continue;
            }
            const unsigned prefix = code_ & indexMask;
            const unsigned width = widthFrom(length);
            table_[prefix] = static_cast<Entry>(place << 16) | specialFlag | linkFlag | width << 8;
            fillSubtable(table_ + place, width, prefix, length);
            place += std::size_t{1} << width;
        }
    }

    /// Index bits of the subtable that begins with codes of `length`: as many as it takes to be filled.
    unsigned widthFrom(unsigned length) const {
        unsigned width = length - indexBits_;
        int room = 1 << width;
        while ((room -= left_[indexBits_ + width]) > 0 && indexBits_ + width < longest_) {
            ++width;
            room *= 2;
        }
        return width;
    }

    /// Places the codes that begin with `prefix`; `length` goes along to that of the last one.
    void fillSubtable(Entry* subtable, unsigned width, unsigned prefix, unsigned& length) {
        const unsigned indexMask = (1u << indexBits_) - 1;
        do {
            const Entry entry = takeSymbol(length);
            const std::size_t step = std::size_t{1} << (length - indexBits_);
            for (std::size_t i = code_ >> indexBits_; i < std::size_t{1} << width; i += step) {
                subtable[i] = entry;
            }
            code_ = nextCode(code_, length);
            while (length < longest_ && left_[length] == 0) ++length;
        } while (left_[length] > 0 && (code_ & indexMask) == prefix);
    }

    const Meanings& meanings_;
    Entry* table_;
    unsigned indexBits_;
    std::array<std::uint16_t, longestCode + 1> left_{};  // symbols of each length not placed yet
    std::array<std::uint16_t, symbolCount> sorted_{};
    std::size_t next_ = 0;  // in sorted_
    unsigned longest_ = 0;
    unsigned code_ = 0;  // the next one, first bit lowest
};

/// Joins two literals whose codes fit into one index.
void pairLiterals(SymbolTable& table) {
    // From the end, for the second literal is looked up among smaller indices, not joined yet.
    for (std::size_t index = (std::size_t{1} << symbolIndexBits) - 1; index > 0; --index) {
        const Entry first = table[index];
        if ((first & literalFlag) == 0) continue;
        const Entry second = table[index >> dropOf(first)];
        const unsigned bits = dropOf(first) + dropOf(second);
        if ((second & literalFlag) == 0 || bits > symbolIndexBits) continue;
        table[index] = valueOf(second) << 24 | valueOf(first) << 16 | literalFlag | 2 << 8 | bits;
    }
}

}  // namespace

bool buildSymbols(const std::uint8_t* lengths, std::size_t count, SymbolTable& table) {
    if (!Builder(symbolMeanings, table.data(), symbolIndexBits).build(lengths, count, true)) return false;
    pairLiterals(table);
    return true;
}

bool buildDistances(const std::uint8_t* lengths, std::size_t count, DistanceTable& table) {
    return Builder(distanceMeanings, table.data(), distanceIndexBits).build(lengths, count, true);
}

bool buildLengthCodes(const std::uint8_t* lengths, std::size_t count, LengthCodeTable& table) {
    return Builder(lengthCodeMeanings, table.data(), lengthCodeIndexBits).build(lengths, count, false);
}

}  // namespace inflation
