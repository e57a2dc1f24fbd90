#pragma once

#include "platform/xml/document.h"

/// The edits. Each takes living items of the document, answers a status with its detail recorded, and after a
/// failure has changed nothing that can be seen. Memory shortage throws std::bad_alloc.
namespace xml {

/// Adds `<name/>` under `parent`, which may be the document's top, as the last child; `*added` is the item.
zStatus addItem(Document& document, Item& parent, const char* name, Item** added);
zStatus setItemText(Document& document, Item& item, const char* text);
zStatus setAttribute(Document& document, Item& item, const char* name, const char* text);
zStatus deleteItem(Document& document, Item& item);

/// Puts the element `text`, well-formed UTF-8, under `parent`: before the child `before`, or last when null.
Item* insertElement(Document& document, Item& parent, Item* before, std::string_view text);
/// Refuses a second root.
zStatus checkParent(Document& document, const Item& parent);

/// Adds a copy of `source`, under `parent`, laid out as a new item there is.
zStatus copyItem(Document& document, Item& parent, Item* before, const Item& source, Item** copy);

}  // namespace xml
