#include "platform/base/directory.h"

#include <algorithm>

#include "platform/base/failure.h"
#include "platform/base/list.h"
#include "platform/base/text.h"
#include "platform/os/os.h"

zStatus zDirectory_Application(char* destination, std::size_t capacity) {
    return failure::guarded([&] {
        std::string directory;
        if (std::error_code error = os::applicationDirectory(directory)) {
            return failure::record(error, "the program's own directory");
        }
        return zStrPrintf(destination, capacity, "%s", directory.c_str());
    });
}

bool zDirectory_Exists(const char* path) {
    return zDirectory_Find(path) == zStatus_Success;
}

zStatus zDirectory_Find(const char* path) {
    return failure::guarded([&] {
        os::FileType type{};
        const std::error_code error = os::fileType(path, type);
        const bool leadsNowhere = error == std::errc::filename_too_long ||
                                  error == std::errc::too_many_symbolic_link_levels ||
                                  (!error && type != os::FileType::directory);
        if (leadsNowhere) return zStatus_NotFound;
        return error ? failure::record(error, path) : zStatus_Success;
    });
}

zStatus zDirectory_Create(const char* path) {
    return failure::guarded([&] {
        if (std::error_code error = os::createDirectories(path)) return failure::record(error, path);
        return zStatus_Success;
    });
}

zStatus zDirectory_ListFiles(const char* directory, zHandle list) {
    return failure::guarded([&] {
        std::vector<std::string> names;
        if (std::error_code error = os::listFiles(directory, names)) return failure::record(error, directory);
        std::sort(names.begin(), names.end());
        for (const std::string& name : names) {
            const zStatus status = zArrayList_AddString(list, name.c_str());
            if (status != zStatus_Success) return status;
        }
        return zStatus_Success;
    });
}
