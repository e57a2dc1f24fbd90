#pragma once

#include "platform/xml/item.h"
#include "platform/xml/name_set.h"
#include "platform/xml/reader.h"

namespace xml {

/// Builds the items of a text in one pass. Nothing is copied: items point into the text, which must outlive
/// them. Elements are nested by links, not by calls. Throws Fault at the first thing that is not well-formed.
class Parser {
  public:
    /// For UTF-8 text with a zero byte behind it.
    Parser(std::string_view text, ItemPool& pool) : reader_(text), at_(text.data()), pool_(pool) {}

    /// Reads a document from `body` on, behind the XML declaration, and puts its root under `top`.
    void document(const char* body, Item* top);
    /// Reads one element, which is the whole text, and puts it under `parent`.
    void fragment(Item* parent);

  private:
    void prolog();
    void epilog();
    bool miscellaneous();
    void element();
    void content();
    void markup();
    void startTag();
    void attributes();
    void attributeValue(std::string_view name);
    void endTag();
    [[noreturn]] void failMarkup(std::string_view where);
    [[noreturn]] void failOpen();

    Reader reader_;
    const char* at_;
    ItemPool& pool_;
    Item* open_ = nullptr;   ///< The element whose content is being read.
    Item* outer_ = nullptr;  ///< What the outermost element goes under.
    NameSet attributeNames_;
};

}  // namespace xml
