#pragma once

#include "platform/xml/item.h"

namespace xml {

/// Build the items of `text`, UTF-8 with a zero byte behind it, in one pass. Nothing is copied: items point
/// into the text, which must outlive them. Elements are nested by links, not by calls. The first thing that
/// is not well-formed is thrown as a Fault.

/// Reads a document whose XML declaration ends at `body`, and puts its root under `top`.
void parseDocument(std::string_view text, const char* body, ItemPool& pool, Item& top);

/// Reads one element, which is the whole text, and puts it under `parent`.
void parseFragment(std::string_view text, ItemPool& pool, Item& parent);

}  // namespace xml
