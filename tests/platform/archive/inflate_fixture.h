#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "platform/archive/inflate.h"

namespace testing {

/// What decoding a stream gave.
struct Inflated {
    inflation::Verdict verdict;
    std::string content;
    std::uint64_t consumed;
};

/// Hands out a stream in pieces, each in a block of exactly its size, so that a sanitizer notices a byte read
/// beyond it.
class Pieces : public inflation::Input {
  public:
    Pieces(std::string_view stream, std::size_t size) : left_(stream), size_(size) {}
    bool next(std::span<const std::uint8_t>& bytes) override {
        const std::string_view piece = left_.substr(0, size_);
        left_.remove_prefix(piece.size());
        block_ = std::make_unique<std::uint8_t[]>(piece.size());
        std::copy(piece.begin(), piece.end(), block_.get());
        bytes = {block_.get(), piece.size()};
        return true;
    }

  private:
    std::string_view left_;
    std::size_t size_;
    std::unique_ptr<std::uint8_t[]> block_;
};

/// Gathers what is decoded, up to `limit` bytes.
class Gathered : public inflation::Output {
  public:
    explicit Gathered(std::size_t limit = std::numeric_limits<std::size_t>::max()) : limit_(limit) {}
    bool take(std::span<const std::uint8_t> bytes) override {
        if (bytes.size() > limit_ - content.size()) return false;
        content.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return true;
    }
    std::string content;

  private:
    std::size_t limit_;
};

/// Decodes `stream`, handed out in pieces of `pieceSize` bytes, with one decoder for all calls.
inline Inflated inflate(std::string_view stream, std::size_t pieceSize,
                        std::size_t limit = std::numeric_limits<std::size_t>::max()) {
    static inflation::Inflater inflater;
    Pieces input(stream, pieceSize);
    Gathered output(limit);
    const inflation::Verdict verdict = inflater.run(input, output);
    return {verdict, std::move(output.content), inflater.consumed()};
}

}  // namespace testing
