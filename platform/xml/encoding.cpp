#include "platform/xml/encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "platform/xml/characters.h"

namespace xml {
namespace {

/// Windows-1252 from 0x80 to 0x9F; 0 where it defines nothing.
constexpr std::array<char16_t, 32> windows1252Specials = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

struct Alias {
    std::string_view name;  ///< In small letters.
    Encoding encoding;
};

constexpr Alias aliases[] = {
    {"utf-8", Encoding::utf8},
    {"utf8", Encoding::utf8},
    {"csutf8", Encoding::utf8},
    {"utf-16le", Encoding::utf16LittleEndian},
    {"utf-16be", Encoding::utf16BigEndian},
    {"us-ascii", Encoding::ascii},
    {"ascii", Encoding::ascii},
    {"iso646-us", Encoding::ascii},
    {"iso-ir-6", Encoding::ascii},
    {"us", Encoding::ascii},
    {"ibm367", Encoding::ascii},
    {"cp367", Encoding::ascii},
    {"csascii", Encoding::ascii},
    {"iso-8859-1", Encoding::latin1},
    {"iso8859-1", Encoding::latin1},
    {"iso_8859-1", Encoding::latin1},
    {"latin1", Encoding::latin1},
    {"latin-1", Encoding::latin1},
    {"l1", Encoding::latin1},
    {"iso-ir-100", Encoding::latin1},
    {"ibm819", Encoding::latin1},
    {"cp819", Encoding::latin1},
    {"csisolatin1", Encoding::latin1},
    {"windows-1252", Encoding::windows1252},
    {"cp1252", Encoding::windows1252},
    {"cp-1252", Encoding::windows1252},
    {"cswindows1252", Encoding::windows1252},
};

bool isSixteenBit(Encoding encoding) {
    return encoding == Encoding::utf16LittleEndian || encoding == Encoding::utf16BigEndian;
}

unsigned byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

/// The character of a byte in an 8-bit encoding; 0 where the encoding defines none.
char32_t fromByte(unsigned byte, Encoding encoding) {
    if (byte < 0x80) return byte;
    if (encoding == Encoding::ascii) return 0;
    if (encoding == Encoding::windows1252 && byte < 0xA0) return windows1252Specials[byte - 0x80];
    return byte;
}

/// The byte of a character in an 8-bit encoding; none where it has none.
std::optional<unsigned> toByte(char32_t character, Encoding encoding) {
    if (character < 0x80) return character;
    if (encoding == Encoding::ascii) return std::nullopt;
    if (encoding == Encoding::windows1252) {
        const auto special = std::find(windows1252Specials.begin(), windows1252Specials.end(), character);
        if (special != windows1252Specials.end())
            return static_cast<unsigned>(0x80 + (special - windows1252Specials.begin()));
        if (character < 0xA0) return std::nullopt;
    }
    return character < 0x100 ? std::optional<unsigned>(character) : std::nullopt;
}

Decoded decodeEightBit(std::string_view bytes, Encoding encoding) {
    Decoded decoded;
    decoded.text.reserve(bytes.size() + bytes.size() / 8);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char32_t character = fromByte(byteAt(bytes, i), encoding);
        if (character == 0 && bytes[i] != '\0') {
            std::array<char, 8> byte{};
            std::snprintf(byte.data(), byte.size(), "0x%02X", byteAt(bytes, i));
            decoded.fault = "the byte " + std::string(byte.data()) + " is none of " + encodingName(encoding);
            return decoded;
        }
        appendUtf8(decoded.text, character);
    }
    return decoded;
}

Decoded decodeSixteenBit(std::string_view bytes, Encoding encoding) {
    const std::size_t low = encoding == Encoding::utf16LittleEndian ? 0 : 1;
    const auto unit = [&](std::size_t at) -> char32_t {
        return byteAt(bytes, at + low) | byteAt(bytes, at + 1 - low) << 8;
    };
    Decoded decoded;
    decoded.text.reserve(bytes.size() / 2 + bytes.size() / 16);
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        const bool isWhole = at + 1 < bytes.size();
        char32_t character = isWhole ? unit(at) : 0;
        if (isWhole && character >= 0xD800 && character <= 0xDBFF && at + 3 < bytes.size()) {
            const char32_t second = unit(at + 2);
            if (second >= 0xDC00 && second <= 0xDFFF) {
                character = 0x10000 + ((character - 0xD800) << 10) + (second - 0xDC00);
                at += 2;
            }
        }
        if (!isWhole || (character >= 0xD800 && character <= 0xDFFF)) {
            decoded.fault =
                isWhole ? "half a surrogate pair stands alone" : "the last character is cut in half";
            return decoded;
        }
        appendUtf8(decoded.text, character);
    }
    return decoded;
}

