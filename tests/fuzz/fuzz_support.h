#pragma once

#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/xml.h"
#include "tests/fuzz/require.h"

/// What the fuzz targets of the tool share.
namespace fuzz {

/// Takes what goes to std::cout and std::cerr as long as it lives.
class Streams {
  public:
    Streams() : out_(std::cout.rdbuf(output.rdbuf())), err_(std::cerr.rdbuf(errors.rdbuf())) {}
    ~Streams() {
        std::cout.rdbuf(out_);
        std::cerr.rdbuf(err_);
    }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    std::ostringstream output;
    std::ostringstream errors;

  private:
    std::streambuf* out_;
    std::streambuf* err_;
};

/// The sections of an input, which a line of four equals signs separates; `count` of them, empty where the
/// input has fewer.
inline std::vector<std::string> sections(std::string_view input, std::size_t count) {
    constexpr std::string_view mark = "\n====\n";
    std::vector<std::string> parts;
    while (parts.size() + 1 < count) {
        const std::size_t end = input.find(mark);
        if (end == std::string_view::npos) break;
        parts.emplace_back(input.substr(0, end));
        input.remove_prefix(end + mark.size());
    }
    parts.emplace_back(input);
    parts.resize(count);
    return parts;
}

// ---- Plain reads of documents, as long as the text may be -----------------------------------------------

using MaybeText = std::optional<std::string>;

/// The text, when `read` (into a buffer of that capacity) succeeds.
template <typename Read>
MaybeText readText(std::size_t capacity, Read read) {
    std::string buffer(capacity, '\0');
    if (read(buffer.data(), capacity) != zStatus_Success) return std::nullopt;
    buffer.resize(buffer.find('\0'));
    return buffer;
}

inline MaybeText itemText(zHandle document, zXmlItem item, std::size_t capacity) {
    return readText(capacity, [&](char* buffer, std::size_t size) {
        return zXml_ItemText(document, item, buffer, size);
    });
}
inline MaybeText attribute(zHandle document, zXmlItem item, const char* name, std::size_t capacity) {
    return readText(capacity, [&](char* buffer, std::size_t size) {
        return zXml_AttrText(document, item, name, buffer, size);
    });
}

inline std::vector<zXmlItem> children(zHandle document, zXmlItem item) {
    std::vector<zXmlItem> items;
    for (zXmlItem child = zXml_FirstChild(document, item); child != nullptr;
         child = zXml_NextSibling(document, child)) {
        items.push_back(child);
    }
    return items;
}

/// The first child named `name`, null when there is none.
inline zXmlItem childNamed(zHandle document, zXmlItem item, std::string_view name) {
    for (zXmlItem child : children(document, item)) {
        if (zXml_ItemName(document, child) == name) return child;
    }
    return nullptr;
}

}  // namespace fuzz
