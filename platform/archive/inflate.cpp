#include "platform/archive/inflate.h"

#include <algorithm>
#include <cstring>

#include "platform/archive/inflate_state.h"

namespace inflation {

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

Verdict Inflater::State::run(Input& input, Output& output) {
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

// ---- Output ----

bool Inflater::State::deliver() {
    const std::span<const std::uint8_t> piece(delivered_, out_);
    delivered_ = out_;
    return piece.empty() || output_->take(piece);
}

/// Hands out what is decoded once a piece is full, and keeps the window.
bool Inflater::State::makeRoom() {
    if (out_ < pieceEnd()) return true;
    if (!deliver()) return false;
    std::memmove(buffer_.data(), out_ - windowSize, windowSize);
    delivered_ = out_ = buffer_.data() + windowSize;
    return true;
}

// ---- Blocks ----

Verdict Inflater::State::block(unsigned type) {
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

Verdict Inflater::State::storedBlock() {
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

Verdict Inflater::State::fixedBlock() {
    if (!fixedLoaded_) {
        buildFixed(symbols_, distances_);
        fixedLoaded_ = true;
    }
    return symbols();
}

Verdict Inflater::State::dynamicBlock() {
    constexpr unsigned mostSymbols = 286, mostDistances = 30;
    if (!need(14)) return starved_;
    const unsigned symbolLengths = take(5) + 257;
    const unsigned distanceLengths = take(5) + 1;
    const unsigned lengthCodes = take(4) + 4;
    if (symbolLengths > mostSymbols || distanceLengths > mostDistances) return Verdict::badCodeCount;

    LengthCodeTable codes;
    std::array<std::uint8_t, symbolCount + distanceCount> lengths;
    Verdict verdict = readLengthCodes(lengthCodes, codes);
    if (verdict == Verdict::complete) {
        verdict = readLengths(codes, lengths.data(), symbolLengths + distanceLengths);
    }
    if (verdict != Verdict::complete) return verdict;
    constexpr std::size_t endOfBlock = 256;
    if (lengths[endOfBlock] == 0) return Verdict::noEndCode;
    fixedLoaded_ = false;
    if (!buildSymbols(lengths.data(), symbolLengths, symbols_) ||
        !buildDistances(lengths.data() + symbolLengths, distanceLengths, distances_)) {
        return Verdict::badCodeLengths;
    }
    return symbols();
}

Verdict Inflater::State::readLengthCodes(unsigned count, LengthCodeTable& table) {
    static constexpr std::array<std::uint8_t, lengthCodeCount> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::array<std::uint8_t, lengthCodeCount> lengths{};
    for (unsigned i = 0; i < count; ++i) {
        if (!need(3)) return starved_;
        lengths[order[i]] = static_cast<std::uint8_t>(take(3));
    }
    const bool isCode = buildLengthCodes(lengths.data(), lengths.size(), table);
    return isCode ? Verdict::complete : Verdict::badCodeLengths;
}

Verdict Inflater::State::readLengths(const LengthCodeTable& table, std::uint8_t* lengths, std::size_t count) {
    constexpr std::uint32_t repeatPrevious = 16, repeatZero = 17;
    for (std::size_t done = 0; done < count;) {
        Entry entry = 0;
        if (!lookUp(table.data(), lengthCodeIndexBits, entry)) return starved_;
        drop(dropOf(entry));
        const std::uint32_t symbol = valueOf(entry);
        if (symbol < repeatPrevious) {
            lengths[done++] = static_cast<std::uint8_t>(symbol);
            continue;
        }
        const unsigned extraBits = symbol == repeatPrevious ? 2 : symbol == repeatZero ? 3 : 7;
        if (!need(extraBits)) return starved_;
        const std::size_t times = take(extraBits) + (symbol <= repeatZero ? 3 : 11);
        if (times > count - done || (symbol == repeatPrevious && done == 0)) {
            return Verdict::badCodeLengths;
        }
        const std::uint8_t value = symbol == repeatPrevious ? lengths[done - 1] : std::uint8_t{0};
        std::memset(lengths + done, value, times);
        done += times;
    }
    return Verdict::complete;
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
