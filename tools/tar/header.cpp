#include "tools/tar/header.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <string_view>

#include "tools/tar/failure.h"

namespace tar {
namespace {

/// Where a field lies in the block, in bytes.
struct Field {
    std::size_t offset;
    std::size_t size;
};

constexpr Field nameField{0, 100}, modeField{100, 8}, sizeField{124, 12}, timeField{136, 12};
constexpr Field checksumField{148, 8}, linkField{157, 100}, magicField{257, 6}, prefixField{345, 155};
constexpr std::size_t kindOffset = 156;

std::string_view bytesOf(const Block& block, Field field) {
    return {reinterpret_cast<const char*>(block.data()) + field.offset, field.size};
}

/// A text ends with the field or with the first zero byte in it.
std::string textOf(const Block& block, Field field) {
    const std::string_view bytes = bytesOf(block, field);
    return std::string(bytes.substr(0, bytes.find('\0')));
}

[[noreturn]] void refuseNumber() {
    throw Failure("a header with a number that is none");
}

/// A number in the binary form that GNU tar writes when the digits do not suffice: big-endian, two's
/// complement, the highest bit of the first byte set to mark it, the next one the sign.
std::int64_t binaryNumber(std::string_view bytes) {
    const bool negative = (static_cast<unsigned char>(bytes[0]) & 0x40) != 0;
    const std::uint64_t filler = negative ? ~std::uint64_t{0} : 0;
    std::uint64_t value = filler;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        unsigned byte = static_cast<unsigned char>(bytes[i]);
        if (i == 0) byte = negative ? byte | 0x80U : byte & 0x7FU;
        if (value >> 56 != filler >> 56) refuseNumber();
        value = value << 8 | byte;
    }
    const auto number = static_cast<std::int64_t>(value);
    if ((number < 0) != negative) refuseNumber();
    return number;
}

/// Octal digits, between spaces and zero bytes; a field of these alone is zero.
std::int64_t octalNumber(std::string_view bytes) {
    constexpr std::string_view filling(" \0", 2);
    const std::size_t begin = bytes.find_first_not_of(filling);
    if (begin == std::string_view::npos) return 0;
    const std::size_t end = std::min(bytes.find_first_of(filling, begin), bytes.size());
    if (bytes.find_first_not_of(filling, end) != std::string_view::npos) refuseNumber();
    std::int64_t value = 0;  // at most twelve digits
    for (const char digit : bytes.substr(begin, end - begin)) {
        if (digit < '0' || digit > '7') refuseNumber();
        value = value * 8 + (digit - '0');
    }
    return value;
}

std::int64_t numberOf(const Block& block, Field field) {
    const std::string_view bytes = bytesOf(block, field);
    return (static_cast<unsigned char>(bytes[0]) & 0x80) != 0 ? binaryNumber(bytes) : octalNumber(bytes);
}

std::uint64_t sizeOf(const Block& block) {
    const std::int64_t size = numberOf(block, sizeField);
    if (size < 0) refuseNumber();
    return static_cast<std::uint64_t>(size);
}

Kind kindOf(char letter, std::string_view name) {
    switch (letter) {
        case '\0':
        case '0':
        case '7':  // for disks that can lay a file out in one piece
            // The oldest archives know a directory by its name alone.
            return name.ends_with('/') ? Kind::directory : Kind::file;
        case '1':
            return Kind::hardLink;
        case '2':
            return Kind::symbolicLink;
        case '5':
            return Kind::directory;
        case 'L':
            return Kind::longName;
        case 'K':
            return Kind::longLink;
        case 'x':
            return Kind::extended;
        case 'g':
            return Kind::globallyExtended;
        default:
            return Kind::unsupported;
    }
}

}  // namespace

bool isEndMark(const Block& block) {
    return std::all_of(block.begin(), block.end(), [](std::uint8_t byte) { return byte == 0; });
}

bool isHeader(const Block& block) {
    Block counted = block;
    std::fill_n(counted.begin() + checksumField.offset, checksumField.size, std::uint8_t{' '});
    const int sum = std::accumulate(counted.begin(), counted.end(), 0);
    // Some old programs took bytes for signed.
    const int signedSum =
        std::accumulate(counted.begin(), counted.end(), 0,
                        [](int total, std::uint8_t byte) { return total + static_cast<std::int8_t>(byte); });
    try {
        const std::int64_t noted = numberOf(block, checksumField);
        return noted == sum || noted == signedSum;
    } catch (const Failure&) {
        return false;
    }
}

Member readHeader(const Block& block) {
    constexpr unsigned permissionBits = 0777;
    // GNU's, with a space, goes with other fields. The version behind it is not looked at: some programs put
    // something else than 00 there.
    constexpr std::string_view posixMagic("ustar\0", 6);
    Member member;
    member.name = textOf(block, nameField);
    if (bytesOf(block, magicField) == posixMagic) {
        const std::string prefix = textOf(block, prefixField);
        if (!prefix.empty()) member.name = prefix + '/' + member.name;
    }
    member.link = textOf(block, linkField);
    member.kind = kindOf(static_cast<char>(block[kindOffset]), member.name);
    member.size = sizeOf(block);
    member.mode = static_cast<unsigned>(numberOf(block, modeField)) & permissionBits;
    member.time.seconds = numberOf(block, timeField);
    return member;
}

}  // namespace tar