void encodeSixteenBit(std::string& bytes, char32_t character, bool littleEndian) {
    const auto put = [&](char32_t unit) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += littleEndian ? low : high;
        bytes += littleEndian ? high : low;
    };
    if (character < 0x10000) return put(character);
    put(0xD800 + ((character - 0x10000) >> 10));
    put(0xDC00 + ((character - 0x10000) & 0x3FF));
}

}  // namespace

const char* encodingName(Encoding encoding) {
    switch (encoding) {
        case Encoding::utf8:
            return "UTF-8";
        case Encoding::utf16LittleEndian:
            return "UTF-16LE";
        case Encoding::utf16BigEndian:
            return "UTF-16BE";
        case Encoding::ascii:
            return "US-ASCII";
        case Encoding::latin1:
            return "ISO-8859-1";
        case Encoding::windows1252:
            return "Windows-1252";
    }
    return "";
}

Mark readMark(std::string_view bytes) {
    using namespace std::string_view_literals;
    if (bytes.starts_with("\xFF\xFE\0\0"sv) || bytes.starts_with("\0\0\xFE\xFF"sv))
        return {Encoding::utf8, true, "UTF-32 is not supported"};
    if (bytes.starts_with("\xEF\xBB\xBF")) return {Encoding::utf8, true};
    if (bytes.starts_with("\xFF\xFE")) return {Encoding::utf16LittleEndian, true};
    if (bytes.starts_with("\xFE\xFF")) return {Encoding::utf16BigEndian, true};
    if (bytes.starts_with("<\0"sv) || bytes.starts_with("\0<"sv) || bytes.starts_with("\0\0\0<"sv))
        return {Encoding::utf8, false, "text of 16 or 32 bits a character needs a byte order mark"};
    if (bytes.starts_with("\x4C\x6F\xA7\x94")) return {Encoding::utf8, false, "EBCDIC is not supported"};
    return {};
}

std::optional<Encoding> encodingNamed(std::string_view name, Encoding marked) {
    std::string lower(name);
    for (char& letter : lower) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter + ('a' - 'A'));
    }
    if (lower == "utf-16" || lower == "utf16" || lower == "csutf16")
        return isSixteenBit(marked) ? marked : Encoding::utf16BigEndian;
    const auto alias = std::find_if(std::begin(aliases), std::end(aliases),
                                    [&](const Alias& candidate) { return candidate.name == lower; });
    return alias == std::end(aliases) ? std::nullopt : std::optional(alias->encoding);
}

Decoded decodeBytes(std::string_view bytes, Encoding encoding) {
    return isSixteenBit(encoding) ? decodeSixteenBit(bytes, encoding) : decodeEightBit(bytes, encoding);
}

bool canEncode(Encoding encoding, char32_t character) {
    if (encoding == Encoding::utf8 || isSixteenBit(encoding)) return true;
    return toByte(character, encoding).has_value();
}

bool canEncode(Encoding encoding, std::string_view text) {
    if (encoding == Encoding::utf8 || isSixteenBit(encoding)) return true;
    for (std::size_t at = 0; at < text.size();) {
        char32_t character = 0;
        at += decode(text.data() + at, character);
        if (!canEncode(encoding, character)) return false;
    }
    return true;
}

void encodeText(std::string& bytes, std::string_view text, Encoding encoding) {
    for (std::size_t at = 0; at < text.size();) {
        char32_t character = 0;
        at += decode(text.data() + at, character);
        if (isSixteenBit(encoding)) {
            encodeSixteenBit(bytes, character, encoding == Encoding::utf16LittleEndian);
        } else {
            bytes += static_cast<char>(*toByte(character, encoding));
        }
    }
}

}  // namespace xml
