#include <algorithm>
#include <string>
#include <vector>

#include "platform/base/failure.h"
#include "platform/xml/characters.h"
#include "platform/xml/editing.h"
#include "platform/xml/layout.h"
#include "platform/xml/serialiser.h"
#include "platform/xml/values.h"

namespace xml {
namespace {

/// Writes an element of one document so that it fits another: its line ends, its indentation, its encoding.
class Copier {
  public:
    Copier(Document& target, std::string_view spaces, std::string_view newSpaces)
        : lineEnd_(target.lineEnd()), encoding_(target.encoding()), spaces_(spaces), newSpaces_(newSpaces) {}

    void copy(const Item& source);
    const std::string& result() const { return result_; }
    /// False when something that no reference can stand for is beyond the target's encoding.
    bool fits() const { return fits_; }

  private:
    void enter(const Item& item);
    void leave(const Item& item);
    void addGap(std::string_view text);
    void addTag(const Stretches& tag);
    template <typename Replace>
    void add(std::string_view text, Replace replace);
    void addLineEnd(std::string_view& rest);

    std::string result_;
    bool fits_ = true;
    std::vector<bool> mixed_;  ///< Of each element that is open: white space in it is more than layout.
    bool movesLines_ = false;
    std::string lineEnd_;
    Encoding encoding_;
    std::string spaces_;  ///< What the lines of the source begin with, and are to begin with.
    std::string newSpaces_;
};

void Copier::copy(const Item& source) {
    enter(source);
    const Item* parent = &source;
    const Item* item = source.firstChild;
    for (;;) {
        if (item != nullptr) {
            eachOfLead(*item, [&](std::string_view text) { addGap(text); });
            if (item->edit != nullptr) addGap(item->edit->indent);
            enter(*item);
            parent = item;
            item = item->firstChild;
        } else {
            leave(*parent);
            if (parent == &source) return;
            item = parent->next;
            parent = parent->parent;
        }
    }
}

void Copier::enter(const Item& item) {
    Stretches tag;
    addStart(tag, item);
    addTag(tag);
    mixed_.push_back(isMixed(item));
}

void Copier::leave(const Item& item) {
    eachOfTail(item, [&](std::string_view text) { addGap(text); });
    if (item.edit != nullptr) addGap(item.edit->closingIndent);
    Stretches tag;
    addEndTag(tag, item);
    addTag(tag);
    mixed_.pop_back();
}

/// Appends `text` with the target's line ends; `replace` is called for what its encoding cannot hold.
template <typename Replace>
void Copier::add(std::string_view text, Replace replace) {
    while (!text.empty()) {
        if (text.front() == '\r' || text.front() == '\n') {
            addLineEnd(text);
            continue;
        }
        char32_t character = 0;
        const unsigned length = decode(text.data(), character);
        if (canEncode(encoding_, character)) {
            result_ += text.substr(0, length);
        } else {
            replace(character);
        }
        text.remove_prefix(length);
    }
}

void Copier::addLineEnd(std::string_view& rest) {
    rest.remove_prefix(rest.starts_with("\r\n") ? 2 : 1);
    result_ += lineEnd_;
    if (!movesLines_ || !rest.starts_with(spaces_)) return;
    rest.remove_prefix(spaces_.size());
    result_ += newSpaces_;
}

void Copier::addGap(std::string_view text) {
    while (!text.empty()) {
        const Token token = nextToken(text);
        movesLines_ = token.kind == TokenKind::text && !mixed_.back();
        add(token.text, [&](char32_t character) {
            fits_ = fits_ && token.kind != TokenKind::markup;
            if (token.kind == TokenKind::cdata) result_ += "]]>";
            appendReference(result_, character);
            if (token.kind == TokenKind::cdata) result_ += "<![CDATA[";
        });
    }
    movesLines_ = false;
}

void Copier::addTag(const Stretches& tag) {
    char quote = '\0';
    for (std::string_view text : tag.all()) {
        for (; !text.empty();) {
            const std::size_t size = std::min(text.find_first_of("\"'", 1), text.size());
            if (quote == '\0' && (text.front() == '"' || text.front() == '\'')) {
                quote = text.front();
            } else if (text.front() == quote) {
                quote = '\0';
            }
            add(text.substr(0, size), [&](char32_t character) {
                fits_ = fits_ && quote != '\0';
                appendReference(result_, character);
            });
            text.remove_prefix(size);
        }
    }
}

}  // namespace

zStatus copyItem(Document& document, Item& parent, Item* before, const Item& source, Item** copy) {
    if (const zStatus status = checkParent(document, parent); status != zStatus_Success) return status;
    const Line line = lineOf(source);
    const Line newLine = newChildLine(document, parent, before);
    const bool moves = line.isOwn && newLine.isOwn;
    Copier copier(document, moves ? line.spaces : "", moves ? newLine.spaces : "");
    copier.copy(source);
    if (!copier.fits()) {
        return failure::record(zStatus_BadArgument,
                               std::string("the copy holds a name or a comment that cannot be written in ") +
                                   encodingName(document.encoding()));
    }
    *copy = insertElement(document, parent, before, copier.result());
    return zStatus_Success;
}

}  // namespace xml
