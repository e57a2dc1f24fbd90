#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/document.h"

namespace xml {

/// A text as the stretches it is made of; stretches that lie side by side in memory are one.
class Stretches {
  public:
    void add(std::string_view text);
    const std::vector<std::string_view>& all() const { return stretches_; }
    std::size_t size() const { return size_; }

  private:
    std::vector<std::string_view> stretches_;
    std::size_t size_ = 0;
};

/// Collects the document's text, as UTF-8: what no edit touched as it was read, in as few stretches as can
/// be. Valid until the next edit.
Stretches collect(Document& document);

/// The document in its own encoding.
std::string encoded(const Stretches& stretches, Encoding encoding);

/// The tags of an element; none at the end when the start tag closes it, and none for a document's top.
void addStart(Stretches& stretches, const Item& item);
void addEndTag(Stretches& stretches, const Item& item);

}  // namespace xml
