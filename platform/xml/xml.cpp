// Constructing, loading and saving documents.

#include "platform/xml/xml.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "platform/base/failure.h"
#include "platform/base/file.h"
#include "platform/xml/fault.h"
#include "platform/xml/joined.h"
#include "platform/xml/operations.h"
#include "platform/xml/serialiser.h"

namespace {

using namespace xml;

/// Reads a block, behind whose `size` bytes a zero byte stands, into a new document.
zStatus read(zHandle* document, Block bytes, std::size_t size, const zAllocator* allocator) {
    auto made = std::make_unique<Document>(allocator);
    try {
        made->read(std::move(bytes), size);
    } catch (const Fault& fault) {
        return failure::record(fault.status, fault.detail);
    }
    *document = made.release()->handle();
    return zStatus_Success;
}

zStatus checkRoot(Document* document) {
    if (document == nullptr) return refuseDocument();
    if (document->root() != nullptr) return zStatus_Success;
    return failure::record(zStatus_BadArgument, "the document has no root element, without which it is none");
}

}  // namespace

zStatus zXml_Construct(zHandle* document, const zAllocator* allocator) {
    *document = nullptr;
    return failure::guarded([&] {
        auto made = std::make_unique<Document>(allocator);
        made->startFresh();
        *document = made.release()->handle();
        return zStatus_Success;
    });
}

zStatus zXml_Load(zHandle* document, const char* path, const zAllocator* allocator) {
    *document = nullptr;
    return failure::guarded([&] {
        void* bytes = nullptr;
        std::size_t size = 0;
        if (const zStatus status = zFile_Load(path, &bytes, &size, allocator); status != zStatus_Success)
            return status;
        Block block(static_cast<char*>(bytes), Release{allocator});
        const zStatus status = read(document, std::move(block), size, allocator);
        return status == zStatus_Success ? status : failure::within(joined({path, ":"}), status);
    });
}

zStatus zXml_LoadBytes(zHandle* document, const void* bytes, std::size_t size, const zAllocator* allocator) {
    *document = nullptr;
    if (bytes == nullptr && size > 0) return refuseNull("the bytes");
    return failure::guarded([&] {
        Block block(static_cast<char*>(zAllocator_Allocate(allocator, size + 1)), Release{allocator});
        if (block == nullptr) throw std::bad_alloc();
        std::copy_n(static_cast<const char*>(bytes), size, block.get());
        block.get()[size] = '\0';
        return read(document, std::move(block), size, allocator);
    });
}

zStatus zXml_FromText(zHandle* document, const char* text, const zAllocator* allocator) {
    return zXml_LoadBytes(document, text, text == nullptr ? 0 : std::strlen(text), allocator);
}

zStatus zXml_Save(zHandle document, const char* path) {
    void* bytes = nullptr;
    std::size_t size = 0;
    if (const zStatus status = zXml_SaveBytes(document, &bytes, &size, nullptr); status != zStatus_Success)
        return status;
    const Block block(static_cast<char*>(bytes), Release{nullptr});
    return zFile_Save(path, bytes, size);
}

zStatus zXml_SaveBytes(zHandle document, void** bytes, std::size_t* size, const zAllocator* allocator) {
    *bytes = nullptr;
    *size = 0;
    Document* source = documentOf(document);
    if (const zStatus status = checkRoot(source); status != zStatus_Success) return status;
    return failure::guarded([&] {
        Stretches stretches = collect(*source);
        std::string converted;
        if (source->encoding() != Encoding::utf8) {
            converted = encoded(stretches, source->encoding());
            stretches = Stretches();
            stretches.add(converted);
        }
        auto* block = static_cast<char*>(zAllocator_Allocate(allocator, stretches.size()));
        if (block == nullptr) throw std::bad_alloc();
        char* at = block;
        for (std::string_view text : stretches.all()) at = std::copy(text.begin(), text.end(), at);
        *bytes = block;
        *size = stretches.size();
        return zStatus_Success;
    });
}
