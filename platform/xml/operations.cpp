// Reading and changing texts, attributes and elements.

#include "platform/xml/operations.h"

#include <string>

#include "platform/base/failure.h"
#include "platform/xml/characters.h"
#include "platform/xml/editing.h"
#include "platform/xml/joined.h"
#include "platform/xml/values.h"

namespace {

using namespace xml;

/// Copies `text`, zero-terminated, when it fits; leaves `buffer` alone and answers false when not.
bool fill(char* buffer, std::size_t capacity, std::string_view text) {
    if (text.size() >= capacity) return false;
    buffer[text.copy(buffer, text.size())] = '\0';
    return true;
}

/// What did not fit is `what` of `item`, which has `size` bytes; the terminator is not counted.
zStatus refuseSize(std::string_view what, const Item& item, std::size_t size, std::size_t capacity) {
    return failure::record(zStatus_DoesNotFit,
                           joined({what, " of <", item.name(), "> needs ", std::to_string(size), " bytes, ",
                                   std::to_string(capacity - 1), " are allowed"}));
}

zStatus refuseBuffer() {
    return failure::record(zStatus_BadArgument, "the buffer has no room for a text");
}

/// Runs an edit of a living item.
template <typename Change>
zStatus change(zHandle document, Item* item, Change edit) {
    if (documentOf(document) == nullptr) return refuseDocument();
    if (item == nullptr) return refuseItem();
    return failure::guarded([&] { return edit(*documentOf(document), *item); });
}

}  // namespace

std::string xml::itemText(const Item& item) {
    TextReader reader;
    const auto read = [&](std::string_view content) { reader.read(content); };
    for (const Item* child = item.firstChild; child != nullptr; child = child->next) {
        eachOfLead(*child, read);
        reader.passElement();
    }
    eachOfTail(item, read);
    return isBlank(reader.text()) ? std::string() : reader.text();
}

zStatus zXml_ItemText(zHandle document, zXmlItem item, char* buffer, std::size_t capacity) {
    if (buffer == nullptr || capacity == 0) return refuseBuffer();
    buffer[0] = '\0';
    const Item* source = livingItem(document, item);
    if (source == nullptr) return refuseItem();
    return failure::guarded([&] {
        const std::string text = itemText(*source);
        if (fill(buffer, capacity, text)) return zStatus_Success;
        return refuseSize("the text", *source, text.size(), capacity);
    });
}

zStatus zXml_ChildText(zHandle document, zXmlItem parent, const char* name, char* buffer,
                       std::size_t capacity) {
    if (buffer == nullptr || capacity == 0) return refuseBuffer();
    buffer[0] = '\0';
    zXmlItem child = nullptr;
    const zStatus status = zXml_FindChild(document, parent, name, &child);
    return status == zStatus_Success ? zXml_ItemText(document, child, buffer, capacity) : status;
}

zStatus zXml_AttrText(zHandle document, zXmlItem item, const char* name, char* buffer, std::size_t capacity) {
    if (buffer == nullptr || capacity == 0) return refuseBuffer();
    if (name == nullptr) return refuseNull("the name");
    const Item* source = livingItem(document, item);
    if (source == nullptr) return refuseItem();
    return failure::guarded([&] {
        Attribute attribute;
        if (!findAttribute(startTag(*source), name, attribute)) {
            return failure::record(zStatus_NotFound,
                                   joined({"<", source->name(), "> has no attribute \"", name, "\""}));
        }
        const std::string value = readValue(attribute.value);
        if (fill(buffer, capacity, value)) return zStatus_Success;
        return refuseSize(joined({"the attribute \"", name, "\""}), *source, value.size(), capacity);
    });
}

zStatus zXml_AddItem(zHandle document, zXmlItem parent, const char* name, zXmlItem* item) {
    if (item != nullptr) *item = nullptr;
    if (name == nullptr) return refuseNull("the name");
    return change(document, livingParent(document, parent), [&](Document& target, Item& place) {
        Item* added = nullptr;
        const zStatus status = addItem(target, place, name, &added);
        if (item != nullptr) *item = added;
        return status;
    });
}

zStatus zXml_SetItemText(zHandle document, zXmlItem item, const char* text) {
    if (text == nullptr) return refuseNull("the text");
    return change(document, livingItem(document, item),
                  [&](Document& target, Item& changed) { return setItemText(target, changed, text); });
}

zStatus zXml_SetAttrText(zHandle document, zXmlItem item, const char* name, const char* text) {
    if (name == nullptr) return refuseNull("the name");
    if (text == nullptr) return refuseNull("the text");
    return change(document, livingItem(document, item),
                  [&](Document& target, Item& changed) { return setAttribute(target, changed, name, text); });
}

zStatus zXml_CopyItem(zHandle document, zXmlItem parent, zXmlItem before, zHandle sourceDocument,
                      zXmlItem sourceItem, zXmlItem* copy) {
    if (copy != nullptr) *copy = nullptr;
    const Item* source = livingItem(sourceDocument, sourceItem);
    if (source == nullptr) return documentOf(sourceDocument) == nullptr ? refuseDocument() : refuseItem();
    return change(document, livingParent(document, parent), [&](Document& target, Item& place) {
        if (before != nullptr && (!target.holds(before) || before->parent != &place)) return refuseItem();
        Item* copied = nullptr;
        const zStatus status = copyItem(target, place, before, *source, &copied);
        if (copy != nullptr) *copy = copied;
        return status;
    });
}

zStatus zXml_DeleteItem(zHandle document, zXmlItem item) {
    return change(document, livingItem(document, item),
                  [](Document& target, Item& deleted) { return deleteItem(target, deleted); });
}
