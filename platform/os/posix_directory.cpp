// Directories on POSIX systems.

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <memory>

#include "platform/os/os.h"
#include "platform/os/posix_api.h"

namespace os {

using posix::directoryOf;
using posix::lastError;
using posix::native;

std::error_code createDirectories(const std::string& path) {
    const std::string name = native(path);
    if (::mkdir(name.c_str(), 0777) == 0) return {};
    const std::error_code error = lastError();
    if (error == std::errc::file_exists) {
        FileType type{};
        return !fileType(name, type) && type == FileType::directory ? std::error_code{} : error;
    }
    const std::string parent = directoryOf(name);
    if (error != std::errc::no_such_file_or_directory || parent.size() >= name.size() || parent == ".") {
        return error;
    }
    if (std::error_code parentError = createDirectories(parent)) return parentError;
    // A path that ends in a separator was made as its own parent.
    return ::mkdir(name.c_str(), 0777) == 0 || errno == EEXIST ? std::error_code{} : lastError();
}

std::error_code listFiles(const std::string& directory, std::vector<std::string>& names) {
    const std::string name = native(directory);
    const std::unique_ptr<DIR, int (*)(DIR*)> opened(::opendir(name.c_str()), ::closedir);
    if (!opened) return lastError();
    std::vector<std::string> found;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(opened.get());
        if (entry == nullptr) break;
        FileType type{};
        // A file that vanished or that may not be looked at is none that the caller could use.
        if (!fileType(name + '/' + entry->d_name, type) && type == FileType::regular) {
            found.emplace_back(entry->d_name);
        }
    }
    if (errno != 0) return lastError();
    names.insert(names.end(), found.begin(), found.end());
    return {};
}

std::error_code applicationDirectory(std::string& directory) {
    std::string program(PATH_MAX, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", program.data(), program.size());
    if (length < 0) return lastError();
    program.resize(static_cast<std::size_t>(length));
    directory = directoryOf(program);
    return {};
}

}  // namespace os
