// What paths name, reading and removing on POSIX systems.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/os/os.h"
#include "platform/os/posix_api.h"

namespace os {

using posix::Descriptor;
using posix::isKind;
using posix::lastError;
using posix::native;
using posix::retried;

// ---- Paths ---------------------------------------------------------------------------------------------

const char pathSeparator = '/';

std::size_t rootLength(std::string_view path) {
    return isAbsolute(path) ? 1 : 0;
}

bool isAbsolute(std::string_view path) {
    return !path.empty() && (path[0] == '/' || path[0] == '\\');
}

std::error_code fileType(const std::string& path, FileType& type) {
    struct stat status {};
    if (::stat(native(path).c_str(), &status) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) return lastError();
        type = FileType::absent;
    } else if (isKind(status, S_IFREG)) {
        type = FileType::regular;
    } else {
        type = isKind(status, S_IFDIR) ? FileType::directory : FileType::other;
    }
    return {};
}

// ---- Reading -------------------------------------------------------------------------------------------

struct InputFile::State {
    Descriptor file;
    struct stat status {};
};

InputFile::InputFile() = default;
InputFile::~InputFile() = default;
InputFile::InputFile(InputFile&&) noexcept = default;
InputFile& InputFile::operator=(InputFile&&) noexcept = default;

std::error_code InputFile::open(const std::string& path) {
    auto opened = std::make_unique<State>();
    const std::string name = native(path);
    opened->file.reset(retried([&] { return ::open(name.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!opened->file.valid() || ::fstat(opened->file.get(), &opened->status) != 0) return lastError();
    if (isKind(opened->status, S_IFDIR)) return std::make_error_code(std::errc::is_a_directory);
    state = std::move(opened);
    return {};
}

void InputFile::close() {
    state.reset();
}

bool InputFile::isOpen() const {
    return state != nullptr;
}

std::uint64_t InputFile::size() const {
    return isRegular() ? static_cast<std::uint64_t>(state->status.st_size) : 0;
}

bool InputFile::isRegular() const {
    return isKind(state->status, S_IFREG);
}

std::error_code InputFile::read(std::uint64_t offset, void* buffer, std::size_t capacity,
                                std::size_t& count) const {
    std::size_t done = 0;
    while (done < capacity) {
        const ssize_t got = retried([&] {
            return ::pread(state->file.get(), static_cast<char*>(buffer) + done, capacity - done,
                           static_cast<off_t>(offset + done));
        });
        if (got < 0) return lastError();
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    count = done;
    return {};
}

std::error_code InputFile::readNext(void* buffer, std::size_t capacity, std::size_t& count) {
    const ssize_t got = retried([&] { return ::read(state->file.get(), buffer, capacity); });
    if (got < 0) return lastError();
    count = static_cast<std::size_t>(got);
    return {};
}

bool InputFile::isSameFileAs(const std::string& path) const {
    struct stat other {};
    return ::stat(native(path).c_str(), &other) == 0 && other.st_dev == state->status.st_dev &&
           other.st_ino == state->status.st_ino;
}

std::error_code removeFile(const std::string& path) {
    const std::string name = native(path);
    if (::unlink(name.c_str()) == 0) return {};
    const std::error_code error = lastError();
    FileType type{};
    // Systems differ in what they answer for a directory.
    if (!fileType(name, type) && type == FileType::directory) {
        return std::make_error_code(std::errc::is_a_directory);
    }
    return error;
}

}  // namespace os
