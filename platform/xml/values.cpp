#include "platform/xml/values.h"

#include <algorithm>
#include <cstring>

#include "platform/xml/characters.h"
#include "platform/xml/gap.h"
#include "platform/xml/reader.h"

namespace xml {
namespace {

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

const char* skipSpaces(const char* at) {
    while (isSpace(*at)) ++at;
    return at;
}

/// Takes the reference off the front of `text` and appends what it stands for.
void takeReference(std::string& result, std::string_view& text) {
    const std::size_t size = text.find(';') + 1;
    appendUtf8(result, resolve(text.substr(0, size)));
    text.remove_prefix(size);
}

/// Appends `text` with what `special` finds replaced by what `replace` appends for it.
template <typename Replace>
std::string rewritten(std::string_view text, Encoding encoding, Replace replace) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        char32_t character = 0;
        const unsigned length = decode(text.data() + at, character);
        const std::string_view replacement = replace(character);
        if (!replacement.empty()) {
            result += replacement;
        } else if (!canEncode(encoding, character)) {
            appendReference(result, character);
        } else {
            result += text.substr(at, length);
        }
        at += length;
    }
    return result;
}

}  // namespace

AttributeScan::AttributeScan(std::string_view tag) : at_(tag.data() + 1) {
    while (!isSpace(*at_) && *at_ != '/' && *at_ != '>') ++at_;
}

bool AttributeScan::next(Attribute& attribute) {
    const char* name = skipSpaces(at_);
    if (*name == '>' || *name == '/') return false;
    attribute.space = between(at_, name);
    const char* end = name;
    while (*end != '=' && !isSpace(*end)) ++end;
    attribute.name = between(name, end);
    const char* quote = skipSpaces(skipSpaces(end) + 1);
    attribute.value = between(quote + 1, std::strchr(quote + 1, *quote));
    at_ = attribute.end();
    return true;
}

bool findAttribute(std::string_view tag, std::string_view name, Attribute& attribute) {
    AttributeScan scan(tag);
    while (scan.next(attribute)) {
        if (attribute.name == name) return true;
    }
    return false;
}

void TextReader::read(std::string_view content) {
    while (!content.empty()) {
        const Token token = nextToken(content);
        if (token.kind == TokenKind::text) {
            append(token.text, true);
            continue;
        }
        endsInReturn_ = false;
        if (token.kind == TokenKind::cdata) append(token.text.substr(9, token.text.size() - 12), false);
        endsInReturn_ = false;
    }
}

void TextReader::append(std::string_view run, bool hasReferences) {
    if (endsInReturn_ && run.starts_with('\n')) run.remove_prefix(1);
    endsInReturn_ = run.ends_with('\r');
    while (!run.empty()) {
        const std::size_t plain = std::min(run.find_first_of(hasReferences ? "&\r" : "\r"), run.size());
        text_ += run.substr(0, plain);
        run.remove_prefix(plain);
        if (run.empty()) return;
        if (run.front() == '&') {
            takeReference(text_, run);
        } else {
            text_ += '\n';
            run.remove_prefix(run.starts_with("\r\n") ? 2 : 1);
        }
    }
}

std::string readValue(std::string_view value) {
    std::string result;
    result.reserve(value.size());
    while (!value.empty()) {
        const std::size_t plain = std::min(value.find_first_of("&\t\r\n"), value.size());
        result += value.substr(0, plain);
        value.remove_prefix(plain);
        if (value.empty()) break;
        if (value.front() == '&') {
            takeReference(result, value);
        } else {
            result += ' ';
            value.remove_prefix(value.starts_with("\r\n") ? 2 : 1);
        }
    }
    return result;
}

std::string refusal(const char* text) {
    while (*text != '\0') {
        char32_t character = 0;
        const unsigned length = decode(text, character);
        if (length == 0) return "the text is no UTF-8";
        if (!isCharacter(character)) return "XML cannot hold the character " + codePoint(character);
        text += length;
    }
    return {};
}

void appendReference(std::string& text, char32_t character) {
    text += "&#" + std::to_string(static_cast<unsigned>(character)) + ';';
}

std::string writeText(std::string_view text, std::string_view lineEnd, Encoding encoding) {
    return rewritten(text, encoding, [&](char32_t character) -> std::string_view {
        switch (character) {
            case '&':
                return "&amp;";
            case '<':
                return "&lt;";
            case '>':
                return "&gt;";
            case '\r':
                return "&#13;";
            case '\n':
                return lineEnd;
            default:
                return {};
        }
    });
}

std::string writeValue(std::string_view text, char quote, Encoding encoding) {
    return rewritten(text, encoding, [&](char32_t character) -> std::string_view {
        switch (character) {
            case '&':
                return "&amp;";
            case '<':
                return "&lt;";
            case '"':
                return quote == '"' ? "&quot;" : "";
            case '\'':
                return quote == '\'' ? "&apos;" : "";
            case '\t':
                return "&#9;";
            case '\n':
                return "&#10;";
            case '\r':
                return "&#13;";
            default:
                return {};
        }
    });
}

}  // namespace xml
