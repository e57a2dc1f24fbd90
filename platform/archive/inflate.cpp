#include "platform/archive/inflate.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace inflation {
namespace {

constexpr std::size_t windowSize = 32 * 1024;  // farthest distance of a match
constexpr std::size_t pieceSize = 256 * 1024;  // what is decoded between two deliveries
constexpr std::size_t longestMatch = 258;

// The bit buffer. A refill leaves at least 56 bits in it: that many whole bytes fit whatever was in it.
constexpr unsigned refilledBits = 56;
constexpr unsigned longestLengthExtra = 5, longestDistanceExtra = 13;
// One refill serves a literal entry and a length, a second one a distance, after which the index of the next
// entry is still there.
static_assert(symbolIndexBits + longestCode + longestLengthExtra <= refilledBits);
static_assert(longestCode + longestDistanceExtra + symbolIndexBits <= refilledBits);
// Literal entries from the index that one refill serves, when the next entry is to be looked up too.
constexpr unsigned literalsPerRefill = 3;
static_assert((literalsPerRefill + 1) * symbolIndexBits <= refilledBits);

// What one turn of the fast loop may need, so that it looks for the ends but once. Input: three refills, each
// of which reads 8 bytes and goes at most 7 further.
constexpr std::ptrdiff_t inputPerTurn = 7 + 7 + 8;
// Output: the literals, and a match, whose copy may write up to a vector beyond its end.
constexpr std::size_t copyStep = 16;
constexpr std::size_t outputPerTurn = 2 * literalsPerRefill + longestMatch + copyStep;

std::uint64_t load64(const std::uint8_t* at) {
    std::uint64_t value = 0;
    std::memcpy(&value, at, sizeof value);
    if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap64(value);
    return value;
}

void store16(std::uint8_t* at, std::uint32_t value) {
    at[0] = static_cast<std::uint8_t>(value);
    at[1] = static_cast<std::uint8_t>(value >> 8);
}

template <std::size_t step>
void copyBy(std::uint8_t* to, const std::uint8_t* from, const std::uint8_t* end) {
    do {
        std::memcpy(to, from, step);
        to += step;
        from += step;
    } while (to < end);
}

/// Copies a match, whose source may overlap what it writes. Writes up to copyStep bytes beyond the end.
void copyMatch(std::uint8_t* to, std::size_t distance, std::size_t length) {
    const std::uint8_t* from = to - distance;
    if (distance >= copyStep) return copyBy<copyStep>(to, from, to + length);
    if (distance >= 8) return copyBy<8>(to, from, to + length);
    if (distance == 1) {
        std::memset(to, *from, length);
        return;
    }
    // A short period: lay down 8 bytes, then copy from a multiple of the period that is at least that far.
    for (std::size_t i = 0; i < 8; ++i) to[i] = from[i];
    if (length > 8) {
        const std::size_t far = (7 / distance + 1) * distance;
        copyBy<8>(to + 8, to + 8 - far, to + length);
    }
}

/// The code lengths of the fixed codes.
struct FixedLengths {
    std::array<std::uint8_t, symbolCount> symbols{};
    std::array<std::uint8_t, distanceCount> distances{};

    constexpr FixedLengths() {
        for (std::size_t i = 0; i < symbolCount; ++i)
            symbols[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
        distances.fill(5);
    }
};

constexpr FixedLengths fixedLengths;

}  // namespace

const char* phraseOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::endsEarly:
            return "the stream ends early";
        case Verdict::badBlockType:
            return "a block of unknown type";
        case Verdict::badStoredLength:
            return "a stored block's length contradicts its complement";
        case Verdict::badCodeCount:
            return "a block declares more codes than there are";
        case Verdict::badCodeLengths:
            return "a block's code lengths make no code";
        case Verdict::noEndCode:
            return "a block without an end code";
        case Verdict::badCode:
            return "bits that are no code";
        case Verdict::distanceTooFar:
            return "a match reaches back before the first byte";
        default:
            return "";
    }
}

class Inflater::State {
  public:
    Verdict run(Input& input, Output& output) {
        input_ = &input;
        output_ = &output;
        in_ = inEnd_ = nullptr;
        handedOut_ = 0;
        bits_ = bitCount_ = 0;
        delivered_ = out_ = buffer_.data();

        bool last = false;
        while (!last) {
            if (!need(3)) return starved_;
            last = take(1) == 1;
            const Verdict verdict = block(take(2));
            if (verdict != Verdict::complete) return verdict;
        }
        return deliver() ? Verdict::complete : Verdict::outputRefused;
    }

    std::uint64_t consumed() const {
        return handedOut_ - static_cast<std::uint64_t>(inEnd_ - in_) - bitCount_ / 8;
    }

