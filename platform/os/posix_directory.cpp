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
using posix::flushDirectory;
using posix::lastError;
using posix::native;

namespace {

bool isDirectory(const std::string& name) {
    FileType type{};
    return !fileType(name, type) && type == FileType::directory;
}

/// Makes one directory; one that is there, or that somebody else makes meanwhile, will do.
std::error_code createDirectory(const std::string& name, const std::string& parent) {
    if (::mkdir(name.c_str(), 0777) == 0) return flushDirectory(parent);
    const std::error_code error = lastError();
    return error == std::errc::file_exists && isDirectory(name) ? std::error_code{} : error;
}

}  // namespace

std::error_code createDirectories(const std::string& path) {
    std::string name = native(path);
    while (name.size() > 1 && name.back() == '/') name.pop_back();
    const std::string parent = directoryOf(name);
    const std::error_code error = createDirectory(name, parent);
    if (error != std::errc::no_such_file_or_directory || parent.size() >= name.size() || parent == ".") {
        return error;
    }
    if (std::error_code parentError = createDirectories(parent)) return parentError;
    return createDirectory(name, parent);
}

namespace {

using OpenDirectory = std::unique_ptr<DIR, int (*)(DIR*)>;

OpenDirectory openDirectory(const std::string& name) {
    DIR* opened = nullptr;
    do {
        opened = ::opendir(name.c_str());
    } while (opened == nullptr && errno == EINTR);
    return {opened, ::closedir};
}

/// Finds out whether an entry is a plain file or a link to one. Where that cannot be told it is an error, for
/// a file must not be passed over in silence.
std::error_code isPlainFile(const std::string& directory, const dirent& entry, bool& plain) {
    plain = entry.d_type == DT_REG;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return {};
    FileType type{};
    const std::error_code error = fileType(directory + '/' + entry.d_name, type);
    plain = !error && type == FileType::regular;
    // Links in a circle lead nowhere.
    return error == std::errc::too_many_symbolic_link_levels ? std::error_code{} : error;
}

}  // namespace

std::error_code listFiles(const std::string& directory, std::vector<std::string>& names) {
    const std::string name = native(directory);
    const OpenDirectory opened = openDirectory(name);
    if (!opened) return lastError();
    std::vector<std::string> found;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(opened.get());
        if (entry == nullptr) break;
        bool plain = false;
        if (std::error_code error = isPlainFile(name, *entry, plain)) return error;
        if (plain) found.emplace_back(entry->d_name);
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
