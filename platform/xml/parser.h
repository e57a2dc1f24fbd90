#pragma once

#include "platform/xml/item.h"
#include "platform/xml/name_set.h"
#include "platform/xml/reader.h"

namespace xml {

/// Builds the items of a text in one pass. Nothing is copied: items point into the text, which must outlive
/// them. Elements are nested by links, not by calls. Throws Fault at the first thing that is not well-formed.
///
/// As in Reader, functions take the place where their part begins and answer where it ends.
class Parser {
  public:
    /// For UTF-8 text with a zero byte behind it.
    Parser(std::string_view text, ItemPool& pool) : reader_(text), pool_(pool) {}

    /// Reads a document from `body` on, behind the XML declaration, and puts its root under `top`.
    void document(const char* body, Item* top);
    /// Reads one element, which is the whole text, and puts it under `parent`.
    void fragment(Item* parent);

  private:
    const char* prolog(const char* at);
    const char* miscellaneous(const char* at);
    const char* element(const char* at, Item* parent);
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
    Item* open_ = nullptr;  ///< The element whose content is being read.
    NameSet attributeNames_;
};

}  // namespace xml
