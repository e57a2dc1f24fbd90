#include "TaVekInspect/model/xml_text.h"

#include "platform/base/text.h"

namespace {

/// What `read` puts into a buffer that is large enough; "" when it fails for another reason than room.
template <typename Read>
std::string grown(Read read) {
    std::string buffer(256, '\0');
    zStatus status = zStatus_DoesNotFit;
    while ((status = read(buffer.data(), buffer.size())) == zStatus_DoesNotFit)
        buffer.resize(2 * buffer.size());
    if (status != zStatus_Success) return {};
    buffer.resize(zStrLength(buffer.data()));
    return buffer;
}

}  // namespace

std::string attributeOf(zHandle document, zXmlItem item, const char* name) {
    return grown([&](char* buffer, std::size_t capacity) {
        return zXml_AttrText(document, item, name, buffer, capacity);
    });
}

bool hasAttribute(zHandle document, zXmlItem item, const char* name) {
    char buffer[1];
    return zXml_AttrText(document, item, name, buffer, sizeof buffer) != zStatus_NotFound;
}

std::string childTextOf(zHandle document, zXmlItem item, const char* name) {
    return grown([&](char* buffer, std::size_t capacity) {
        return zXml_ChildText(document, item, name, buffer, capacity);
    });
}
