#include "tests/testing/xml_fixture.h"

#include <gtest/gtest.h>

#include <regex>

#include "platform/base/allocator.h"
#include "platform/xml/xml.h"

namespace testing {

Ta::Object<void*> document(const std::string& text) {
    Ta::Object<void*> parsed;
    EXPECT_EQ(zXml_FromText(parsed.out(), text.c_str(), nullptr), zStatus_Success) << text;
    return parsed;
}

std::string documentText(zHandle document) {
    Ta::Buffer buffer;
    EXPECT_EQ(zXml_SaveBytes(document, buffer.data(), buffer.size(), nullptr), zStatus_Success);
    return {static_cast<const char*>(buffer.bytes()), buffer.byteCount()};
}

std::string compact(const std::string& xml) {
    static const std::regex declaration("<\\?xml[^>]*\\?>");
    static const std::regex whiteSpace("(^|>)\\s+(<|$)");
    static const std::regex spacedEnd("\\s+/>");
    static const std::regex emptyElement("<([A-Za-z_]([^<>]*[^<>/])?)></[^<>]+>");
    std::string text = std::regex_replace(xml, declaration, "");
    text = std::regex_replace(text, whiteSpace, "$1$2");
    text = std::regex_replace(text, spacedEnd, "/>");
    return std::regex_replace(text, emptyElement, "<$1/>");
}

std::string compact(zHandle document) {
    return compact(documentText(document));
}

}  // namespace testing
