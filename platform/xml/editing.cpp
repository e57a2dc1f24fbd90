#include "platform/xml/editing.h"

#include <string>
#include <utility>
#include <vector>

#include "platform/base/failure.h"
#include "platform/xml/characters.h"
#include "platform/xml/joined.h"
#include "platform/xml/layout.h"
#include "platform/xml/parser.h"
#include "platform/xml/values.h"

namespace xml {
namespace {

zStatus checkName(const Document& document, const char* name) {
    if (!isName(name)) return failure::record(zStatus_BadArgument, joined({"\"", name, "\" is no XML name"}));
    if (canEncode(document.encoding(), std::string_view(name))) return zStatus_Success;
    return failure::record(zStatus_BadArgument, joined({"the name \"", name, "\" cannot be written in ",
                                                        encodingName(document.encoding())}));
}

zStatus checkText(const char* text) {
    const std::string reason = refusal(text);
    return reason.empty() ? zStatus_Success : failure::record(zStatus_BadArgument, reason);
}

/// Keeps two gaps that meet from spelling "]]>", which text must not hold: the last bracket of the first
/// becomes a reference.
void keepApart(Document& document, Gap& first, const Gap& second) {
    if (first.empty() || second.empty() || !first.last->text.ends_with(']')) return;
    const std::string_view behind = second.first->text;
    if (!behind.starts_with('>') && !behind.starts_with(']')) return;
    Piece* bracket = document.piece("&#93;");
    first.trimBack(1);
    first.push(bracket);
}

void bury(Item& item) {
    for (Item* at = &item;;) {
        at->isDead = 1;
        if (at->firstChild != nullptr) {
            at = at->firstChild;
            continue;
        }
        while (at != &item && at->next == nullptr) at = at->parent;
        if (at == &item) return;
        at = at->next;
    }
}

/// Rebuilds gaps of an element whose text is replaced.
class TextReplacer {
  public:
    TextReplacer(Document& document, const char* text) : document_(document), keepsBlanks_(isBlank(text)) {
        const std::string written = writeText(text, document.lineEnd(), document.encoding());
        if (!written.empty()) new_ = document.piece(document.keep(written));
    }
    /// Without text that says something; the new text stands where the first of it stood.
    Gap replaced(const Gap& gap) {
        Gap result;
        for (const Piece* piece = gap.first; piece != nullptr; piece = piece->next) {
            for (std::string_view rest = piece->text; !rest.empty();) {
                const Token token = nextToken(rest);
                const bool isKept = token.kind == TokenKind::markup || (keepsBlanks_ && isBlank(token.text));
                if (isKept) {
                    result.push(document_.piece(token.text));
                } else if (token.kind == TokenKind::cdata || !isBlank(token.text)) {
                    place(result);
                }
            }
        }
        return result;
    }
    void place(Gap& gap) {
        if (new_ != nullptr) gap.push(std::exchange(new_, nullptr));
    }
    bool keepsBlanks() const { return keepsBlanks_; }

