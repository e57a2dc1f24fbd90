// The operating system's side of os.h for POSIX systems.

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <exception>
#include <utility>

#include "platform/os/os.h"
#include "platform/os/pe_version.h"

namespace os {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// Paths come with either separator; this system knows only one.
std::string native(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
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

bool names(const struct stat& status, mode_t kind) {
    return (status.st_mode & S_IFMT) == kind;
}

std::string directoryOf(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    if (separator == std::string::npos) return ".";
    return separator == 0 ? "/" : path.substr(0, separator);
}

}  // namespace

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
    } else if (names(status, S_IFREG)) {
        type = FileType::regular;
    } else {
        type = names(status, S_IFDIR) ? FileType::directory : FileType::other;
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
    if (names(opened->status, S_IFDIR)) return std::make_error_code(std::errc::is_a_directory);
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
    return names(state->status, S_IFREG);
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

// ---- Writing -------------------------------------------------------------------------------------------

struct OutputFile::State {
    Descriptor file;
    std::string target;     // where the content belongs, symbolic links resolved
    std::string temporary;  // "" when the target is written directly
    bool replaces = false;
    struct stat replaced {};

    ~State() {
        if (!temporary.empty()) ::unlink(temporary.c_str());
    }
};

namespace {

constexpr mode_t permissionBits = 07777;

/// Follows the symbolic link `target`, which leads to nothing yet, to the place it stands for.
std::error_code followDanglingLink(std::string& target) {
    constexpr int maximumLinks = 40;
    for (int links = 0; links < maximumLinks; ++links) {
        std::string destination(PATH_MAX, '\0');
        const ssize_t length = ::readlink(target.c_str(), destination.data(), destination.size());
        if (length < 0) return errno == EINVAL || errno == ENOENT ? std::error_code{} : lastError();
        destination.resize(static_cast<std::size_t>(length));
        target = isAbsolute(destination) ? destination : directoryOf(target) + '/' + destination;
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

/// Gives the new file the owner and permissions of the one it replaces. An owner that this user may not give
/// files to is no failure; the permissions are then still kept.
std::error_code takeOver(int file, const struct stat& replaced) {
    if (::fchown(file, replaced.st_uid, replaced.st_gid) != 0 && errno != EPERM) return lastError();
    return ::fchmod(file, replaced.st_mode & permissionBits) == 0 ? std::error_code{} : lastError();
}

/// Makes a rename in `directory` outlast a power cut, as far as the directory can be opened and flushed.
std::error_code flushDirectory(const std::string& directory) {
    const Descriptor opened(
        retried([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened.valid()) return errno == EACCES ? std::error_code{} : lastError();
    if (retried([&] { return ::fsync(opened.get()); }) == 0 || errno == EINVAL) return {};
    return lastError();
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
    auto opened = std::make_unique<State>();
    opened->target = native(target);
    opened->replaces = ::stat(opened->target.c_str(), &opened->replaced) == 0;
    if (!opened->replaces && errno != ENOENT) return lastError();

    if (opened->replaces && names(opened->replaced, S_IFDIR)) {
        return std::make_error_code(std::errc::is_a_directory);
    }
    std::error_code error;
    if (opened->replaces && !names(opened->replaced, S_IFREG)) {
        error = openDirectly(opened->target, opened->file);
    } else {
        error = opened->replaces ? followLinks(opened->target) : followDanglingLink(opened->target);
        const mode_t mode = opened->replaces ? 0600 : modeLike(native(model));
        if (!error) error = createTemporary(opened->target, mode, opened->file, opened->temporary);
    }
    if (!error) state = std::move(opened);
    return error;
}

std::error_code OutputFile::write(const void* bytes, std::size_t size) {
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t written = retried([&] { return ::write(state->file.get(), next, size); });
        if (written < 0) return lastError();
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return {};
}

std::error_code OutputFile::commit() {
    const std::unique_ptr<State> finished = std::move(state);
    if (finished->temporary.empty()) return finished->file.close();

    if (finished->replaces) {
        if (std::error_code error = takeOver(finished->file.get(), finished->replaced)) return error;
    }
    if (retried([&] { return ::fsync(finished->file.get()); }) != 0) return lastError();
    if (std::error_code error = finished->file.close()) return error;
    if (::rename(finished->temporary.c_str(), finished->target.c_str()) != 0) return lastError();
    finished->temporary.clear();
    return flushDirectory(directoryOf(finished->target));
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

// ---- Directories ---------------------------------------------------------------------------------------

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

// ---- Processes -----------------------------------------------------------------------------------------

std::vector<std::string> commandLine(int count, char** words) {
    return {words, words + count};
}

void silenceAbnormalEnd() {
    std::set_terminate(std::abort);
}

int unpackTar(const std::string& programDirectory, const std::string& directory, const std::string& archive) {
    constexpr int cannotStart = 127;
    constexpr int endedBySignal = 128;
    std::string program = native(programDirectory) + "/tar.exe";
    std::string arguments[] = {program, "--force-local", "-C", native(directory), "-xvf", native(archive)};
    std::vector<char*> list;
    for (std::string& argument : arguments) list.push_back(argument.data());
    list.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    if (::posix_spawn_file_actions_init(&actions) != 0) return cannotStart;
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int started = ::posix_spawn(&child, program.c_str(), &actions, nullptr, list.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (started != 0) return cannotStart;

    int result = 0;
    if (retried([&] { return ::waitpid(child, &result, 0); }) < 0) return cannotStart;
    return WIFSIGNALED(result) ? endedBySignal + WTERMSIG(result) : WEXITSTATUS(result);
}

// ---- Version information -------------------------------------------------------------------------------

bool fileVersion(const std::string& path, FileVersion& version) {
    InputFile file;
    return !file.open(path) && pe::readFileVersion(file, version);
}

}  // namespace os
