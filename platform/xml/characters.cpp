#include "platform/xml/characters.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace xml {
namespace {

constexpr bool isOneOf(unsigned byte, std::string_view set) {
    return byte < 0x80 && set.find(static_cast<char>(byte)) != std::string_view::npos;
}

constexpr std::uint8_t classesOf(unsigned byte) {
    const bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || isOneOf(byte, "_:");
    const bool digit = byte >= '0' && byte <= '9';
    const bool space = isOneOf(byte, " \t\r\n");
    const bool legal = space || (byte >= 0x20 && byte < 0x80);

    unsigned classes = 0;
    if (letter) classes |= nameStart;
    if (letter || digit || isOneOf(byte, "-.")) classes |= nameCharacter;
    if (space) classes |= whiteSpace;
    if (legal && !isOneOf(byte, "<&]")) classes |= plainText;
    if (legal && !isOneOf(byte, "<&\"'")) classes |= plainValue;
    if (legal && !isOneOf(byte, "-?]")) classes |= plainMarkup;
    return static_cast<std::uint8_t>(classes);
}

constexpr std::array<std::uint8_t, 256> makeClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (unsigned byte = 0; byte < classes.size(); ++byte) classes[byte] = classesOf(byte);
    return classes;
}

struct Range {
    char32_t first;
    char32_t last;
};

constexpr Range nameStartRanges[] = {
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

constexpr std::array<std::uint8_t, 256> characterClasses = makeClasses();

unsigned decode(const char* at, char32_t& character) {
    const auto lead = static_cast<unsigned char>(*at);
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4) return 0;

    const unsigned length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    character = lead & (0x7Fu >> length);
    for (unsigned i = 1; i < length; ++i) {
        if (!isContinuation(at[i])) return 0;
        character = character << 6 | (static_cast<unsigned char>(at[i]) & 0x3F);
    }
    if (length == 3 && (character < 0x800 || (character >= 0xD800 && character <= 0xDFFF))) return 0;
    if (length == 4 && (character < 0x10000 || character > 0x10FFFF)) return 0;
    return length;
}

void appendUtf8(std::string& text, char32_t character) {
    const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | character >> 12);
        tail(6), tail(0);
    } else {
        text += static_cast<char>(0xF0 | character >> 18);
        tail(12), tail(6), tail(0);
    }
}

bool isCharacter(char32_t character) {
    if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
    return character <= 0xD7FF || (character >= 0xE000 && character <= 0xFFFD) ||
           (character >= 0x10000 && character <= 0x10FFFF);
}

bool isNameStart(char32_t character) {
    if (character < 0x80) return isClass(static_cast<char>(character), nameStart);
    return std::any_of(std::begin(nameStartRanges), std::end(nameStartRanges), [&](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

bool isNameCharacter(char32_t character) {
    if (character < 0x80) return isClass(static_cast<char>(character), nameCharacter);
    return character == 0xB7 || (character >= 0x300 && character <= 0x36F) ||
           (character >= 0x203F && character <= 0x2040) || isNameStart(character);
}

const char* nameEnd(const char* at) {
    char32_t character = 0;
    unsigned length = decode(at, character);
    if (length == 0 || !isNameStart(character)) return at;
    at += length;
    for (;;) {
        while (isClass(*at, nameCharacter)) ++at;
        if (isAscii(*at)) return at;
        length = decode(at, character);
        if (length == 0 || !isNameCharacter(character)) return at;
        at += length;
    }
}

bool isName(const char* text) {
    const char* end = nameEnd(text);
    return end != text && *end == '\0';
}

bool isBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), isSpace);
}

std::string codePoint(char32_t character) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "U+%04X", static_cast<unsigned>(character));
    return text.data();
}

}  // namespace xml
