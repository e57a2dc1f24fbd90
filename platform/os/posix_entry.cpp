// Links, times and permissions on POSIX systems.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/os/os.h"
#include "platform/os/posix_api.h"

namespace os {

using posix::isKind;
using posix::lastError;
using posix::native;

namespace {

std::error_code outcome(int result) {
    return result == 0 ? std::error_code{} : lastError();
}

/// The bits that new files of this process do not get; asking means setting.
mode_t currentUmask() {
    const mode_t mask = ::umask(0777);
    ::umask(mask);
    return mask;
}

}  // namespace

bool isFileName(std::string_view name) {
    constexpr std::string_view separators("/\\\0", 3);
    return !name.empty() && name.find_first_of(separators) == std::string_view::npos;
}

std::error_code isLink(const std::string& path, bool& link) {
    struct stat status {};
    if (::lstat(native(path).c_str(), &status) == 0) {
        link = isKind(status, S_IFLNK);
        return {};
    }
    if (errno != ENOENT && errno != ENOTDIR) return lastError();
    link = false;
    return {};
}

std::error_code createSymbolicLink(const std::string& destination, const std::string& path) {
    return outcome(::symlink(destination.c_str(), native(path).c_str()));
}

std::error_code createHardLink(const std::string& existing, const std::string& path) {
    return outcome(::linkat(AT_FDCWD, native(existing).c_str(), AT_FDCWD, native(path).c_str(), 0));
}

std::error_code setModificationTime(const std::string& path, Time time) {
    timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = time.seconds;
    times[1].tv_nsec = time.nanoseconds;
    return outcome(::utimensat(AT_FDCWD, native(path).c_str(), times, AT_SYMLINK_NOFOLLOW));
}

std::error_code setPermissions(const std::string& path, unsigned mode) {
    constexpr unsigned permissionBits = 0777;
    return outcome(::chmod(native(path).c_str(), mode & permissionBits & ~currentUmask()));
}

}  // namespace os