  private:
    // ---- Bits, with care: never more than the input has ----

    /// Fetches one byte; false at the end of the input.
    bool fetch() {
        if (in_ == inEnd_) {
            std::span<const std::uint8_t> piece;
            starved_ = Verdict::endsEarly;
            if (!input_->next(piece)) {
                starved_ = Verdict::inputFailed;
                return false;
            }
            if (piece.empty()) return false;
            in_ = piece.data();
            inEnd_ = in_ + piece.size();
            handedOut_ += piece.size();
        }
        bits_ |= static_cast<std::uint64_t>(*in_++) << bitCount_;
        bitCount_ += 8;
        return true;
    }

    bool need(unsigned count) {
        while (bitCount_ < count) {
            if (!fetch()) return false;
        }
        return true;
    }

    void drop(unsigned count) {
        bits_ >>= count;
        bitCount_ -= count;
    }

    /// The next `count` bits, which are there.
    unsigned take(unsigned count) {
        const auto value = static_cast<unsigned>(bits_ & ((std::uint64_t{1} << count) - 1));
        drop(count);
        return value;
    }

    /// Looks up the code that comes next and makes sure that all its bits are there, extra bits included.
    bool lookUp(const Entry* table, unsigned indexBits, Entry& entry) {
        for (;;) {
            entry = table[bits_ & ((1u << indexBits) - 1)];
            if (entry & linkFlag) {
                const std::uint64_t index = bits_ >> indexBits & ((1u << countOf(entry)) - 1);
                entry = table[valueOf(entry) + index];
            }
            // Missing bits count as zeros above; an entry that takes none of them is the true one.
            if (dropOf(entry) <= bitCount_) return true;
            if (!fetch()) return false;
        }
    }

    // ---- Output ----

    bool deliver() {
        const std::span<const std::uint8_t> piece(delivered_, out_);
        delivered_ = out_;
        return piece.empty() || output_->take(piece);
    }

    /// Hands out what is decoded once a piece is full, and keeps the window.
    bool makeRoom() {
        if (out_ < pieceEnd()) return true;
        if (!deliver()) return false;
        std::memmove(buffer_.data(), out_ - windowSize, windowSize);
        delivered_ = out_ = buffer_.data() + windowSize;
        return true;
    }

    const std::uint8_t* pieceEnd() const { return buffer_.data() + windowSize + pieceSize; }

    // ---- Blocks ----

    Verdict block(unsigned type) {
        switch (type) {
            case 0:
                return storedBlock();
            case 1:
                return fixedBlock();
            case 2:
                return dynamicBlock();
            default:
                return Verdict::badBlockType;
        }
    }

    Verdict storedBlock() {
        drop(bitCount_ % 8);
        if (!need(32)) return starved_;
        const unsigned length = take(16);
        if (take(16) != (length ^ 0xFFFF)) return Verdict::badStoredLength;
        for (std::size_t left = length; left > 0;) {
            if (!makeRoom()) return Verdict::outputRefused;
            // Bytes that wait in the bit buffer come first; fetching one also turns to the next piece.
            if (bitCount_ > 0 || in_ == inEnd_) {
                if (!need(8)) return starved_;
                *out_++ = static_cast<std::uint8_t>(take(8));
                --left;
                continue;
            }
            const std::size_t count = std::min(
                {left, static_cast<std::size_t>(inEnd_ - in_), static_cast<std::size_t>(pieceEnd() - out_)});
            std::memcpy(out_, in_, count);
            in_ += count;
            out_ += count;
            left -= count;
        }
        return Verdict::complete;
    }

    Verdict fixedBlock() {
        if (!fixedLoaded_) {
            // Both are complete codes, so building them cannot fail.
            buildSymbols(fixedLengths.symbols.data(), symbolCount, symbols_);
            buildDistances(fixedLengths.distances.data(), distanceCount, distances_);
            fixedLoaded_ = true;
        }
        return symbols();
    }

    Verdict dynamicBlock() {
        constexpr unsigned mostSymbols = 286, mostDistances = 30;
        if (!need(14)) return starved_;
        const unsigned symbolLengths = take(5) + 257;
        const unsigned distanceLengths = take(5) + 1;
        const unsigned lengthCodes = take(4) + 4;
        if (symbolLengths > mostSymbols || distanceLengths > mostDistances) return Verdict::badCodeCount;

        LengthCodeTable codes;
        std::array<std::uint8_t, symbolCount + distanceCount> lengths;
        if (!readLengthCodes(lengthCodes, codes)) return failedLengths_;
        if (!readLengths(codes, lengths.data(), symbolLengths + distanceLengths)) return failedLengths_;
        if (lengths[256] == 0) return Verdict::noEndCode;
        fixedLoaded_ = false;
        if (!buildSymbols(lengths.data(), symbolLengths, symbols_) ||
            !buildDistances(lengths.data() + symbolLengths, distanceLengths, distances_)) {
            return Verdict::badCodeLengths;
        }
        return symbols();
    }

