#include "platform/archive/archive.h"

#include <new>
#include <string>

#include "platform/archive/container.h"
#include "platform/base/failure.h"
#include "platform/base/log.h"
#include "platform/os/os.h"

namespace {

/// Reports leaked objects when it goes.
struct LeakReport {
    LeakReport() = default;
    LeakReport(const LeakReport&) = delete;
    LeakReport& operator=(const LeakReport&) = delete;
    ~LeakReport() {
        if (zApiLib_LeakLoggingEnabled()) zObject_ReportLeaks();
    }
};

/// The archive library. Its first base goes last: when the library itself is no living object any more.
class Library : private LeakReport, public zObject {
  public:
    const char* kind() const override { return "archive library"; }
};

template <typename Object, typename... Arguments>
zStatus construct(zHandle* handle, Arguments... arguments) {
    if (handle == nullptr) return failure::record(zStatus_BadArgument, "no place for a handle given");
    return failure::guarded([&] {
        *handle = (new Object(arguments...))->handle();
        return zStatus_Success;
    });
}

/// Runs `operation` on the container behind `handle`.
template <typename Operation>
zStatus withContainer(zHandle handle, Operation operation) {
    auto* container = zObject::as<Container>(handle);
    if (container == nullptr) {
        return failure::record(zStatus_BadArgument, "the handle is that of no archive container");
    }
    return failure::guarded([&] { return operation(*container); });
}

/// What a find has made ready at `index`, else null.
const Content* contentAt(zHandle handle, std::int64_t index) {
    auto* container = zObject::as<Container>(handle);
    if (container == nullptr || index < 0) return nullptr;
    return container->readyContent(static_cast<std::size_t>(index));
}

/// Tells the user, whose next message names the path alone, why a plain file is no container.
void logRefusal(const std::string& path, zStatus status) {
    os::FileType type{};
    if (os::fileType(path, type) || type != os::FileType::regular) return;
    zLog_Write("zArchive_Load: " + std::string(failure::detailOf(status)));
}

}  // namespace

zStatus zTdLib_Construct(zHandle* library) {
    return construct<Library>(library);
}

zStatus zArchive_Construct(zHandle* archive, const zAllocator* allocator) {
    return construct<Container>(archive, allocator);
}

zStatus zArchive_Load(zHandle archive, const char* path) {
    return withContainer(archive, [&](Container& container) {
        const zStatus status = container.load(path);
        if (status != zStatus_Success) logRefusal(path, status);
        return status;
    });
}

zStatus zArchive_Save(zHandle archive, const char* path) {
    return withContainer(archive, [&](Container& container) { return container.save(path); });
}

zStatus zArchive_Find(zHandle archive, const char* name, std::int64_t* index) {
    return withContainer(archive, [&](Container& container) {
        std::size_t found = 0;
        const zStatus status = container.find(name, found);
        if (status == zStatus_Success) *index = static_cast<std::int64_t>(found);
        return status;
    });
}

std::uint64_t zArchive_FileSize(zHandle archive, std::int64_t index) {
    const Content* content = contentAt(archive, index);
    return content == nullptr ? 0 : content->size();
}

const void* zArchive_FileData(zHandle archive, std::int64_t index) {
    const Content* content = contentAt(archive, index);
    return content == nullptr ? nullptr : content->data();
}

zStatus zArchive_AddData(zHandle archive, const void* data, std::size_t size, const char* name, int options) {
    return withContainer(archive, [&](Container& container) {
        if (options != 0) return failure::record(zStatus_BadArgument, "options must be 0");
        if (data == nullptr && size > 0) return failure::record(zStatus_BadArgument, "no data given");
        return container.addData(name, data, size);
    });
}

zStatus zArchive_DeleteFile(zHandle archive, const char* name) {
    return withContainer(archive, [&](Container& container) {
        container.remove(name);
        return zStatus_Success;
    });
}

zStatus zArchive_AddLive(zHandle archive, std::shared_ptr<LiveContent> content, const char* name) {
    return withContainer(archive, [&](Container& container) {
        if (!content) return failure::record(zStatus_BadArgument, "no live content given");
        return container.addLive(name, std::move(content));
    });
}

std::shared_ptr<LiveContent> zArchive_Live(zHandle archive, const char* name) {
    auto* container = zObject::as<Container>(archive);
    return container == nullptr ? nullptr : container->live(name);
}
