#include "TaVekInspect/plan/imagined_files.h"

#include <algorithm>

#include "platform/base/directory.h"
#include "platform/base/failure.h"
#include "platform/base/path.h"
#include "platform/base/text.h"
#include "platform/os/access.h"
#include "platform/os/os.h"

namespace {

/// One name for one file, whichever separators it is written with.
std::string keyOf(const std::string& path) {
    std::string key = path;
    std::replace(key.begin(), key.end(), '\\', '/');
    return key;
}

std::string parentOf(const std::string& path) {
    Ta::PathText parent;
    static_cast<void>(zPath_Directory(path.c_str(), parent.data(), parent.capacity()));
    return parent.c_str();
}

zStatus fail(std::errc reason, const std::string& path) {
    return failure::record(std::make_error_code(reason), path);
}

}  // namespace

zStatus ImaginedFiles::findDirectory(const char* path) {
    return directories_.contains(keyOf(path)) ? zStatus_Success : zDirectory_Find(path);
}

zStatus ImaginedFiles::createDirectory(const char* path) {
    std::set<std::string> missing;
    std::string topmost, at = path;
    for (; !at.empty() && !directoryExists(at); at = parentOf(at)) {
        os::FileType type{};
        if (const std::error_code error = os::fileType(at, type)) return failure::record(error, path);
        if (fileExists(at)) {
            return fail(at == path ? std::errc::file_exists : std::errc::not_a_directory, path);
        }
        missing.insert(keyOf(at));
        topmost = at;
        if (parentOf(at) == at) break;
    }
    // `at` is what the missing ones are made in.
    if (!missing.empty() && !directories_.contains(keyOf(at)) && !os::mayReplace(topmost)) {
        return fail(std::errc::permission_denied, path);
    }
    directories_.merge(missing);
    return zStatus_Success;
}

zStatus ImaginedFiles::copyFile(const char* source, const char* destination) {
    os::InputFile file;
    if (const std::error_code error = file.open(source)) return failure::record(error, source);
    const bool isImagined = directories_.contains(keyOf(parentOf(destination)));
    if (directories_.contains(keyOf(destination))) return fail(std::errc::is_a_directory, destination);
    if (!isImagined) {
        if (const zStatus status = checkTarget(destination); status != zStatus_Success) return status;
    }
    files_.insert(keyOf(destination));
    deleted_.erase(keyOf(destination));
    ++copies_;
    return zStatus_Success;
}

zStatus ImaginedFiles::deleteFile(const char* path) {
    if (directoryExists(path)) return fail(std::errc::is_a_directory, path);
    if (!fileExists(path)) return fail(std::errc::no_such_file_or_directory, path);
    if (!files_.contains(keyOf(path))) {
        if (const zStatus status = checkTarget(path); status != zStatus_Success) return status;
    }
    files_.erase(keyOf(path));
    deleted_.insert(keyOf(path));
    return zStatus_Success;
}

bool ImaginedFiles::fileExists(const std::string& path) const {
    const std::string key = keyOf(path);
    if (files_.contains(key)) return true;
    os::FileType type{};
    if (os::fileType(path, type)) return true;  // whoever works on it is told why nobody can say
    return !deleted_.contains(key) && type != os::FileType::absent && type != os::FileType::directory;
}

zStatus checkTarget(const std::string& path) {
    os::FileType type{};
    if (const std::error_code error = os::fileType(path, type)) return failure::record(error, path);
    if (type == os::FileType::directory) return fail(std::errc::is_a_directory, path);
    if (type == os::FileType::other) return zStatus_Success;  // written directly
    const std::string parent = parentOf(path);
    if (!parent.empty() && !zDirectory_Exists(parent.c_str())) {
        return fail(std::errc::no_such_file_or_directory, path);
    }
    return os::mayReplace(path) ? zStatus_Success : fail(std::errc::permission_denied, path);
}
