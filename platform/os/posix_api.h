#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

/// What the POSIX sources of os.h share.
namespace os::posix {

inline std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// Paths come with either separator; this system knows only one.
inline std::string native(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

/// The directory that the native `path` lies in.
inline std::string directoryOf(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    if (separator == std::string::npos) return ".";
    return separator == 0 ? "/" : path.substr(0, separator);
}

/// True when `status` is that of the given kind of file (S_IFREG, S_IFDIR).
inline bool isKind(const struct stat& status, mode_t kind) {
    return (status.st_mode & S_IFMT) == kind;
}

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto retried(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

/// Owns a file descriptor.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        reset(std::exchange(other.number_, -1));
        return *this;
    }

    int get() const { return number_; }
    bool valid() const { return number_ >= 0; }
    void reset(int number = -1) {
        if (valid()) ::close(number_);
        number_ = number;
    }
    /// Closes and answers the error that only closing brings to light (a network file system's full disk).
    std::error_code close() {
        const int result = ::close(std::exchange(number_, -1));
        return result == 0 || errno == EINTR ? std::error_code{} : lastError();
    }

  private:
    int number_;
};

/// Makes names that came into `directory` outlast a power cut, as far as it can be opened and flushed.
inline std::error_code flushDirectory(const std::string& directory) {
    const Descriptor opened(
        retried([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened.valid()) return errno == EACCES ? std::error_code{} : lastError();
    if (retried([&] { return ::fsync(opened.get()); }) == 0 || errno == EINVAL) return {};
    return lastError();
}

}  // namespace os::posix
