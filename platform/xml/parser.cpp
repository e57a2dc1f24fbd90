#include "platform/xml/parser.h"

#include "platform/xml/prolog.h"
#include "platform/xml/scan.h"

namespace xml {
namespace {

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

/// nameEnd for names that are mostly ASCII.
const char* quickNameEnd(const char* at) {
    if (!isClass(*at, nameStart)) return nameEnd(at);
    const char* end = at + 1;
    while (isClass(*end, nameCharacter)) ++end;
    return isAscii(*end) ? end : nameEnd(at);
}

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace

void Parser::document(const char* body, Item* top) {
    at_ = body;
    open_ = outer_ = top;
    prolog();
    element();
    epilog();
}

void Parser::fragment(Item* parent) {
    open_ = outer_ = parent;
    element();
}

/// White space, a comment or an instruction outside the root; false when something else stands there.
bool Parser::miscellaneous() {
    at_ = skipSpace(at_);
    if (*at_ != '<') return false;
    if (at_[1] == '?') {
        at_ = reader_.instruction(at_);
    } else if (reader_.startsWith(at_, "<!--")) {
        at_ = reader_.comment(at_);
    } else {
        return false;
    }
    return true;
}

void Parser::prolog() {
    while (miscellaneous()) {
    }
    if (reader_.startsWith(at_, "<!DOCTYPE")) {
        at_ = readDocumentType(reader_, at_);
        while (miscellaneous()) {
        }
    }
    if (reader_.isEnd(at_)) reader_.fail(at_, "the document has no root element");
    if (*at_ == '<' && at_[1] != '!' && at_[1] != '/') return;
    failMarkup("before the root element");
}

void Parser::epilog() {
    while (miscellaneous()) {
    }
    if (!reader_.isEnd(at_)) failMarkup("behind the root element");
}

void Parser::failMarkup(std::string_view where) {
    const std::string place(where);
    if (*at_ != '<') reader_.fail(at_, "text must not stand " + place);
    if (reader_.startsWith(at_, "<!DOCTYPE"))
        reader_.fail(at_, "a document type must stand before the root element, once");
    if (reader_.startsWith(at_, "<![CDATA[")) reader_.fail(at_, "a CDATA section must not stand " + place);
    if (at_[1] == '!') reader_.fail(at_, "\"<!\" begins nothing that may stand " + place);
    if (at_[1] == '/') reader_.fail(at_, "an end tag must not stand " + place);
    const char* end = reader_.name(at_ + 1, "\"<\"");
    reader_.fail(at_, "<" + std::string(between(at_ + 1, end)) + "> must not stand " + place);
}

void Parser::element() {
    startTag();
    content();
}

/// Reads until the outermost element is closed.
void Parser::content() {
    while (open_ != outer_) {
        at_ = skipText(at_, reader_.end());
        switch (*at_) {
            case '<':
                markup();
                break;
            case '&':
                at_ = reader_.reference(at_);
                break;
            case ']':
                if (at_[1] == ']' && at_[2] == '>') reader_.fail(at_, "\"]]>\" must not stand in text");
                ++at_;
                break;
            default:
                if (reader_.isEnd(at_)) failOpen();
                at_ = reader_.character(at_);
        }
    }
}

void Parser::failOpen() {
    reader_.fail(at_, "the document ends inside <" + std::string(open_->name()) + ">, opened at " +
                          position(reader_.begin(), open_->text));
}

void Parser::markup() {
    if (at_[1] == '/') return endTag();
    if (at_[1] == '?') {
        at_ = reader_.instruction(at_);
    } else if (at_[1] != '!') {
        startTag();
    } else if (reader_.startsWith(at_, "<!--")) {
        at_ = reader_.comment(at_);
    } else if (reader_.startsWith(at_, "<![CDATA[")) {
        at_ = reader_.cdata(at_);
    } else {
        failMarkup("inside an element");
    }
}

void Parser::startTag() {
    const char* tag = at_;
    at_ = quickNameEnd(at_ + 1);
    if (at_ == tag + 1) reader_.name(at_, "\"<\"");
    Item* item = pool_.make(tag);
    if (*at_ != '>') attributes();
    open_->append(item);
    if (*at_ == '/') {
        at_ += 2;
        item->size = static_cast<std::uint32_t>(at_ - tag);
    } else {
        ++at_;
        open_ = item;
    }
}

/// Reads up to the `>` or `/>` that ends the start tag.
void Parser::attributes() {
    attributeNames_.clear();
    for (;;) {
        const char* start = at_;
        at_ = skipSpace(at_);
        if (*at_ == '>' || (*at_ == '/' && at_[1] == '>')) return;

        const char* end = quickNameEnd(at_);
        const std::string_view name = between(at_, end);
        if (name.empty()) {
            if (reader_.isEnd(at_)) reader_.fail(at_, "the document ends inside a start tag");
            reader_.fail(at_, "an attribute, \">\" or \"/>\" must stand here");
        }
        if (at_ == start) reader_.fail(at_, "white space must stand before the attribute " + quoted(name));
        if (!attributeNames_.add(name)) reader_.fail(at_, "the attribute " + quoted(name) + " appears twice");
        at_ = end;
        attributeValue(name);
    }
}

void Parser::attributeValue(std::string_view name) {
    at_ = skipSpace(at_);
    if (*at_ != '=') reader_.fail(at_, "\"=\" must follow the attribute " + quoted(name));
    at_ = skipSpace(at_ + 1);
    const char quote = *at_;
    if (quote != '"' && quote != '\'')
        reader_.fail(at_, "the value of the attribute " + quoted(name) + " must stand in quotes");
    const char* start = at_++;
    for (;;) {
        at_ = skipValue(at_, reader_.end());
        if (*at_ == quote) break;
        if (*at_ == '&') {
            at_ = reader_.reference(at_);
        } else if (*at_ == '<') {
            reader_.fail(at_, "\"<\" must not stand in the value of the attribute " + quoted(name));
        } else if (reader_.isEnd(at_)) {
            reader_.fail(start, "the value of the attribute " + quoted(name) + " has no closing quote");
        } else {
            at_ = reader_.character(at_);
        }
    }
    ++at_;
}

void Parser::endTag() {
    const char* opened = open_->text + 1;
    const char* closing = at_ + 2;
    while (*closing == *opened && *closing != '>' && !isSpace(*closing)) ++closing, ++opened;
    const char* end = skipSpace(closing);
    const bool isSame = *end == '>' && (*opened == '>' || isSpace(*opened));
    if (!isSame) {
        const char* nameBehind = reader_.name(at_ + 2, "\"</\"");
        const std::string name(at_ + 2, nameBehind);
        if (name != open_->name())
            reader_.fail(at_, "</" + name + "> closes <" + std::string(open_->name()) + ">");
        reader_.fail(skipSpace(nameBehind), "\">\" must end the end tag </" + name);
    }
    at_ = end + 1;
    open_->size = static_cast<std::uint32_t>(at_ - open_->text);
    open_ = open_->parent;
}

}  // namespace xml
