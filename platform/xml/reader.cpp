#include "platform/xml/reader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/xml/scan.h"

namespace xml {
namespace {

constexpr std::pair<std::string_view, char> entities[] = {
    {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};

const std::pair<std::string_view, char>* findEntity(std::string_view name) {
    const auto* entity = std::find_if(std::begin(entities), std::end(entities),
                                      [&](const auto& candidate) { return candidate.first == name; });
    return entity == std::end(entities) ? nullptr : entity;
}

int digitOf(char letter) {
    if (letter >= '0' && letter <= '9') return letter - '0';
    if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
    if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
    return 99;
}

/// Reads the digits of a character reference, which begins behind its `#`; `at` moves behind them. A number
/// beyond every character stays so, however long it is.
char32_t readNumber(const char*& at) {
    const int base = *at == 'x' ? 16 : 10;
    if (base == 16) ++at;
    char32_t number = 0;
    for (; digitOf(*at) < base; ++at) {
        if (number <= 0x10FFFF)
            number = number * static_cast<char32_t>(base) + static_cast<char32_t>(digitOf(*at));
    }
    return number;
}

bool isReservedTarget(std::string_view target) {
    return target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' &&
           (target[2] | 0x20) == 'l';
}

}  // namespace

void Reader::refuse(const char* place, std::string_view sentence, zStatus status) const {
    throw Fault{status, position(begin_, place) + ": " + std::string(sentence)};
}

void Reader::fail(const char* place, std::string_view sentence, zStatus status) const {
    if (!isEnd(place)) static_cast<void>(character(place));
    refuse(place, sentence, status);
}

const char* Reader::character(const char* at) const {
    char32_t character = 0;
    const unsigned length = decode(at, character);
    if (length == 0) refuse(at, "the bytes are no UTF-8", zStatus_Malformed);
    if (!isCharacter(character))
        refuse(at, "the character " + codePoint(character) + " is not allowed in XML", zStatus_Malformed);
    return at + length;
}

const char* Reader::name(const char* at, std::string_view before) const {
    const char* end = nameEnd(at);
    if (end == at) fail(at, "a name must follow " + std::string(before));
    return end;
}

const char* Reader::reference(const char* at) const {
    if (at[1] == '#') return characterReference(at);
    const char* end = nameEnd(at + 1);
    if (end == at + 1) fail(at, "\"&\" begins no reference; a plain ampersand is written &amp;");
    const std::string_view name(at + 1, static_cast<std::size_t>(end - at - 1));
    if (*end != ';') fail(at, "the reference &" + std::string(name) + " has no \";\"");
    if (findEntity(name) == nullptr) fail(at, "the entity &" + std::string(name) + "; is not known");
    return end + 1;
}

const char* Reader::characterReference(const char* at) const {
    const char* digits = at[2] == 'x' ? at + 3 : at + 2;
    const char* end = at + 2;
    const char32_t character = readNumber(end);
    const std::string text(at, end);
    if (end == digits) fail(at, "a character reference needs a number, as in &#65; or &#x41;");
    if (*end != ';') fail(at, "the reference " + text + " has no \";\"");
    if (!isCharacter(character)) fail(at, text + "; is no character that XML allows");
    return end + 1;
}

const char* Reader::comment(const char* at) const {
    const char* start = at;
    for (at += 4;;) {
        at = skipMarkup(at, end_);
        if (*at == '-' && at[1] == '-') {
            if (at[2] != '>') fail(at, "\"--\" must not stand inside a comment");
            return at + 3;
        }
        if (isEnd(at)) fail(start, "the comment is not closed");
        at = character(at);
    }
}

const char* Reader::instruction(const char* at) const {
    const char* start = at;
    at = name(at + 2, "\"<?\"");
    const std::string_view target(start + 2, static_cast<std::size_t>(at - start - 2));
    if (isReservedTarget(target)) {
        fail(start, target == "xml" ? "the XML declaration must stand at the very beginning, once"
                                    : "the target " + std::string(target) + " is reserved");
    }
    if (!isSpace(*at) && !startsWith(at, "?>") && !isEnd(at))
        fail(at, "white space must follow the target " + std::string(target));
    for (;;) {
        at = skipMarkup(at, end_);
        if (*at == '?' && at[1] == '>') return at + 2;
        if (isEnd(at)) fail(start, "the processing instruction is not closed");
        at = character(at);
    }
}

const char* Reader::cdata(const char* at) const {
    const char* start = at;
    for (at += 9;;) {
        at = skipMarkup(at, end_);
        if (*at == ']' && at[1] == ']' && at[2] == '>') return at + 3;
        if (isEnd(at)) fail(start, "the CDATA section is not closed");
        at = character(at);
    }
}

char32_t resolve(std::string_view reference) {
    if (reference[1] == '#') {
        const char* at = reference.data() + 2;
        return readNumber(at);
    }
    return static_cast<unsigned char>(findEntity(reference.substr(1, reference.size() - 2))->second);
}

}  // namespace xml
