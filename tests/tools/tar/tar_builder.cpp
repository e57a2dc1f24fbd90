#include "tests/tools/tar/tar_builder.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "platform/archive/crc32.h"

namespace testing {
namespace {

void put(tar::Block& block, std::size_t offset, std::string_view text) {
    std::copy(text.begin(), text.end(), block.begin() + static_cast<std::ptrdiff_t>(offset));
}

std::string octal(std::size_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "%011zo", number);
    return text;
}

std::string padded(std::string text) {
    text.resize((text.size() + tar::blockSize - 1) / tar::blockSize * tar::blockSize, '\0');
    return text;
}

std::string littleEndian(std::uint32_t number, int bytes) {
    std::string text;
    for (; bytes > 0; --bytes, number >>= 8) text += static_cast<char>(number & 0xFF);
    return text;
}

}  // namespace

tar::Block tarHeader(const TarEntry& entry) {
    tar::Block block{};
    put(block, 0, entry.name);
    put(block, 100, entry.mode);
    put(block, 124, entry.size.empty() ? octal(entry.content.size()) : entry.size);
    put(block, 136, entry.time);
    put(block, 148, "        ");
    block[156] = static_cast<std::uint8_t>(entry.kind);
    put(block, 157, entry.link);
    put(block, 257, entry.magic);
    put(block, 345, entry.prefix);
    put(block, 148, octal(std::accumulate(block.begin(), block.end(), std::size_t{0})).substr(5) + '\0');
    return block;
}

std::string tarMember(const TarEntry& entry) {
    const tar::Block header = tarHeader(entry);
    return std::string(header.begin(), header.end()) + padded(entry.content);
}

std::string paxHeader(std::string_view keyword, std::string_view value, char kind) {
    std::string record = ' ' + std::string(keyword) + '=' + std::string(value) + '\n';
    std::size_t length = record.size() + 1;
    while (std::to_string(length).size() + record.size() != length) ++length;
    return tarMember({.name = "pax", .content = std::to_string(length) + record, .kind = kind});
}

std::string longHeader(std::string_view text, char kind) {
    return tarMember({.name = "././@LongLink", .content = std::string(text) + '\0', .kind = kind});
}

std::string tarEnd() {
    return std::string(2 * tar::blockSize, '\0');
}

std::string gzipped(std::string_view content) {
    std::string file("\x1F\x8B\x08\0\0\0\0\0\0\xFF", 10);
    const std::uint32_t crc = checksum::update(0, content.data(), content.size());
    const auto size = static_cast<std::uint32_t>(content.size());
    constexpr std::size_t longest = 0xFFFF;
    do {
        const std::string_view piece = content.substr(0, longest);
        content.remove_prefix(piece.size());
        const auto length = static_cast<std::uint32_t>(piece.size());
        file += content.empty() ? '\1' : '\0';
        file += littleEndian(length, 2) + littleEndian(~length, 2) + std::string(piece);
    } while (!content.empty());
    return file + littleEndian(crc, 4) + littleEndian(size, 4);
}

}  // namespace testing
