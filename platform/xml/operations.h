#pragma once

#include <string>

#include "platform/xml/document.h"
#include "platform/xml/xml.h"

/// What the flat operations have in common: handles in, statuses out.
namespace xml {

/// The document behind `handle`; null for null and for other objects.
inline Document* documentOf(zHandle handle) {
    return zObject::as<Document>(handle);
}

/// The element `item` of the document behind `handle`; null unless it is a living one of that document.
inline Item* livingItem(zHandle handle, Item* item) {
    Document* document = documentOf(handle);
    return document != nullptr && item != nullptr && document->holds(item) ? item : nullptr;
}

/// As livingItem, the document's top for a null `item`.
inline Item* livingParent(zHandle handle, Item* item) {
    Document* document = documentOf(handle);
    if (document != nullptr && item == nullptr) return &document->top();
    return livingItem(handle, item);
}

/// Refuse what such a question answers with null.
zStatus refuseDocument();
zStatus refuseItem();
zStatus refuseNull(const char* what);

/// What zXml_ItemText reads.
std::string itemText(const Item& item);

/// The first child of `parent` along `path`, as zXml_FindChild has it; null when there is none.
Item* findChild(Item* parent, std::string_view path);

}  // namespace xml
