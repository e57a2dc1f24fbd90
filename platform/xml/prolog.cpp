#include "platform/xml/prolog.h"
#include "platform/xml/joined.h"

#include <algorithm>
#include <array>

namespace xml {
namespace {

/// Walks through the two declarations; every step is a member so that the grammar reads in order.
class Walk {
  public:
    Walk(const Reader& reader, const char* at) : reader_(reader), at_(at) {}

    const char* at() const { return at_; }
    bool sees(std::string_view text) const { return reader_.startsWith(at_, text); }
    bool skipSpaces() {
        const char* start = at_;
        while (isSpace(*at_)) ++at_;
        return at_ != start;
    }
    void requireSpaces(std::string_view behind) {
        if (!skipSpaces()) fail(joined({"white space must follow ", behind}));
    }
    bool take(std::string_view text) {
        if (!sees(text)) return false;
        at_ += text.size();
        return true;
    }
    void require(std::string_view text, std::string_view sentence) {
        if (!take(text)) fail(sentence);
    }
    [[noreturn]] void fail(std::string_view sentence) const { reader_.fail(at_, sentence); }

    std::string_view quoted(std::string_view what);
    std::string_view pseudoAttribute(std::string_view name);
    void publicIdentifier();
    void externalIdentifier();
    void internalSubset();
    void markupDeclaration();
    void skipName(std::string_view before) { at_ = reader_.name(at_, before); }

  private:
    const Reader& reader_;
    const char* at_;
};

bool isPublicIdentifierCharacter(char byte) {
    constexpr std::string_view others = " \r\n-'()+,./:=?;!*#@$_%";
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           others.find(byte) != std::string_view::npos;
}

bool isVersion(std::string_view version) {
    return version.size() >= 3 && version.starts_with("1.") &&
           std::all_of(version.begin() + 2, version.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isEncodingName(std::string_view name) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !name.empty() && isLetter(name.front()) && std::all_of(name.begin(), name.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
    });
}

std::string_view Walk::quoted(std::string_view what) {
    const char quote = *at_;
    if (quote != '"' && quote != '\'') fail(joined({what, " must stand in quotes"}));
    const char* start = at_;
    for (++at_; *at_ != quote;) {
        if (reader_.isEnd(at_)) reader_.fail(start, joined({what, " has no closing quote"}));
        at_ = reader_.character(at_);
    }
    return {start + 1, static_cast<std::size_t>(at_++ - start - 1)};
}

std::string_view Walk::pseudoAttribute(std::string_view name) {
    skipSpaces();
    require("=", joined({"\"=\" must follow ", name}));
    skipSpaces();
    return quoted(joined({"the ", name}));
}

void Walk::publicIdentifier() {
    const std::string_view identifier = quoted("the public identifier");
    const auto bad = std::find_if_not(identifier.begin(), identifier.end(), isPublicIdentifierCharacter);
    if (bad != identifier.end()) reader_.fail(&*bad, "this character must not stand in a public identifier");
}

void Walk::externalIdentifier() {
    if (take("PUBLIC")) {
        requireSpaces("PUBLIC");
        publicIdentifier();
        requireSpaces("the public identifier");
    } else {
        at_ += std::string_view("SYSTEM").size();
        requireSpaces("SYSTEM");
    }
    static_cast<void>(quoted("the system identifier"));
}

void Walk::markupDeclaration() {
    const char* start = at_;
    constexpr std::array<std::string_view, 4> keywords = {"<!ELEMENT", "<!ATTLIST", "<!ENTITY", "<!NOTATION"};
    const auto* keyword = std::find_if(keywords.begin(), keywords.end(), [&](auto k) { return sees(k); });
    if (keyword == keywords.end()) fail("this is no declaration that a document type may hold");
    at_ += keyword->size();
    requireSpaces(*keyword);
    while (!take(">")) {
        if (reader_.isEnd(at_)) reader_.fail(start, "the declaration is not closed");
        if (*at_ == '<' || *at_ == '[' || *at_ == ']')
            fail(joined({"\"", {at_, 1}, "\" must not stand in a declaration"}));
        if (*at_ == '"' || *at_ == '\'') {
            static_cast<void>(quoted("the literal"));
        } else {
            at_ = reader_.character(at_);
        }
    }
}

void Walk::internalSubset() {
    const char* start = at_ - 1;
    for (;;) {
        skipSpaces();
        if (take("]")) return;
        if (sees("<!--")) {
            at_ = reader_.comment(at_);
        } else if (sees("<?")) {
            at_ = reader_.instruction(at_);
        } else if (take("%")) {
            skipName("\"%\"");
            require(";", "\";\" must end the reference to a parameter entity");
        } else if (sees("<!")) {
            markupDeclaration();
        } else if (reader_.isEnd(at_)) {
            reader_.fail(start, "the document type's \"[\" is not closed");
        } else {
            fail("only declarations may stand between the document type's brackets");
        }
    }
}

}  // namespace

Declaration readDeclaration(const Reader& reader) {
    Walk walk(reader, reader.begin());
    if (!walk.take("<?xml") || !(isSpace(*walk.at()) || walk.sees("?>"))) return {reader.begin(), {}};

    Declaration declaration{};
    walk.requireSpaces("<?xml");
    walk.require("version", "the XML declaration must begin with the version");
    const char* const place = walk.at();
    if (!isVersion(walk.pseudoAttribute("version")))
        reader.fail(place, "the version must be 1.0 (or another 1.x)");

    bool hasSpace = walk.skipSpaces();
    if (hasSpace && walk.take("encoding")) {
        declaration.encoding = walk.pseudoAttribute("encoding");
        if (!isEncodingName(declaration.encoding))
            reader.fail(declaration.encoding.data(),
                        joined({"\"", declaration.encoding, "\" is no name of an encoding"}));
        hasSpace = walk.skipSpaces();
    }
    if (hasSpace && walk.take("standalone")) {
        const std::string_view value = walk.pseudoAttribute("standalone");
        if (value != "yes" && value != "no") reader.fail(value.data(), "standalone must be yes or no");
        walk.skipSpaces();
    }
    walk.require("?>", "the XML declaration must end in \"?>\" here");
    declaration.end = walk.at();
    return declaration;
}

const char* readDocumentType(const Reader& reader, const char* at) {
    Walk walk(reader, at);
    walk.require("<!DOCTYPE", "a document type begins with <!DOCTYPE");
    walk.requireSpaces("<!DOCTYPE");
    walk.skipName("<!DOCTYPE");
    const bool hasSpace = walk.skipSpaces();
    if (hasSpace && (walk.sees("SYSTEM") || walk.sees("PUBLIC"))) {
        walk.externalIdentifier();
        walk.skipSpaces();
    }
    if (walk.take("[")) {
        walk.internalSubset();
        walk.skipSpaces();
    }
    walk.require(">", "the document type must end in \">\" here");
    return walk.at();
}

}  // namespace xml
