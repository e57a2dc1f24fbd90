#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/base/failure.h"
#include "platform/xml/xml.h"
#include "tests/testing/xml_tree.h"

namespace testing {

/// `part`, `count` times.
inline std::string repeated(std::string_view part, std::size_t count) {
    std::string text;
    text.reserve(part.size() * count);
    for (std::size_t i = 0; i < count; ++i) text += part;
    return text;
}

/// The document that `bytes` are; fails the test when they are none.
inline Ta::Object<zHandle> parsed(std::string_view bytes) {
    Ta::Object<zHandle> document;
    const zStatus status = zXml_LoadBytes(document.out(), bytes.data(), bytes.size(), nullptr);
    EXPECT_EQ(status, zStatus_Success) << bytes.substr(0, 200) << '\n' << failure::detailOf(status);
    return document;
}

/// Why `bytes` are malformed: "line:column: sentence". "accepted" when they are not, "unsupported: ..." when
/// that is the reason.
inline std::string faultOf(std::string_view bytes) {
    Ta::Object<zHandle> document;
    const zStatus status = zXml_LoadBytes(document.out(), bytes.data(), bytes.size(), nullptr);
    EXPECT_EQ(document.get() == nullptr, status != zStatus_Success);
    if (status == zStatus_Success) return "accepted";
    const std::string detail(failure::detailOf(status));
    return status == zStatus_Malformed     ? detail
           : status == zStatus_Unsupported ? "unsupported: " + detail
                                           : "status " + std::to_string(status);
}

/// The item along `path`, from above the root; fails the test when there is none.
inline zXmlItem itemAt(const Ta::Object<zHandle>& document, const char* path) {
    zXmlItem item = nullptr;
    EXPECT_EQ(zXml_FindChild(document.get(), nullptr, path, &item), zStatus_Success) << path;
    return item;
}

/// The text of `item`, which fails the test when it cannot be read.
inline std::string textOf(const Ta::Object<zHandle>& document, zXmlItem item) {
    std::string buffer(1000, '?');
    EXPECT_EQ(zXml_ItemText(document.get(), item, buffer.data(), buffer.size()), zStatus_Success);
    return buffer.c_str();
}

/// The value of an attribute, which fails the test when it cannot be read.
inline std::string valueOf(const Ta::Object<zHandle>& document, zXmlItem item, const char* name) {
    std::string buffer(1000, '?');
    EXPECT_EQ(zXml_AttrText(document.get(), item, name, buffer.data(), buffer.size()), zStatus_Success);
    return buffer.c_str();
}

/// A new last child; fails the test when it cannot be added.
inline zXmlItem added(const Ta::Object<zHandle>& document, zXmlItem parent, const char* name) {
    zXmlItem item = nullptr;
    EXPECT_EQ(zXml_AddItem(document.get(), parent, name, &item), zStatus_Success);
    return item;
}

/// What `document` is saved as.
inline std::string saved(const Ta::Object<zHandle>& document) {
    return writtenBytes(document.get());
}

}  // namespace testing
