#include "platform/xml/parser.h"

#include "platform/xml/joined.h"
#include "platform/xml/name_set.h"
#include "platform/xml/prolog.h"
#include "platform/xml/reader.h"
#include "platform/xml/scan.h"

namespace xml {
namespace {

/// nameEnd for names that are mostly ASCII.
const char* quickNameEnd(const char* at) {
    if (!isClass(*at, nameStart)) return nameEnd(at);
    const char* end = at + 1;
    while (isClass(*end, nameCharacter)) ++end;
    return isAscii(*end) ? end : nameEnd(at);
}

/// As in Reader, functions take the place where their part begins and answer where it ends.
class Parser {
  public:
    Parser(std::string_view text, ItemPool& pool) : reader_(text), pool_(pool) {}

    void document(const char* body, Item& top);
    void fragment(Item& parent) { element(reader_.begin(), parent); }

  private:
    const char* prolog(const char* at);
    const char* miscellaneous(const char* at);
    const char* element(const char* at, Item& parent);
    const char* text(const char* at);
    const char* markup(const char* at);
    const char* startTag(const char* at);
    const char* attributes(const char* at);
    const char* attributeValue(const char* at, std::string_view name);
    const char* endTag(const char* at);
    [[noreturn]] void failMarkup(const char* at, std::string_view where);
    [[noreturn]] void failEndTag(const char* at);