    bool starveLengths() {
        failedLengths_ = starved_;
        return false;
    }

    bool readLengthCodes(unsigned count, LengthCodeTable& table) {
        static constexpr std::array<std::uint8_t, lengthCodeCount> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                         11, 4,  12, 3, 13, 2, 14, 1, 15};
        std::array<std::uint8_t, lengthCodeCount> lengths{};
        for (unsigned i = 0; i < count; ++i) {
            if (!need(3)) return starveLengths();
            lengths[order[i]] = static_cast<std::uint8_t>(take(3));
        }
        failedLengths_ = Verdict::badCodeLengths;
        return buildLengthCodes(lengths.data(), lengths.size(), table);
    }

    bool readLengths(const LengthCodeTable& table, std::uint8_t* lengths, std::size_t count) {
        constexpr std::uint32_t repeatPrevious = 16, repeatZero = 17;
        for (std::size_t done = 0; done < count;) {
            Entry entry = 0;
            if (!lookUp(table.data(), lengthCodeIndexBits, entry)) return starveLengths();
            drop(dropOf(entry));
            const std::uint32_t symbol = valueOf(entry);
            if (symbol < repeatPrevious) {
                lengths[done++] = static_cast<std::uint8_t>(symbol);
                continue;
            }
            const unsigned extraBits = symbol == repeatPrevious ? 2 : symbol == repeatZero ? 3 : 7;
            if (!need(extraBits)) return starveLengths();
            const std::size_t times = take(extraBits) + (symbol <= repeatZero ? 3 : 11);
            failedLengths_ = Verdict::badCodeLengths;
            if (times > count - done || (symbol == repeatPrevious && done == 0)) return false;
            const std::uint8_t value = symbol == repeatPrevious ? lengths[done - 1] : std::uint8_t{0};
            std::memset(lengths + done, value, times);
            done += times;
        }
        return true;
    }

    /// Decodes the symbols of a block up to its end.
    Verdict symbols() {
        for (;;) {
            if (!makeRoom()) return Verdict::outputRefused;
            Verdict verdict = Verdict::complete;
            bool ended = false;
            if (inEnd_ - in_ >= inputPerTurn) {
                ended = fastSymbols(verdict);
            } else {
                ended = oneSymbol(verdict);
            }
            if (ended) return verdict;
        }
    }

    /// Decodes one entry's symbols where the input may end. True when the block ends, with its verdict.
    bool oneSymbol(Verdict& verdict) {
        Entry entry = 0;
        verdict = starved_;
        if (!lookUp(symbols_.data(), symbolIndexBits, entry)) return ended(verdict, starved_);
        if (entry & literalFlag) {
            drop(dropOf(entry));
            store16(out_, valueOf(entry));
            out_ += countOf(entry);
            return false;
        }
        if (entry & specialFlag) {
            drop(dropOf(entry));
            return ended(verdict, entry & endFlag ? Verdict::complete : Verdict::badCode);
        }
        const std::size_t length = takeBased(entry);
        if (!lookUp(distances_.data(), distanceIndexBits, entry)) return ended(verdict, starved_);
        if (entry & specialFlag) return ended(verdict, Verdict::badCode);
        const std::size_t distance = takeBased(entry);
        if (distance > static_cast<std::size_t>(out_ - buffer_.data())) {
            return ended(verdict, Verdict::distanceTooFar);
        }
        copyMatch(out_, distance, length);
        out_ += length;
        return false;
    }

    static bool ended(Verdict& verdict, Verdict reason) {
        verdict = reason;
        return true;
    }

    std::size_t takeBased(Entry entry) {
        const std::uint64_t taken = bits_ & ((std::uint64_t{1} << dropOf(entry)) - 1);
        drop(dropOf(entry));
        return valueOf(entry) + static_cast<std::size_t>(taken >> countOf(entry));
    }

    bool fastSymbols(Verdict& verdict);

    Input* input_ = nullptr;
    Output* output_ = nullptr;
    const std::uint8_t* in_ = nullptr;
    const std::uint8_t* inEnd_ = nullptr;
    std::uint64_t handedOut_ = 0;  // bytes that the input has given so far
    std::uint64_t bits_ = 0;       // what is read but not used, next bit lowest; nothing above bitCount_
    unsigned bitCount_ = 0;
    Verdict starved_ = Verdict::endsEarly;  // why fetch() gave nothing
    Verdict failedLengths_ = Verdict::badCodeLengths;
    bool fixedLoaded_ = false;  // the tables hold the fixed codes

    std::uint8_t* out_ = nullptr;
    const std::uint8_t* delivered_ = nullptr;
    SymbolTable symbols_;
    DistanceTable distances_;
    std::array<std::uint8_t, windowSize + pieceSize + outputPerTurn> buffer_;
};

