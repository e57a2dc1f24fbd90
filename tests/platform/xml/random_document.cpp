#include "tests/platform/xml/random_document.h"

#include <array>

#include "platform/xml/characters.h"

namespace testing {
namespace {

using xml::Encoding;

void describe(std::string& result, const Element& element, std::size_t depth) {
    result += std::to_string(depth) + " " + element.name;
    for (const auto& [name, value] : element.attributes) result += " " + name + "=[" + value + "]";
    if (!xml::isBlank(element.text)) result += " \"" + element.text + "\"";
    result += "\n";
    for (const Element& child : element.children) describe(result, child, depth + 1);
}

const char* declaredName(Encoding encoding) {
    const bool isSixteenBit = encoding == Encoding::utf16LittleEndian || encoding == Encoding::utf16BigEndian;
    return isSixteenBit ? "UTF-16" : xml::encodingName(encoding);
}

/// The encoding's own bytes of what was written as UTF-8.
std::string bytesOf(const std::string& text, Encoding encoding) {
    if (encoding == Encoding::utf8) return text;
    std::string bytes;
    if (encoding == Encoding::utf16LittleEndian) bytes = "\xFF\xFE";
    if (encoding == Encoding::utf16BigEndian) bytes = "\xFE\xFF";
    xml::encodeText(bytes, text, encoding);
    return bytes;
}

}  // namespace

std::string describe(const Element& root) {
    std::string result;
    describe(result, root, 1);
    return result;
}

std::string RandomDocument::name(Encoding encoding) {
    static constexpr std::array<const char*, 10> names = {"a",
                                                          "File",
                                                          "x-1.y_",
                                                          "_",
                                                          "very.long-name_with.everything-0123456789",
                                                          "Or",
                                                          "e\xC3\xA9",
                                                          "\xC3\xA9",
                                                          "\xE4\xB8\x80",
                                                          "\xF0\x90\x80\x80z"};
    for (;;) {
        const char* chosen = names[roll(names.size())];
        if (xml::canEncode(encoding, std::string_view(chosen))) return chosen;
    }
}

std::string RandomDocument::text() {
    static constexpr std::array<const char*, 24> parts = {
        "a",
        "word",
        " ",
        "  ",
        "\n",
        "\t",
        "\r",
        "<",
        ">",
        "&",
        "\"",
        "'",
        "]]",
        "]]>",
        "--",
        "?>",
        "&amp;",
        "=",
        "\x7F",
        "\xC3\xA9",
        "\xC2\x85",
        "\xE2\x82\xAC",
        "\xF0\x9F\x98\x80",
        "a long run of plain letters, longer than any block that is scanned at once"};
    std::string result;
    for (std::size_t count = roll(2) == 0 ? 0 : roll(8); count > 0; --count)
        result += parts[roll(parts.size())];
    return result;
}

Element RandomDocument::element(Encoding encoding, std::size_t depth) {
    Element made{name(encoding), {}, text(), {}};
    for (std::size_t count = roll(3) == 0 ? roll(12) : roll(3); count > 0; --count)
        made.attributes.emplace_back("n" + std::to_string(count), text());
    const std::size_t children = depth == 0 ? 0 : roll(5);
    for (std::size_t i = 0; i < children; ++i) made.children.push_back(element(encoding, depth - 1));
    return made;
}

/// White space that says nothing: none where it would be text.
std::string RandomDocument::layout(const Element& parent) {
    if (!parent.text.empty() || chance(3)) return {};
    return lineEnd_ + std::string(roll(6), chance(4) ? '\t' : ' ');
}

/// A comment or an instruction, mostly nothing.
std::string RandomDocument::noise(Encoding encoding) {
    const bool isRich = xml::canEncode(encoding, U'\u20AC');
    switch (roll(12)) {
        case 0:
            return isRich ? "<!-- <a> & ]]> - \xE2\x82\xAC" + lineEnd_ + "-->" : "<!-- <a> & ]]> - -->";
        case 1:
            return "<?go -- & <a> ? ]]> ?>";
        default:
            return {};
    }
}

std::string RandomDocument::tagSpace(const char* least) {
    return chance(6) ? lineEnd_ + "  " : chance(6) ? "\t " : least;
}

std::string RandomDocument::reference(char32_t character) {
    static constexpr std::array<std::pair<char32_t, const char*>, 5> entities = {
        {{'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&apos;"}}};
    if (!chance(3)) {
        for (const auto& [known, entity] : entities) {
            if (known == character) return entity;
        }
    }
    if (chance(2)) return "&#" + std::to_string(static_cast<unsigned>(character)) + ";";
    std::string code = xml::codePoint(character).substr(2);
    return "&#x" + code + ";";
}

/// `text` as character data (`quote` is zero) or as a value between quotes.
std::string RandomDocument::characters(std::string_view text, char quote, Encoding encoding) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        char32_t character = 0;
        const unsigned length = xml::decode(text.data() + at, character);
        const bool isSpecial = character == '<' || character == '&' || character == '\r' ||
                               (quote == '\0' ? character == '>'
                                              : character == '\t' || character == '\n' ||
                                                    character == static_cast<char32_t>(quote));
        if (isSpecial || !xml::canEncode(encoding, character) || chance(20)) {
            result += reference(character);
        } else if (character == '\n') {
            result += lineEnd_;
        } else {
            result += text.substr(at, length);
        }
        at += length;
    }
    return result;
}

std::string RandomDocument::tag(const Element& element, Encoding encoding) {
    std::string result = "<" + element.name;
    for (const auto& [name, value] : element.attributes) {
        const char quote = chance(2) ? '"' : '\'';
        result += tagSpace(" ") + name + tagSpace("") + "=" + tagSpace("") + quote +
                  characters(value, quote, encoding) + quote;
    }
    return result + tagSpace("");
}

/// All of the element's text, in one or several runs and sections.
std::string RandomDocument::content(const Element& element, Encoding encoding) {
    const std::string& text = element.text;
    const bool fitsSection = text.find("]]>") == std::string::npos &&
                             text.find_first_of("\r\n") == std::string::npos &&
                             xml::canEncode(encoding, std::string_view(text));
    if (!text.empty() && fitsSection && chance(4)) return "<![CDATA[" + text + "]]>";
    // Cut before a character, so that both parts are UTF-8.
    std::size_t cut = roll(text.size() + 1);
    while (cut < text.size() && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) ++cut;
    const std::string_view whole = text;
    return characters(whole.substr(0, cut), '\0', encoding) + noise(encoding) +
           characters(whole.substr(cut), '\0', encoding);
}

void RandomDocument::write(std::string& out, const Element& element, Encoding encoding) {
    out += tag(element, encoding);
    const std::string text = content(element, encoding);
    if (text.empty() && element.children.empty() && chance(2)) {
        out += "/>";
        return;
    }
    out += ">";
    const std::size_t textPlace = roll(element.children.size() + 1);
    for (std::size_t i = 0; i <= element.children.size(); ++i) {
        if (i == textPlace) out += text;
        out += noise(encoding) + layout(element);
        if (i < element.children.size()) write(out, element.children[i], encoding);
    }
    out += "</" + element.name + tagSpace("") + ">";
}

std::string RandomDocument::prolog(const Element& root, Encoding encoding) {
    std::string text;
    if (encoding != Encoding::utf8 || chance(2)) {
        text = std::string("<?xml version=\"1.0\" encoding='") + declaredName(encoding) + "'" +
               (chance(3) ? " standalone='yes'" : "") + "?>" + lineEnd_;
    } else if (chance(4)) {
        text = "\xEF\xBB\xBF";
    }
    text += noise(encoding);
    if (chance(4)) text += "<!DOCTYPE " + root.name + (chance(2) ? " [<!ENTITY e ']>'>]>" : ">") + lineEnd_;
    return text;
}

std::string RandomDocument::written(const Element& root, Encoding encoding) {
    static constexpr std::array<const char*, 3> lineEnds = {"\n", "\r\n", "\r"};
    lineEnd_ = lineEnds[roll(lineEnds.size())];
    std::string text = prolog(root, encoding);
    write(text, root, encoding);
    if (chance(2)) text += lineEnd_ + noise(encoding);
    return bytesOf(text, encoding);
}

}  // namespace testing
