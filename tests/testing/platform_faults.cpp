#include "tests/testing/platform_faults.h"

#include <cstdarg>
#include <cstdio>
#include <map>
#include <memory>
#include <utility>

#include "platform/archive/archive.h"
#include "platform/base/directory.h"
#include "platform/base/exception.h"
#include "platform/base/failure.h"
#include "platform/base/file.h"
#include "platform/base/list.h"
#include "platform/base/path.h"
#include "platform/base/text.h"
#include "platform/xml/xml.h"

namespace testing {
namespace {

struct Plan {
    std::string operation;
    zStatus status = zStatus_Success;
    std::size_t call = 0;
    bool isException = false;
};

Plan plan;
std::string applicationDirectory;

std::map<std::string, std::size_t>& calls() {
    static std::map<std::string, std::size_t> counts;
    return counts;
}

/// Counts a call of `operation`; true when it is to fail.
bool isDue(const char* operation) {
    const std::size_t call = ++calls()[operation];
    return plan.operation == operation && call >= plan.call;
}

zStatus planned() {
    if (plan.isException) throw std::bad_alloc();
    return failure::record(plan.status, "planned by the test");
}

}  // namespace

Fault::Fault(const std::string& operation, zStatus status, std::size_t call) {
    plan = {operation, status, callsOf(operation) + call};
}

Fault::Fault(const std::string& operation, const std::bad_alloc&, std::size_t call)
    : Fault(operation, zStatus_NoMemory, call) {
    plan.isException = true;
}

Fault::~Fault() {
    plan = {};
}

std::size_t callsOf(const std::string& operation) {
    return calls()[operation];
}

ApplicationDirectory::ApplicationDirectory(const std::string& directory) {
    applicationDirectory = directory;
}

ApplicationDirectory::~ApplicationDirectory() {
    applicationDirectory.clear();
}

// `name` is the operation, TAVEK_LINKED_name its name for the linker, which CMakeLists.txt defines.
#define TAVEK_WRAP(name, parameters)                                          \
    zStatus real_##name parameters __asm__("__real_" TAVEK_LINKED_##name);    \
    zStatus wrapped_##name parameters __asm__("__wrap_" TAVEK_LINKED_##name); \
    zStatus wrapped_##name parameters
#define TAVEK_FAIL_OR(name, arguments) return isDue(#name) ? planned() : real_##name arguments

// The one operation whose status nobody looks at.
TAVEK_WRAP(zStrCopy, (char* destination, std::size_t capacity, const char* source)) {
    if (isDue("zStrCopy")) throw Ta::Exception(planned());
    return real_zStrCopy(destination, capacity, source);
}
TAVEK_WRAP(zStrPrintf, (char* destination, std::size_t capacity, const char* format, ...)) {
    if (isDue("zStrPrintf")) return planned();
    std::va_list arguments;
    va_start(arguments, format);
    std::string text(4096, '\0');
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    text.resize(static_cast<std::size_t>(length));
    return real_zStrPrintf(destination, capacity, "%s", text.c_str());
}
TAVEK_WRAP(zPath_FileName, (const char* path, char* destination, std::size_t capacity)) {
    TAVEK_FAIL_OR(zPath_FileName, (path, destination, capacity));
}
TAVEK_WRAP(zDirectory_Application, (char* destination, std::size_t capacity)) {
    if (isDue("zDirectory_Application")) return planned();
    if (applicationDirectory.empty()) return real_zDirectory_Application(destination, capacity);
    return zStrPrintf(destination, capacity, "%s", applicationDirectory.c_str());
}
TAVEK_WRAP(zArrayList_Construct,
           (zHandle * list, zItemType type, std::size_t capacity, const zAllocator* allocator)) {
    TAVEK_FAIL_OR(zArrayList_Construct, (list, type, capacity, allocator));
}
TAVEK_WRAP(zFile_Delete, (const char* path)) {
    TAVEK_FAIL_OR(zFile_Delete, (path));
}
TAVEK_WRAP(zXml_Construct, (zHandle * document, const zAllocator* allocator)) {
    TAVEK_FAIL_OR(zXml_Construct, (document, allocator));
}
TAVEK_WRAP(zXml_Save, (zHandle document, const char* path)) {
    TAVEK_FAIL_OR(zXml_Save, (document, path));
}
TAVEK_WRAP(zXml_SaveBytes, (zHandle document, void** bytes, std::size_t* size, const zAllocator* allocator)) {
    TAVEK_FAIL_OR(zXml_SaveBytes, (document, bytes, size, allocator));
}
TAVEK_WRAP(zXml_FindRoot, (zHandle document, zXmlItem* root)) {
    TAVEK_FAIL_OR(zXml_FindRoot, (document, root));
}
TAVEK_WRAP(zXml_AddItem, (zHandle document, zXmlItem parent, const char* name, zXmlItem* item)) {
    TAVEK_FAIL_OR(zXml_AddItem, (document, parent, name, item));
}
TAVEK_WRAP(zXml_SetItemText, (zHandle document, zXmlItem item, const char* text)) {
    TAVEK_FAIL_OR(zXml_SetItemText, (document, item, text));
}
TAVEK_WRAP(zXml_SetAttrText, (zHandle document, zXmlItem item, const char* name, const char* text)) {
    TAVEK_FAIL_OR(zXml_SetAttrText, (document, item, name, text));
}
TAVEK_WRAP(zXml_CopyItem, (zHandle document, zXmlItem parent, zXmlItem before, zHandle sourceDocument,
                           zXmlItem sourceItem, zXmlItem* copy)) {
    TAVEK_FAIL_OR(zXml_CopyItem, (document, parent, before, sourceDocument, sourceItem, copy));
}
TAVEK_WRAP(zXml_DeleteItem, (zHandle document, zXmlItem item)) {
    TAVEK_FAIL_OR(zXml_DeleteItem, (document, item));
}
TAVEK_WRAP(zTdLib_Construct, (zHandle * library)) {
    TAVEK_FAIL_OR(zTdLib_Construct, (library));
}
TAVEK_WRAP(zArchive_Construct, (zHandle * archive, const zAllocator* allocator)) {
    TAVEK_FAIL_OR(zArchive_Construct, (archive, allocator));
}
TAVEK_WRAP(zArchive_Find, (zHandle archive, const char* name, std::int64_t* index)) {
    TAVEK_FAIL_OR(zArchive_Find, (archive, name, index));
}
TAVEK_WRAP(zArchive_AddData,
           (zHandle archive, const void* data, std::size_t size, const char* name, int options)) {
    TAVEK_FAIL_OR(zArchive_AddData, (archive, data, size, name, options));
}
TAVEK_WRAP(zArchive_AddLive, (zHandle archive, std::shared_ptr<LiveContent> content, const char* name)) {
    TAVEK_FAIL_OR(zArchive_AddLive, (archive, std::move(content), name));
}
TAVEK_WRAP(zArchive_DeleteFile, (zHandle archive, const char* name)) {
    TAVEK_FAIL_OR(zArchive_DeleteFile, (archive, name));
}
TAVEK_WRAP(zArchive_Save, (zHandle archive, const char* path)) {
    TAVEK_FAIL_OR(zArchive_Save, (archive, path));
}

}  // namespace testing
