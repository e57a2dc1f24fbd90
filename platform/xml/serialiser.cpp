#include "platform/xml/serialiser.h"

#include "platform/xml/characters.h"

namespace xml {
namespace {

bool hasContent(const Item& item) {
    return item.firstChild != nullptr || (ownsTail(item) && !item.edit->tail.empty());
}

void addLead(Stretches& stretches, const Item& item) {
    eachOfLead(item, [&](std::string_view text) { stretches.add(text); });
    if (item.edit != nullptr) stretches.add(item.edit->indent);
}

void addTail(Stretches& stretches, const Item& item) {
    eachOfTail(item, [&](std::string_view text) { stretches.add(text); });
    if (item.edit != nullptr) stretches.add(item.edit->closingIndent);
}

}  // namespace

void Stretches::add(std::string_view text) {
    if (text.empty()) return;
    size_ += text.size();
    if (!stretches_.empty()) {
        std::string_view& last = stretches_.back();
        if (last.data() + last.size() == text.data()) {
            last = {last.data(), last.size() + text.size()};
            return;
        }
    }
    stretches_.push_back(text);
}

void addStart(Stretches& stretches, const Item& item) {
    std::string_view tag = startTag(item);
    if (!tag.ends_with("/>") || !hasContent(item)) return stretches.add(tag);
    tag.remove_suffix(2);
    while (isSpace(tag.back())) tag.remove_suffix(1);
    stretches.add(tag);
    stretches.add(">");
}

void addEndTag(Stretches& stretches, const Item& item) {
    if (item.parent == nullptr) return;
    if (!startTag(item).ends_with("/>")) {
        stretches.add(item.bytes().substr(item.bytes().rfind('<')));
    } else if (hasContent(item)) {
        stretches.add("</");
        stretches.add(item.name());
        stretches.add(">");
    }
}

Stretches collect(Document& document) {
    Stretches stretches;
    stretches.add(document.mark());
    const Item* parent = &document.top();
    if (!parent->isDirty) {
        stretches.add(parent->bytes());
        return stretches;
    }
    const Item* item = parent->firstChild;
    for (;;) {
        if (item == nullptr) {
            addTail(stretches, *parent);
            addEndTag(stretches, *parent);
            if (parent->parent == nullptr) return stretches;
            item = parent->next;
            parent = parent->parent;
            continue;
        }
        addLead(stretches, *item);
        if (item->isDirty) {
            addStart(stretches, *item);
            parent = item;
            item = item->firstChild;
        } else {
            stretches.add(item->bytes());
            item = item->next;
        }
    }
}

std::string encoded(const Stretches& stretches, Encoding encoding) {
    std::string bytes;
    for (std::string_view text : stretches.all()) encodeText(bytes, text, encoding);
    return bytes;
}

}  // namespace xml