    Reader reader_;
    ItemPool& pool_;
    Item* open_ = nullptr;  ///< The element whose content is being read. Its size is that of its name.
    NameSet attributeNames_;
};

void Parser::document(const char* body, Item& top) {
    const char* at = element(prolog(body), top);
    at = miscellaneous(at);
    if (!reader_.isEnd(at)) failMarkup(at, "behind the root element");
}

const char* Parser::prolog(const char* at) {
    at = miscellaneous(at);
    if (reader_.startsWith(at, "<!DOCTYPE")) at = miscellaneous(readDocumentType(reader_, at));
    if (reader_.isEnd(at)) reader_.fail(at, "the document has no root element");
    if (*at != '<' || at[1] == '!' || at[1] == '/') failMarkup(at, "before the root element");
    return at;
}

/// White space, comments and instructions outside the root.
const char* Parser::miscellaneous(const char* at) {
    for (;;) {
        at = skipSpace(at);
        if (reader_.startsWith(at, "<?")) {
            at = reader_.instruction(at);
        } else if (reader_.startsWith(at, "<!--")) {
            at = reader_.comment(at);
        } else {
            return at;
        }
    }
}

void Parser::failMarkup(const char* at, std::string_view where) {
    if (*at != '<') reader_.fail(at, joined({"text must not stand ", where}));
    if (reader_.startsWith(at, "<!DOCTYPE"))
        reader_.fail(at, "a document type must stand before the root element, once");
    if (reader_.startsWith(at, "<![CDATA["))
        reader_.fail(at, joined({"a CDATA section must not stand ", where}));
    if (at[1] == '!') reader_.fail(at, joined({"\"<!\" begins nothing that may stand ", where}));
    if (at[1] == '/') reader_.fail(at, joined({"an end tag must not stand ", where}));
    const char* end = reader_.name(at + 1, "\"<\"");
    reader_.fail(at, joined({"<", between(at + 1, end), "> must not stand ", where}));
}

/// The root and, by turns, everything in it.
const char* Parser::element(const char* at, Item& parent) {
    open_ = &parent;
    at = startTag(at);
    while (open_ != &parent) {
        // What stands between tags is mostly the white space of an indentation.
        at = skipSpace(at);
        at = *at == '<' ? markup(at) : text(at);
    }
    return at;
}

/// Character data, up to the next `<`.
const char* Parser::text(const char* at) {
    open_->hasText = 1;
    for (;;) {
        at = skipText(at, reader_.end());
        if (*at == '<') return at;
        if (*at == '&') {
            at = reader_.reference(at);
        } else if (*at == ']') {
            if (at[1] == ']' && at[2] == '>') reader_.fail(at, "\"]]>\" must not stand in text");
            ++at;
        } else if (reader_.isEnd(at)) {
            reader_.fail(at, joined({"the document ends inside <", open_->name(), ">, opened at ",
                                     position(reader_.begin(), open_->text)}));
        } else {
            at = reader_.character(at);
        }
    }
}

const char* Parser::markup(const char* at) {
    if (at[1] == '/') return endTag(at);
    if (at[1] == '?') return reader_.instruction(at);
    if (at[1] != '!') return startTag(at);
    if (reader_.startsWith(at, "<!--")) return reader_.comment(at);
    if (!reader_.startsWith(at, "<![CDATA[")) failMarkup(at, "inside an element");
    open_->hasText = 1;
    return reader_.cdata(at);
}

const char* Parser::startTag(const char* at) {
    Item* item = pool_.make(at);
    const char* nameEnd = quickNameEnd(at + 1);
    if (nameEnd == at + 1) reader_.name(nameEnd, "\"<\"");
    const char* end = *nameEnd == '>' ? nameEnd : attributes(nameEnd);
    open_->append(item);
    if (*end == '/') {
        item->size = static_cast<std::uint32_t>(end + 2 - at);
        return end + 2;
    }
    item->size = static_cast<std::uint32_t>(nameEnd - at - 1);
    open_ = item;
    return end + 1;
}

/// Up to the `>` or `/>` that ends the start tag.
const char* Parser::attributes(const char* at) {
    attributeNames_.clear();
    for (;;) {
        const char* start = at;
        at = skipSpace(at);
        if (*at == '>' || (*at == '/' && at[1] == '>')) return at;

        const char* end = quickNameEnd(at);
        const std::string_view name = between(at, end);
        if (name.empty()) {
            if (reader_.isEnd(at)) reader_.fail(at, "the document ends inside a start tag");
            reader_.fail(at, "an attribute, \">\" or \"/>\" must stand here");
        }
        if (at == start)
            reader_.fail(at, joined({"white space must stand before the attribute \"", name, "\""}));
        if (!attributeNames_.add(name))
            reader_.fail(at, joined({"the attribute \"", name, "\" appears twice"}));
        at = attributeValue(end, name);
    }
}

/// From behind the name to behind the closing quote.
const char* Parser::attributeValue(const char* at, std::string_view name) {
    at = skipSpace(at);
    if (*at != '=') reader_.fail(at, joined({"\"=\" must follow the attribute \"", name, "\""}));
    at = skipSpace(at + 1);
    const char quote = *at;
    if (quote != '"' && quote != '\'')
        reader_.fail(at, joined({"the value of the attribute \"", name, "\" must stand in quotes"}));
    const char* start = at++;
    for (;;) {
        at = skipValue(at, reader_.end());
        if (*at == quote) return at + 1;
        if (*at == '&') {
            at = reader_.reference(at);
        } else if (*at == '<') {
            reader_.fail(at, joined({"\"<\" must not stand in the value of the attribute \"", name, "\""}));
        } else if (reader_.isEnd(at)) {
            reader_.fail(start, joined({"the value of the attribute \"", name, "\" has no closing quote"}));
        } else {
            at = reader_.character(at);
        }
    }
}

const char* Parser::endTag(const char* at) {
    const std::string_view name(open_->text + 1, open_->size);
    if (!reader_.startsWith(at + 2, name)) failEndTag(at);
    const char* end = skipSpace(at + 2 + name.size());
    if (*end != '>') failEndTag(at);
    open_->size = static_cast<std::uint32_t>(end + 1 - open_->text);
    open_ = open_->parent;
    return end + 1;
}

void Parser::failEndTag(const char* at) {
    const char* end = reader_.name(at + 2, "\"</\"");
    const std::string_view name = between(at + 2, end);
    if (name != open_->name()) reader_.fail(at, joined({"</", name, "> closes <", open_->name(), ">"}));
    reader_.fail(skipSpace(end), joined({"\">\" must end the end tag </", name}));
}

}  // namespace

void parseDocument(std::string_view text, const char* body, ItemPool& pool, Item& top) {
    Parser(text, pool).document(body, top);
}

void parseFragment(std::string_view text, ItemPool& pool, Item& parent) {
    Parser(text, pool).fragment(parent);
}

}  // namespace xml
