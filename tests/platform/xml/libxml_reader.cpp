#include "tests/platform/xml/libxml_reader.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

#include "platform/xml/characters.h"

namespace testing {
namespace {

std::string_view view(const xmlChar* text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

std::string nameOf(const xmlNs* space, const xmlChar* name) {
    std::string result;
    if (space != nullptr && space->prefix != nullptr) result.append(view(space->prefix)).append(":");
    return result.append(view(name));
}

std::string contentOf(const xmlNode* parent) {
    std::string text;
    for (const xmlNode* node = parent->children; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) text += view(node->content);
    }
    return text;
}

void describe(std::string& result, const xmlNode* element, std::size_t depth) {
    result += std::to_string(depth) + " " + nameOf(element->ns, element->name);
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        result += " " + nameOf(attribute->ns, attribute->name) + "=[";
        for (const xmlNode* node = attribute->children; node != nullptr; node = node->next)
            result += view(node->content);
        result += "]";
    }
    const std::string text = contentOf(element);
    if (!xml::isBlank(text)) result += " \"" + text + "\"";
    result += "\n";
    for (const xmlNode* node = element->children; node != nullptr; node = node->next) {
        if (node->type == XML_ELEMENT_NODE) describe(result, node, depth + 1);
    }
}

}  // namespace

std::string libxmlTree(std::string_view bytes) {
    constexpr int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE;
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
        xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr, options), xmlFreeDoc);
    if (document == nullptr) return libxmlRefuses;
    std::string result;
    describe(result, xmlDocGetRootElement(document.get()), 1);
    return result;
}

const char* reasonToDisagree(std::string_view bytes, std::string_view fault) {
    const auto faultHas = [&](const char* text) { return fault.find(text) != std::string_view::npos; };
    const bool hasDocumentType = bytes.find("<!DOCTYPE") != std::string_view::npos;
    if (fault == "accepted" && hasDocumentType)
        return "declarations in a document type: checked here for quotes and brackets alone";
    if (faultHas("the entity &") && hasDocumentType)
        return "entities: a document type declares none here, whatever it says";
    if (fault.starts_with("unsupported") || faultHas("the declaration says"))
        return "encodings: libxml2 knows more of them, and believes a byte order mark against the "
               "declaration";
    if (faultHas("the version must be")) return "version: libxml2 takes 1. without a digit";
    if (faultHas("the XML declaration must end"))
        return "declaration: libxml2 takes standalone without white space before it";
    if (faultHas("U+0000")) return "zero bytes: libxml2 takes one for the end";
    return nullptr;
}

}  // namespace testing
