// The loops over the symbols of a block: a fast one, and a careful one for the ends of the input's pieces.

#include <bit>
#include <cstring>

#include "platform/archive/inflate_state.h"

namespace inflation {
namespace {

// The bit buffer. A refill leaves at least 56 bits in it: that many whole bytes fit whatever was in it.
constexpr unsigned refilledBits = 56;
constexpr unsigned longestLengthExtra = 5, longestDistanceExtra = 13;
// One refill serves a literal from the index and a length, a second one a distance, after which the index of
// the next entry is still there.
constexpr unsigned distanceBits = longestCode + longestDistanceExtra + symbolIndexBits;
static_assert(symbolIndexBits + longestCode + longestLengthExtra <= refilledBits);
static_assert(distanceBits <= refilledBits);
// It also serves the literals of a turn, when the next entry is to be looked up too.
static_assert((literalsPerTurn + 1) * symbolIndexBits <= refilledBits);

// Input that one turn of the fast loop may need: three refills, each of which reads 8 bytes and goes at most
// 7 further.
constexpr std::ptrdiff_t inputPerTurn = 7 + 7 + 8;

// The fast loop is compiled twice: shifts by a variable count are what it does most, and newer processors
// have a better instruction for them.
#if defined(__x86_64__)
#define BMI2_TARGET __attribute__((target("bmi,bmi2")))
const bool hasBmi2 = __builtin_cpu_supports("bmi2");
#else
#define BMI2_TARGET
constexpr bool hasBmi2 = false;
#endif

std::uint64_t load64(const std::uint8_t* at) {
    std::uint64_t value = 0;
    std::memcpy(&value, at, sizeof value);
    if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap64(value);
    return value;
}

bool ended(Verdict& verdict, Verdict reason) {
    verdict = reason;
    return true;
}

}  // namespace

/// Decodes the symbols of a block up to its end.
Verdict Inflater::State::symbols() {
    for (;;) {
        if (!makeRoom()) return Verdict::outputRefused;
        Verdict verdict = Verdict::complete;
        bool ended = false;
        if (inEnd_ - in_ >= inputPerTurn) {
            ended = hasBmi2 ? fastSymbolsBmi2(verdict) : fastSymbolsAnywhere(verdict);
        } else {
            ended = oneSymbol(verdict);
        }
        if (ended) return verdict;
    }
}

/// Decodes one entry's symbols where the input may end. True when the block ends, with its verdict.
bool Inflater::State::oneSymbol(Verdict& verdict) {
    Entry entry = 0;
    if (!lookUp(symbols_.data(), symbolIndexBits, entry)) return ended(verdict, starved_);
    if (entry & literalFlag) {
        drop(dropOf(entry));
        *out_++ = static_cast<std::uint8_t>(valueOf(entry));
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

std::size_t Inflater::State::takeBased(Entry entry) {
    const std::size_t value = baseAndExtra(entry, bits_);
    drop(dropOf(entry));
    return value;
}

/// Decodes symbols as long as a whole turn has its input and room. What makes it fast: the working state in
/// registers, one refill for several codes, and the next entry looked up before the refill and the copy that
/// it need not wait for. True when the block ends, with its verdict.
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
        bits |= load64(in) << (bitCount & 63);
        in += (63 - bitCount) >> 3 & 7;
        bitCount |= refilledBits;
    };
    // Only the low byte of bitCount counts, so the whole entry, whose low byte is the drop, may be
    // subtracted.
    const auto consume = [&](Entry entry) {
        bits >>= dropOf(entry);
        bitCount -= entry;
    };
    const auto end = [&](Verdict reason) {
        verdict = reason;
        ended = true;
    };

    refill();
    Entry entry = symbols_[bits & symbolMask];
    // Each turn begins with the entry of the next code looked up but not consumed.
    while (in <= lastTurn && out < outEnd) {
        refill();
        if (entry & literalFlag) {
            consume(entry);
            *out++ = static_cast<std::uint8_t>(valueOf(entry));
            entry = symbols_[bits & symbolMask];
            if (entry & literalFlag) {
                consume(entry);
                *out++ = static_cast<std::uint8_t>(valueOf(entry));
                entry = symbols_[bits & symbolMask];
                if (entry & literalFlag) {
                    consume(entry);
                    *out++ = static_cast<std::uint8_t>(valueOf(entry));
                    entry = symbols_[bits & symbolMask];
                    continue;
                }
                refill();
            }
        }
        if (entry & specialFlag) [[unlikely]] {
            if (entry & linkFlag) {
                entry = followLink(symbols_.data(), entry, bits >> symbolIndexBits);
            }
            if (entry & literalFlag) {
                consume(entry);
                *out++ = static_cast<std::uint8_t>(valueOf(entry));
                entry = symbols_[bits & symbolMask];
                continue;
            }
            if (entry & specialFlag) {
                consume(entry);
                end(entry & endFlag ? Verdict::complete : Verdict::badCode);
                break;
            }
        }
        const std::size_t length = baseAndExtra(entry, bits);
        consume(entry);

        entry = distances_[bits & distanceMask];
        if ((bitCount & 0xFF) < distanceBits) refill();
        if (entry & specialFlag) [[unlikely]] {
            if (entry & linkFlag) {
                entry = followLink(distances_.data(), entry, bits >> distanceIndexBits);
            }
            if (entry & specialFlag) {
                end(Verdict::badCode);
                break;
            }
        }
        const std::size_t distance = baseAndExtra(entry, bits);
        consume(entry);
        entry = symbols_[bits & symbolMask];
        if (distance > static_cast<std::size_t>(out - buffer_.data())) [[unlikely]] {
            end(Verdict::distanceTooFar);
            break;
        }
        copyMatch(out, distance, length);
        out += length;
    }

    bitCount &= 63;
    in_ = in;
    out_ = out;
    bits_ = bits & ((std::uint64_t{1} << bitCount) - 1);  // the careful part counts on nothing above
    bitCount_ = bitCount;
    return ended;
}

bool Inflater::State::fastSymbolsAnywhere(Verdict& verdict) {
    return fastSymbols(verdict);
}

BMI2_TARGET bool Inflater::State::fastSymbolsBmi2(Verdict& verdict) {
    return fastSymbols(verdict);
}

}  // namespace inflation
