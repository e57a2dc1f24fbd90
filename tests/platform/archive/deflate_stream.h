#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace testing {

/// A DEFLATE stream put together bit by bit (RFC 1951).
class DeflateStream {
  public:
    /// Appends a number, lowest bit first.
    DeflateStream& bits(std::uint64_t value, unsigned count);
    /// Appends a code of a prefix code, highest bit first.
    DeflateStream& code(std::uint64_t value, unsigned count);
    /// Appends zero bits up to the next byte.
    DeflateStream& align();

    enum Type : unsigned { storedType = 0, fixedType = 1, dynamicType = 2, unknownType = 3 };
    /// Appends the three bits that begin a block.
    DeflateStream& header(bool last, Type type);

    /// Appends a whole stored block.
    DeflateStream& storedBlock(const std::string& content, bool last = true);
    /// Appends a whole block of fixed codes that holds `content` as literals.
    DeflateStream& fixedBlock(const std::string& content, bool last = true);
    /// Appends a literal, a length symbol (257 to 287) or the end symbol (256) of the fixed code.
    DeflateStream& fixedSymbol(unsigned symbol);
    DeflateStream& fixedLiterals(const std::string& content);

    /// Appends the start of a dynamic block with these code lengths of its symbols and distances, each length
    /// n written as the code n of four bits.
    DeflateStream& dynamicHeader(const std::vector<unsigned>& symbols, const std::vector<unsigned>& distances,
                                 bool last = true);

    /// The bytes so far, the last one filled up with zero bits.
    const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
    unsigned used_ = 8;  // bits of the last byte
};

/// Code lengths of 257 symbols: the literals of `literals` and the end symbol get `length` bits each.
std::vector<unsigned> lengthsOf(const std::string& literals, unsigned length);

}  // namespace testing
