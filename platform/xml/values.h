#pragma once

#include <string>
#include <string_view>

#include "platform/xml/encoding.h"

namespace xml {

/// An attribute as it stands in a start tag.
struct Attribute {
    std::string_view space;  ///< The white space before it.
    std::string_view name;
    std::string_view value;  ///< Between its quotes, as written.
    const char* end() const { return value.data() + value.size() + 1; }
    char quote() const { return value.data()[-1]; }
};

/// Goes through the attributes of a start tag.
class AttributeScan {
  public:
    explicit AttributeScan(std::string_view tag);
    /// False behind the last one.
    bool next(Attribute& attribute);
    /// Behind the last attribute that was given, at first behind the element's name.
    const char* at() const { return at_; }

  private:
    const char* at_;
};

/// The attribute called `name` in the start tag `tag`; false when there is none.
bool findAttribute(std::string_view tag, std::string_view name, Attribute& attribute);

/// Collects what character data and CDATA sections say: references resolved, line ends made LF.
class TextReader {
  public:
    /// Reads a stretch of an element's content, markup included.
    void read(std::string_view content);
    /// An element stands here.
    void passElement() { endsInReturn_ = false; }
    const std::string& text() const { return text_; }

  private:
    void append(std::string_view run, bool hasReferences);

    std::string text_;
    bool endsInReturn_ = false;  ///< The last byte read was a CR: an LF right behind belongs to it.
};

/// What an attribute's value says: references resolved, white space made spaces.
std::string readValue(std::string_view value);

/// Why `text`, of any bytes, cannot be the text of an element or a value; empty when it can.
std::string refusal(const char* text);

/// Writes `text`, which has been found good, as character data whose line ends are `lineEnd`.
std::string writeText(std::string_view text, std::string_view lineEnd, Encoding encoding);
/// Writes `text`, which has been found good, as what stands between two `quote`s.
std::string writeValue(std::string_view text, char quote, Encoding encoding);
/// Appends `character` as "&#...;".
void appendReference(std::string& text, char32_t character);

}  // namespace xml
