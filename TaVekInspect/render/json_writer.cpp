#include "TaVekInspect/render/json_writer.h"

#include <array>
#include <cstdio>
#include <string>

#include "TaVekInspect/model/utf8.h"

JsonWriter& JsonWriter::object() {
    next();
    open('{', '}');
    return *this;
}

JsonWriter& JsonWriter::array() {
    next();
    open('[', ']');
    return *this;
}

JsonWriter& JsonWriter::object(std::string_view key) {
    name(key);
    open('{', '}');
    return *this;
}

JsonWriter& JsonWriter::array(std::string_view key) {
    name(key);
    open('[', ']');
    return *this;
}

JsonWriter& JsonWriter::end() {
    const Level level = levels_.back();
    levels_.pop_back();
    if (!level.isEmpty) out_ << '\n' << std::string(2 * levels_.size(), ' ');
    out_ << level.closing;
    if (levels_.empty()) out_ << '\n';
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view key, std::string_view text) {
    name(key);
    quote(text);
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view key, std::uint64_t number) {
    name(key);
    out_ << number;
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view key, bool flag) {
    name(key);
    out_ << (flag ? "true" : "false");
    return *this;
}

JsonWriter& JsonWriter::item(std::string_view text) {
    next();
    quote(text);
    return *this;
}

/// Begins a new line for the next value, behind a comma when it is not the first.
void JsonWriter::next() {
    if (levels_.empty()) return;
    if (!levels_.back().isEmpty) out_ << ',';
    levels_.back().isEmpty = false;
    out_ << '\n' << std::string(2 * levels_.size(), ' ');
}

void JsonWriter::name(std::string_view key) {
    next();
    quote(key);
    out_ << ": ";
}

void JsonWriter::open(char bracket, char closing) {
    out_ << bracket;
    levels_.push_back({closing, true});
}

void JsonWriter::quote(std::string_view text) {
    out_ << '"';
    for (const char character : validUtf8(text)) {
        if (character == '"' || character == '\\') {
            out_ << '\\' << character;
        } else if (static_cast<unsigned char>(character) < ' ') {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(character));
            out_ << escape.data();
        } else {
            out_ << character;
        }
    }
    out_ << '"';
}
