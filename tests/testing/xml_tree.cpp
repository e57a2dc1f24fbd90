#include "tests/testing/xml_tree.h"

#include "platform/xml/operations.h"
#include "platform/xml/values.h"

namespace testing {
namespace {

std::string describe(const xml::Item& item) {
    std::string line(item.name());
    xml::Attribute attribute;
    xml::AttributeScan scan(xml::startTag(item));
    while (scan.next(attribute)) {
        line.append(" ")
            .append(attribute.name)
            .append("=[")
            .append(xml::readValue(attribute.value))
            .append("]");
    }
    if (const std::string text = xml::itemText(item); !text.empty())
        line.append(" \"").append(text).append("\"");
    return line;
}

}  // namespace

std::string describeTree(zHandle document) {
    std::string text;
    std::size_t depth = 1;
    for (const xml::Item* item = zXml_Root(document); item != nullptr;) {
        text.append(std::to_string(depth)).append(" ").append(describe(*item)).append("\n");
        if (item->firstChild != nullptr) {
            item = item->firstChild;
            ++depth;
            continue;
        }
        while (item->next == nullptr && --depth > 0) item = item->parent;
        item = depth == 0 ? nullptr : item->next;
    }
    return text;
}

std::string writtenBytes(zHandle document) {
    Ta::Buffer buffer;
    if (zXml_SaveBytes(document, buffer.data(), buffer.size(), nullptr) != zStatus_Success) return {};
    return {static_cast<const char*>(buffer.bytes()), buffer.byteCount()};
}

}  // namespace testing