/// Decodes symbols as long as a whole turn has its input and room. What makes it fast: the working state in
/// registers, one refill for several codes, two literals from one look-up, and the next entry looked up
/// before the refill and the copy that it need not wait for. True when the block ends, with its verdict.
bool Inflater::State::fastSymbols(Verdict& verdict) {
    const std::uint8_t* in = in_;
    std::uint8_t* out = out_;
    std::uint64_t bits = bits_;
    unsigned bitCount = bitCount_;
    const std::uint8_t* const lastTurn = inEnd_ - inputPerTurn;
    const std::uint8_t* const outEnd = pieceEnd();
    constexpr std::uint64_t symbolMask = (1u << symbolIndexBits) - 1;
    constexpr std::uint64_t distanceMask = (1u << distanceIndexBits) - 1;
    bool ended = false;

    // Bits above bitCount are those that the next bytes bring again, so they may be or-ed over.
    const auto refill = [&] {
        bits |= load64(in) << bitCount;
        in += (63 - bitCount) >> 3;
        bitCount |= refilledBits;
    };
    const auto consume = [&](Entry entry) {
        bits >>= dropOf(entry);
        bitCount -= dropOf(entry);
    };
    const auto end = [&](Verdict reason) {
        verdict = reason;
        ended = true;
    };
    const auto putLiterals = [&](Entry entry) {
        store16(out, valueOf(entry));
        out += countOf(entry);
    };

    refill();
    Entry entry = symbols_[bits & symbolMask];
    // Each turn begins with the entry of the next code looked up but not consumed.
    while (in <= lastTurn && out < outEnd) {
        refill();
        if (entry & literalFlag) {
            consume(entry);
            putLiterals(entry);
            entry = symbols_[bits & symbolMask];
            if (entry & literalFlag) {
                consume(entry);
                putLiterals(entry);
                entry = symbols_[bits & symbolMask];
                if (entry & literalFlag) {
                    consume(entry);
                    putLiterals(entry);
                    entry = symbols_[bits & symbolMask];
                    continue;
                }
                refill();
            }
        }
        if (entry & specialFlag) [[unlikely]] {
            if (entry & linkFlag) {
                entry = symbols_[valueOf(entry) + (bits >> symbolIndexBits & ((1u << countOf(entry)) - 1))];
            }
            if (entry & literalFlag) {
                consume(entry);
                putLiterals(entry);
                entry = symbols_[bits & symbolMask];
                continue;
            }
            if (entry & specialFlag) {
                consume(entry);
                end(entry & endFlag ? Verdict::complete : Verdict::badCode);
                break;
            }
        }
        std::uint64_t saved = bits & ((std::uint64_t{1} << dropOf(entry)) - 1);
        const std::size_t length = valueOf(entry) + static_cast<std::size_t>(saved >> countOf(entry));
        consume(entry);

        entry = distances_[bits & distanceMask];
        if (bitCount < longestCode + longestDistanceExtra + symbolIndexBits) refill();
        if (entry & specialFlag) [[unlikely]] {
            if (entry & linkFlag) {
                entry =
                    distances_[valueOf(entry) + (bits >> distanceIndexBits & ((1u << countOf(entry)) - 1))];
            }
            if (entry & specialFlag) {
                end(Verdict::badCode);
                break;
            }
        }
        saved = bits & ((std::uint64_t{1} << dropOf(entry)) - 1);
        const std::size_t distance = valueOf(entry) + static_cast<std::size_t>(saved >> countOf(entry));
        consume(entry);
        entry = symbols_[bits & symbolMask];
        if (distance > static_cast<std::size_t>(out - buffer_.data())) [[unlikely]] {
            end(Verdict::distanceTooFar);
            break;
        }
        copyMatch(out, distance, length);
        out += length;
    }

    in_ = in;
    out_ = out;
    bits_ = bits & ((std::uint64_t{1} << bitCount) - 1);  // the careful part counts on nothing above
    bitCount_ = bitCount;
    return ended;
}

Inflater::Inflater() : state_(std::make_unique_for_overwrite<State>()) {}
Inflater::~Inflater() = default;

Verdict Inflater::run(Input& input, Output& output) {
    return state_->run(input, output);
}

std::uint64_t Inflater::consumed() const {
    return state_->consumed();
}

}  // namespace inflation