  private:
    Document& document_;
    bool keepsBlanks_;
    Piece* new_ = nullptr;
};

/// `tag` with the attribute `name` set to `text`.
std::string withAttribute(std::string_view tag, std::string_view name, std::string_view text,
                          Encoding encoding) {
    Attribute attribute;
    AttributeScan scan(tag);
    std::string_view space = " ";
    while (scan.next(attribute)) {
        if (attribute.name == name) {
            const auto before = static_cast<std::size_t>(attribute.value.data() - tag.data());
            return joined({tag.substr(0, before), writeValue(text, attribute.quote(), encoding),
                           tag.substr(before + attribute.value.size())});
        }
        // Attributes one below the other: the new one joins them.
        const bool breaksLine = attribute.space.find_first_of("\r\n") != std::string_view::npos;
        space = breaksLine ? attribute.space : std::string_view(" ");
    }
    const auto before = static_cast<std::size_t>(scan.at() - tag.data());
    return joined({tag.substr(0, before), space, name, "=\"", writeValue(text, '"', encoding), "\"",
                   tag.substr(before)});
}

void replaceTag(Document& document, Item& item, std::string_view tag) {
    Edit& edit = document.edit(item);
    if (tag.size() > edit.tagCapacity) {
        // Room to grow, so that setting one attribute again and again does not fill the arena.
        const std::size_t capacity = tag.size() + tag.size() / 2;
        edit.tag = document.keep(tag, capacity);
        edit.tagCapacity = capacity;
    } else {
        auto* place = const_cast<char*>(edit.tag.data());
        place[tag.copy(place, tag.size())] = '\0';
        edit.tag = {place, tag.size()};
    }
}

}  // namespace

zStatus checkParent(Document& document, const Item& parent) {
    if (&parent != &document.top() || document.root() == nullptr) return zStatus_Success;
    return failure::record(zStatus_BadArgument, "the document has a root already");
}

Item* insertElement(Document& document, Item& parent, Item* before, std::string_view text) {
    Item holder{};
    parseFragment(document.keep(text), document.items(), holder);
    Item& item = *holder.firstChild;
    Edit& edit = document.edit(item);
    Edit& parentEdit = document.edit(parent);
    const Place place = makePlace(document, parent, before);

    edit.isAdded = edit.ownsLead = true;
    edit.lead = place.lead;
    edit.indent = place.indent;
    if (!place.closingIndent.empty()) parentEdit.closingIndent = place.closingIndent;
    if (before == nullptr) {
        parent.append(&item);
    } else {
        parent.insert(&item, before);
        parentEdit.cursor = nullptr;
    }
    Document::touch(parent);
    return &item;
}

zStatus addItem(Document& document, Item& parent, const char* name, Item** added) {
    if (const zStatus status = checkName(document, name); status != zStatus_Success) return status;
    if (const zStatus status = checkParent(document, parent); status != zStatus_Success) return status;
    *added = insertElement(document, parent, nullptr, joined({"<", name, "/>"}));
    return zStatus_Success;
}

zStatus setItemText(Document& document, Item& item, const char* text) {
    if (const zStatus status = checkText(text); status != zStatus_Success) return status;
    TextReplacer replacer(document, text);
    std::vector<Gap> gaps;
    for (Item* child = item.firstChild; child != nullptr; child = child->next)
        gaps.push_back(replacer.replaced(document.lead(*child)));
    gaps.push_back(replacer.replaced(document.tail(item)));
    // An element without text of its own gets it in front.
    Gap front;
    replacer.place(front);
    front.join(gaps.front());
    gaps.front() = front;

    // From here on nothing fails.
    const Gap* gap = gaps.data();
    for (Item* child = item.firstChild; child != nullptr; child = child->next) {
        child->edit->lead = *gap++;
        if (!replacer.keepsBlanks()) child->edit->indent = {};
    }
    item.edit->tail = *gap;
    if (!replacer.keepsBlanks()) item.edit->closingIndent = {};
    item.hasText = !replacer.keepsBlanks();
    Document::touch(item);
    return zStatus_Success;
}

zStatus setAttribute(Document& document, Item& item, const char* name, const char* text) {
    if (const zStatus status = checkName(document, name); status != zStatus_Success) return status;
    if (const zStatus status = checkText(text); status != zStatus_Success) return status;
    replaceTag(document, item, withAttribute(startTag(item), name, text, document.encoding()));
    Document::touch(item);
    return zStatus_Success;
}

zStatus deleteItem(Document& document, Item& item) {
    Item& parent = *item.parent;
    Edit& parentEdit = document.edit(parent);
    Gap& lead = document.lead(item);
    Gap& behind = item.next != nullptr ? document.lead(*item.next) : document.tail(parent);
    const bool isRoot = &parent == &document.top();
    if (!item.edit->isAdded) {
        const std::string_view next =
            item.next != nullptr ? item.next->edit->indent : parentEdit.closingIndent;
        cutLines({lead, behind, next, isRoot, isRoot});
    }
    keepApart(document, lead, behind);
    lead.join(behind);
    behind = std::exchange(lead, Gap());

    bury(item);
    parent.remove(&item);
    // A walk by index that deletes as it goes stays where it is.
    parentEdit.cursor = parentEdit.cursor == &item ? item.next : nullptr;
    if (parent.firstChild == nullptr) parentEdit.closingIndent = {};
    Document::touch(parent);
    return zStatus_Success;
}

}  // namespace xml
