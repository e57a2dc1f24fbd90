// Writing on POSIX systems: a temporary file beside the target that is renamed over it.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "platform/os/os.h"
#include "platform/os/posix_api.h"

namespace os {

using posix::Descriptor;
using posix::directoryOf;
using posix::flushDirectory;
using posix::isKind;
using posix::lastError;
using posix::native;
using posix::retried;

struct OutputFile::State {
    Descriptor file;
    std::string target;     // where the content belongs, symbolic links resolved
    std::string temporary;  // "" when the target is written directly
    bool replaces = false;
    struct stat replaced {};
    std::string accessList;  // of the replaced file
    std::int64_t written = 0;
    std::int64_t onItsWay = 0;  // of `written`, what the system was told to take to disk

    ~State() {
        if (!temporary.empty()) ::unlink(temporary.c_str());
    }
};

namespace {

/// Follows the symbolic link `target`, which leads to nothing yet, to the place it stands for.
std::error_code followDanglingLink(std::string& target) {
    constexpr int maximumLinks = 40;  // as Linux
    for (int links = 0; links <= maximumLinks; ++links) {
        std::string destination(PATH_MAX, '\0');
        const ssize_t length = ::readlink(target.c_str(), destination.data(), destination.size());
        if (length < 0) return errno == EINVAL || errno == ENOENT ? std::error_code{} : lastError();
        destination.resize(static_cast<std::size_t>(length));
        // What a link holds is the system's own writing, in which `\` is a character like any other.
        if (!destination.starts_with('/')) destination.insert(0, directoryOf(target) + '/');
        target = std::move(destination);
    }
    return std::make_error_code(std::errc::too_many_symbolic_link_levels);
}

/// The name without symbolic links of the existing file `target`.
std::error_code followLinks(std::string& target) {
    const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(target.c_str(), nullptr), std::free);
    if (!resolved) return lastError();
    target = resolved.get();
    return {};
}

/// Creates a file of a name that is nobody else's beside `target`.
std::error_code createTemporary(const std::string& target, mode_t mode, Descriptor& file, std::string& name) {
    static std::atomic<unsigned> serial{0};
    for (;;) {
        std::string candidate = directoryOf(target) + "/.tavek-" + std::to_string(::getpid()) + '-' +
                                std::to_string(serial++) + ".tmp";
        file.reset(retried(
            [&] { return ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode); }));
        if (file.valid()) {
            name = std::move(candidate);
            return {};
        }
        if (errno != EEXIST) return lastError();
    }
}

/// Opens the pipe or device `target` itself.
std::error_code openDirectly(const std::string& target, Descriptor& file) {
    file.reset(retried([&] { return ::open(target.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC); }));
    return file.valid() ? std::error_code{} : lastError();
}

/// The permission bits that a new file made after `model` gets; those of any new file when there is no model.
mode_t modeLike(const std::string& model) {
    struct stat status {};
    return !model.empty() && ::stat(model.c_str(), &status) == 0 ? status.st_mode & 0777 : 0666;
}

/// True when the last call was not allowed to give a file away, or to an owner whom this container does not
/// know (EINVAL): no failure, for the file can do without.
bool mayNotGive() {
    return errno == EPERM || errno == EINVAL;
}

constexpr const char* accessListName = "system.posix_acl_access";

/// True when the last call failed because there is no access list, or the file system knows none.
bool hasNoAccessList() {
    return errno == ENODATA || errno == ENOTSUP;
}

/// Gives in `list` the access list that the file `path` has beside its permission bits; leaves it empty
/// without one.
std::error_code readAccessList(const std::string& path, std::string& list) {
    constexpr std::size_t longest = std::size_t{64} * 1024;  // as Linux
    std::vector<char> found(longest);
    const ssize_t length = ::getxattr(path.c_str(), accessListName, found.data(), found.size());
    if (length < 0) return hasNoAccessList() ? std::error_code{} : lastError();
    list.assign(found.data(), static_cast<std::size_t>(length));
    return {};
}

/// Gives the new file this access list, or takes away what it got from its directory. Without the list the
/// permission bits would mean something else: they tell the most that the list grants to anybody.
std::error_code giveAccessList(int file, const std::string& list) {
    const int result = list.empty() ? ::fremovexattr(file, accessListName)
                                    : ::fsetxattr(file, accessListName, list.data(), list.size(), 0);
    return result == 0 || hasNoAccessList() || mayNotGive() ? std::error_code{} : lastError();
}

