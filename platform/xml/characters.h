#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

/// What XML 1.0 (fifth edition) says of single characters and names, over UTF-8.
namespace xml {

/// What a byte may be. Bytes from 0x80 on belong to none of these: they begin (or break) a longer character.
enum CharacterClass : std::uint8_t {
    nameStart = 1,
    nameCharacter = 2,
    whiteSpace = 4,
    plainText = 8,     ///< Means nothing but itself in character data: not `<`, `&`, `]`.
    plainValue = 16,   ///< Means nothing but itself in an attribute value: not `<`, `&`, a quote.
    plainMarkup = 32,  ///< Ends nothing in comments, instructions and CDATA: not `-`, `?`, `]`.
};

extern const std::array<std::uint8_t, 256> characterClasses;

inline bool isClass(char byte, CharacterClass which) {
    return (characterClasses[static_cast<unsigned char>(byte)] & which) != 0;
}
inline bool isSpace(char byte) {
    return isClass(byte, whiteSpace);
}
inline bool isAscii(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

/// Reads the character at `at`, in text that ends in a zero byte, and answers how many bytes it has; 0 where
/// the bytes are no UTF-8 (overlong forms, surrogates and what lies beyond U+10FFFF included).
unsigned decode(const char* at, char32_t& character);

/// Appends `character` as UTF-8.
void appendUtf8(std::string& text, char32_t character);

/// The production Char: what a document may hold at all.
bool isCharacter(char32_t character);
bool isNameStart(char32_t character);
bool isNameCharacter(char32_t character);

/// The end of the name that begins at `at`, in text that ends in a zero byte; `at` itself when none does.
const char* nameEnd(const char* at);

/// True when `text`, which ends in a zero byte, is a name and nothing else.
bool isName(const char* text);

/// True when `text` holds white space alone, or nothing.
bool isBlank(std::string_view text);

/// "U+000C", as messages name a character.
std::string codePoint(char32_t character);

}  // namespace xml
