#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/archive/inflate_tables.h"

/// Decoding of DEFLATE streams (RFC 1951), in pieces, with memory that does not depend on their length.
namespace inflation {

/// Where the compressed bytes come from.
class Input {
  public:
    virtual ~Input() = default;
    /// Hands out the next bytes, valid until the next call; an empty piece is the end. False: they cannot be
    /// had, and decoding ends with Verdict::inputFailed.
    virtual bool next(std::span<const std::uint8_t>& bytes) = 0;
};

/// Where the decoded bytes go.
class Output {
  public:
    virtual ~Output() = default;
    /// Takes the next bytes, valid during the call. False: no more are wanted, and decoding ends with
    /// Verdict::outputRefused.
    virtual bool take(std::span<const std::uint8_t> bytes) = 0;
};

enum class Verdict {
    complete,
    inputFailed,
    outputRefused,
    // Malformed streams:
    endsEarly,        ///< The input ends before the last block does.
    badBlockType,     ///< Type 3.
    badStoredLength,  ///< A stored block's length and its complement differ.
    badCodeCount,     ///< More length or distance codes than there are.
    badCodeLengths,   ///< Code lengths that make no prefix code, or too many of them, or a wrong repetition.
    noEndCode,        ///< A block whose end has no code.
    badCode,          ///< Bits without a meaning.
    distanceTooFar,   ///< A match that begins before the first byte.
};

/// What is wrong with a stream, as a phrase ("bits that are no code"); for the malformed verdicts.
const char* phraseOf(Verdict verdict);

/// A decoder, about 300 KiB, that can be used for one stream after the other.
class Inflater {
  public:
    Inflater();
    ~Inflater();

    /// Decodes one stream. After a fault the output may lack what was decoded just before it.
    Verdict run(Input& input, Output& output);

    /// Bytes of the input that the stream of the last run took, up to the one with its last bit.
    std::uint64_t consumed() const;

  private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace inflation