/// Gives the new file the owner and permissions of the one it replaces; its group alone, which others may
/// share, when the owner is not to be had. The permissions are then kept all the same, but not the right to
/// run as the owner, who is another now.
std::error_code takeOver(int file, const struct stat& replaced, const std::string& accessList) {
    constexpr mode_t everyBit = 07777;
    constexpr mode_t accessBits = 0777;
    constexpr auto sameUser = static_cast<uid_t>(-1);
    const bool sameOwner = ::fchown(file, replaced.st_uid, replaced.st_gid) == 0;
    if (!sameOwner && !mayNotGive()) return lastError();
    if (!sameOwner && ::fchown(file, sameUser, replaced.st_gid) != 0 && !mayNotGive()) return lastError();
    if (std::error_code error = giveAccessList(file, accessList)) return error;
    const mode_t mode = replaced.st_mode & (sameOwner ? everyBit : accessBits);
    return ::fchmod(file, mode) == 0 ? std::error_code{} : lastError();
}

/// Lets the disk begin with what was written while more is made, for otherwise all of it waits for the flush
/// at the end. Only the flush tells of errors.
void startWritingBack(int file, std::int64_t written, std::int64_t& onItsWay) {
    constexpr std::int64_t piece = std::int64_t{8} << 20;
    if (written - onItsWay < piece) return;
    static_cast<void>(::sync_file_range(file, onItsWay, written - onItsWay, SYNC_FILE_RANGE_WRITE));
    onItsWay = written;
}

}  // namespace

OutputFile::OutputFile() = default;
OutputFile::~OutputFile() = default;
OutputFile::OutputFile(OutputFile&&) noexcept = default;
OutputFile& OutputFile::operator=(OutputFile&&) noexcept = default;

std::error_code OutputFile::open(const std::string& target) {
    return openLike(target, "");
}

std::error_code OutputFile::openLike(const std::string& target, const std::string& model) {
    // Without this the temporary file of the empty text would go to the working directory.
    if (target.empty()) return std::make_error_code(std::errc::no_such_file_or_directory);
    auto opened = std::make_unique<State>();
    opened->target = native(target);
    opened->replaces = ::stat(opened->target.c_str(), &opened->replaced) == 0;
    if (!opened->replaces && errno != ENOENT) return lastError();

    if (opened->replaces && isKind(opened->replaced, S_IFDIR)) {
        return std::make_error_code(std::errc::is_a_directory);
    }
    std::error_code error;
    if (opened->replaces && !isKind(opened->replaced, S_IFREG)) {
        error = openDirectly(opened->target, opened->file);
    } else {
        error = opened->replaces ? followLinks(opened->target) : followDanglingLink(opened->target);
        if (!error && opened->replaces) error = readAccessList(opened->target, opened->accessList);
        const mode_t mode = opened->replaces ? 0600 : modeLike(native(model));
        if (!error) error = createTemporary(opened->target, mode, opened->file, opened->temporary);
    }
    if (!error) state = std::move(opened);
    return error;
}

std::error_code OutputFile::write(const void* bytes, std::size_t size) {
    // The system's cache takes what one call writes as one page where it can. Large pages are scarce on a
    // machine that has run for a while, and a gigabyte in calls of 256 KiB took three times as long as in
    // these.
    constexpr std::size_t longest = std::size_t{16} * 1024;
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const std::size_t count = std::min(size, longest);
        const ssize_t written = retried([&] { return ::write(state->file.get(), next, count); });
        if (written < 0) return lastError();
        next += written;
        size -= static_cast<std::size_t>(written);
        state->written += written;
    }
    if (!state->temporary.empty()) startWritingBack(state->file.get(), state->written, state->onItsWay);
    return {};
}

std::error_code OutputFile::commit() {
    const std::unique_ptr<State> finished = std::move(state);
    if (finished->temporary.empty()) return finished->file.close();

    if (finished->replaces) {
        if (std::error_code error =
                takeOver(finished->file.get(), finished->replaced, finished->accessList)) {
            return error;
        }
    }
    if (retried([&] { return ::fsync(finished->file.get()); }) != 0) return lastError();
    if (std::error_code error = finished->file.close()) return error;
    if (::rename(finished->temporary.c_str(), finished->target.c_str()) != 0) return lastError();
    finished->temporary.clear();
    return flushDirectory(directoryOf(finished->target));
}

}  // namespace os
