#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/archive/inflate.h"
#include "platform/archive/match_copy.h"

namespace inflation {

inline constexpr std::size_t windowSize = std::size_t{32} * 1024;  // farthest distance of a match
inline constexpr std::size_t pieceSize = std::size_t{256} * 1024;  // what is decoded between two deliveries
inline constexpr std::size_t longestMatch = 258;

/// Literals that the fast loop decodes between two looks at the ends.
inline constexpr unsigned literalsPerTurn = 3;
/// What one turn of the symbol loops may write: the literals, and a match with what its copy writes beyond.
inline constexpr std::size_t outputPerTurn = literalsPerTurn + longestMatch + copyOverrun;

/// A decoder at work. Blocks and their headers are in inflate.cpp, the loops over symbols in
/// inflate_symbols.cpp.
class Inflater::State {
  public:
    Verdict run(Input& input, Output& output);
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
                entry = followLink(table, entry, bits_ >> indexBits);
            }
            // Missing bits count as zeros above; an entry that takes none of them is the true one.
            if (dropOf(entry) <= bitCount_) return true;
            if (!fetch()) return false;
        }
    }

    // ---- Output ----

    bool deliver();
    bool makeRoom();
    const std::uint8_t* pieceEnd() const { return buffer_.data() + windowSize + pieceSize; }

    // ---- Blocks ----

    Verdict block(unsigned type);
    Verdict storedBlock();
    Verdict fixedBlock();
    Verdict dynamicBlock();
    Verdict readLengthCodes(unsigned count, LengthCodeTable& table);
    Verdict readLengths(const LengthCodeTable& table, std::uint8_t* lengths, std::size_t count);

    // ---- Symbols ----

    Verdict symbols();
    bool oneSymbol(Verdict& verdict);
    std::size_t takeBased(Entry entry);
    [[gnu::always_inline]] inline bool fastSymbols(Verdict& verdict);
    bool fastSymbolsAnywhere(Verdict& verdict);
    bool fastSymbolsBmi2(Verdict& verdict);

    Input* input_ = nullptr;
    Output* output_ = nullptr;
    const std::uint8_t* in_ = nullptr;
    const std::uint8_t* inEnd_ = nullptr;
    std::uint64_t handedOut_ = 0;  // bytes that the input has given so far
    std::uint64_t bits_ = 0;       // what is read but not used, next bit lowest; nothing above bitCount_
    unsigned bitCount_ = 0;
    Verdict starved_ = Verdict::endsEarly;  // why fetch() gave nothing
    bool fixedLoaded_ = false;              // the tables hold the fixed codes

    std::uint8_t* out_ = nullptr;
    const std::uint8_t* delivered_ = nullptr;
    SymbolTable symbols_;
    DistanceTable distances_;
    std::array<std::uint8_t, windowSize + pieceSize + outputPerTurn> buffer_;
};

}  // namespace inflation
