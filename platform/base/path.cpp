#include "platform/base/path.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/base/failure.h"
#include "platform/os/os.h"

namespace {

constexpr std::string_view separators = "/\\";

zStatus answer(std::string_view result, char* destination, std::size_t capacity) {
    if (destination == nullptr || capacity == 0) {
        return failure::record(zStatus_BadArgument, "the buffer has no room for a path");
    }
    if (result.size() >= capacity) {
        const zStatus status =
            failure::record(zStatus_DoesNotFit, std::string(result) + ": longer than " +
                                                    std::to_string(capacity - 1) + " characters");
        destination[0] = '\0';
        return status;
    }
    // The result may be part of what lies in the buffer; an empty one may lie nowhere.
    if (!result.empty()) std::memmove(destination, result.data(), result.size());
    destination[result.size()] = '\0';
    return zStatus_Success;
}

std::string_view directoryOf(std::string_view path) {
    const std::size_t separator = path.find_last_of(separators);
    if (separator == std::string_view::npos) return {};
    return path.substr(0, std::max(separator, os::rootLength(path)));
}

std::string_view fileNameOf(std::string_view path) {
    return path.substr(path.find_last_of(separators) + 1);
}

/// Where the extension's dot stands in the file name; npos when there is none. A leading dot hides a file,
/// and two alone name the parent directory.
std::size_t extensionDot(std::string_view fileName) {
    const std::size_t dot = fileName.rfind('.');
    return dot == 0 || fileName == ".." ? std::string_view::npos : dot;
}

}  // namespace

zStatus zPath_Combine(const char* first, const char* second, char* destination, std::size_t capacity) {
    return failure::guarded([&] {
        std::string_view left = first;
        std::string_view right = second;
        if (left.empty() || right.empty()) return answer(left.empty() ? right : left, destination, capacity);

        left = left.substr(0, left.find_last_not_of(separators) + 1);
        right.remove_prefix(std::min(right.find_first_not_of(separators), right.size()));
        std::string joined(left);
        joined += os::pathSeparator;
        joined += right;
        return answer(joined, destination, capacity);
    });
}

zStatus zPath_Directory(const char* path, char* destination, std::size_t capacity) {
    return failure::guarded([&] { return answer(directoryOf(path), destination, capacity); });
}

zStatus zPath_FileName(const char* path, char* destination, std::size_t capacity) {
    return failure::guarded([&] { return answer(fileNameOf(path), destination, capacity); });
}

zStatus zPath_Extension(const char* path, char* destination, std::size_t capacity) {
    return failure::guarded([&] {
        const std::string_view name = fileNameOf(path);
        const std::size_t dot = extensionDot(name);
        const std::string_view none;
        return answer(dot == std::string_view::npos ? none : name.substr(dot + 1), destination, capacity);
    });
}

zStatus zPath_StripExtension(const char* path, char* destination, std::size_t capacity) {
    return failure::guarded([&] {
        std::string_view stripped = path;
        const std::string_view name = fileNameOf(stripped);
        const std::size_t dot = extensionDot(name);
        if (dot != std::string_view::npos) stripped.remove_suffix(name.size() - dot);
        return answer(stripped, destination, capacity);
    });
}

bool zPath_IsAbsolute(const char* path) {
    return os::isAbsolute(path);
}
