#include "tests/platform/archive/deflate_stream.h"

#include "tests/platform/archive/zip_image.h"

namespace testing {

DeflateStream& DeflateStream::bits(std::uint64_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        if (used_ == 8) {
            bytes_ += '\0';
            used_ = 0;
        }
        bytes_.back() =
            static_cast<char>(static_cast<unsigned char>(bytes_.back()) | (value >> i & 1) << used_);
        ++used_;
    }
    return *this;
}

DeflateStream& DeflateStream::code(std::uint64_t value, unsigned count) {
    while (count > 0) bits(value >> --count & 1, 1);
    return *this;
}

DeflateStream& DeflateStream::align() {
    used_ = 8;
    return *this;
}

DeflateStream& DeflateStream::header(bool last, Type type) {
    return bits(last ? 1 : 0, 1).bits(type, 2);
}

DeflateStream& DeflateStream::storedBlock(const std::string& content, bool last) {
    header(last, storedType).align();
    bytes_ += number(content.size(), 2) + number(~content.size(), 2) + content;
    return *this;
}

DeflateStream& DeflateStream::fixedBlock(const std::string& content, bool last) {
    return header(last, fixedType).fixedLiterals(content).fixedSymbol(256);
}

DeflateStream& DeflateStream::fixedSymbol(unsigned symbol) {
    if (symbol < 144) return code(0x30 + symbol, 8);
    if (symbol < 256) return code(0x190 + symbol - 144, 9);
    if (symbol < 280) return code(symbol - 256, 7);
    return code(0xC0 + symbol - 280, 8);
}

DeflateStream& DeflateStream::fixedLiterals(const std::string& content) {
    for (const char byte : content) fixedSymbol(static_cast<unsigned char>(byte));
    return *this;
}

DeflateStream& DeflateStream::dynamicHeader(const std::vector<unsigned>& symbols,
                                            const std::vector<unsigned>& distances, bool last) {
    header(last, dynamicType).bits(symbols.size() - 257, 5).bits(distances.size() - 1, 5).bits(19 - 4, 4);
    // Lengths of the code for lengths, in the order 16, 17, 18, 0, 8, ...: sixteen codes of four bits.
    bits(0, 9);
    for (int i = 0; i < 16; ++i) bits(4, 3);
    for (const unsigned length : symbols) code(length, 4);
    for (const unsigned length : distances) code(length, 4);
    return *this;
}

std::vector<unsigned> lengthsOf(const std::string& literals, unsigned length) {
    std::vector<unsigned> lengths(257);
    for (const char byte : literals) lengths[static_cast<unsigned char>(byte)] = length;
    lengths[256] = length;
    return lengths;
}

}  // namespace testing
