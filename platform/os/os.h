#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

/// Everything that differs between operating systems, implemented by the sources posix_*.cpp and
/// windows_*.cpp. Two small headers beside this one hold what TaVekInspect alone asks: access.h, terminal.h.
///
/// Paths are UTF-8 and may use `/` and `\` on every system. An operation that fails answers the system's
/// error code; `code == std::errc::no_such_file_or_directory` and the like compare alike on every system, and
/// what has the same meaning has the same English message.
/// Operations that take an out parameter leave it alone when they fail. Memory shortage throws
/// std::bad_alloc; nothing else is thrown.
namespace os {

// ---- Paths: what differs in their writing --------------------------------------------------------------

/// The separator that joined paths get: `\` on Windows, `/` elsewhere.
extern const char pathSeparator;

/// Length of the leading part of `path` that names a root: "/" of "/x"; on Windows also "C:\" of "C:\x" and
/// "C:" of "C:x". 0 for a path without one.
std::size_t rootLength(std::string_view path);

/// True when `path` begins with a separator or, on Windows, with a drive letter and a colon.
bool isAbsolute(std::string_view path);

// ---- What a path names ---------------------------------------------------------------------------------

enum class FileType { absent, regular, directory, other };

/// Finds out what `path` names, symbolic links followed. A path that names nothing is an answer (absent), not
/// an error; so is one that leads through something that is no directory.
[[nodiscard]] std::error_code fileType(const std::string& path, FileType& type);

// ---- Reading -------------------------------------------------------------------------------------------

/// A file opened for reading at any place. Others may read, rename and delete the file meanwhile. What
/// follows isOpen() here asks for an open file.
class InputFile {
  public:
    InputFile();
    ~InputFile();
    InputFile(InputFile&&) noexcept;
    InputFile& operator=(InputFile&&) noexcept;

    /// Opens `path` in the place of a file open so far, which stays open after a failure. A directory answers
    /// std::errc::is_a_directory.
    [[nodiscard]] std::error_code open(const std::string& path);
    void close();
    bool isOpen() const;

    /// Size in bytes at the time of opening; 0 for what has no size (a pipe, a device).
    std::uint64_t size() const;
    /// False for a pipe, a terminal and the like, which can only be read from front to back.
    bool isRegular() const;

    /// Reads up to `capacity` bytes at `offset` into `buffer`; `count` is less only at the end of the file.
    [[nodiscard]] std::error_code read(std::uint64_t offset, void* buffer, std::size_t capacity,
                                       std::size_t& count) const;
    /// Reads up to `capacity` bytes from where the last call ended; `count` is 0 only at the end.
    [[nodiscard]] std::error_code readNext(void* buffer, std::size_t capacity, std::size_t& count);

    /// True when `path` names this very file, by whatever name or link.
    bool isSameFileAs(const std::string& path) const;

  private:
    struct State;
    std::unique_ptr<State> state;
};

// ---- Writing -------------------------------------------------------------------------------------------

/// A file that appears complete or not at all. What is written goes to a temporary file beside the target
/// (`.` first, a short name of its own), which `commit` flushes to disk and renames over the target; an
/// object that goes without `commit` removes the temporary file. The order is one `open` that succeeds, any
/// number of `write`, one `commit`.
///
/// A symbolic link is followed, not replaced; the permissions of a replaced file are kept. A target that
/// exists and is no regular file (a pipe, a device) is written directly.
class OutputFile {
  public:
    OutputFile();
    ~OutputFile();
    OutputFile(OutputFile&&) noexcept;
    OutputFile& operator=(OutputFile&&) noexcept;

    /// Begins writing for `target` and gives up what was begun for another one, which after a failure goes
    /// on. A directory answers std::errc::is_a_directory.
    [[nodiscard]] std::error_code open(const std::string& target);
    /// Begins as `open`, and a target that is new gets the permission bits of `model`, less the umask.
    [[nodiscard]] std::error_code openLike(const std::string& target, const std::string& model);

    /// Appends `size` bytes, all of them or an error.
    [[nodiscard]] std::error_code write(const void* bytes, std::size_t size);

    /// Flushes the content to disk and puts it in the target's place, durably; in any case nothing is open
    /// afterwards. After a failure the target is what it was; only when the last step fails, flushing the new
    /// name, it is the new file. On Windows a target that somebody holds open in a way that forbids replacing
    /// it fails.
    [[nodiscard]] std::error_code commit();

  private:
    struct State;
    std::unique_ptr<State> state;
};

/// Removes the file `path`, never a directory (std::errc::is_a_directory).
[[nodiscard]] std::error_code removeFile(const std::string& path);

// ---- Directories ---------------------------------------------------------------------------------------

/// Creates `path` and its missing parents, durably; a directory that exists already is a success.
[[nodiscard]] std::error_code createDirectories(const std::string& path);

/// Appends to `names` the names of the plain files (and links to such) in `directory`, in no order. Links
/// that lead nowhere are left out; one of which that cannot be told is an error.
[[nodiscard]] std::error_code listFiles(const std::string& directory, std::vector<std::string>& names);

/// The directory that holds the running program.
[[nodiscard]] std::error_code applicationDirectory(std::string& directory);

// ---- Links, times, permissions ---------------------------------------------------------------------------

/// True when `name`, one component of a path, can be that of a file on this system. On Windows the names of
/// devices (also with an extension), characters that separate or stand for others (`:` of a stream among
/// them), a dot or space at the end and what is no UTF-8 cannot.
bool isFileName(std::string_view name);

/// Finds out whether `path` itself is a symbolic link (on Windows also a junction); what is not there is
/// none.
[[nodiscard]] std::error_code isLink(const std::string& path, bool& link);

/// Makes `path` a symbolic link that holds `destination`, which need not exist. Outside Windows the text is
/// kept as it is. Where the system makes no such links: std::errc::operation_not_supported.
[[nodiscard]] std::error_code createSymbolicLink(const std::string& destination, const std::string& path);

/// Makes `path` another name of the file `existing`; a symbolic link is not followed.
[[nodiscard]] std::error_code createHardLink(const std::string& existing, const std::string& path);

/// A time since the start of 1970 (UTC); the nanoseconds, 0 to 999999999, count forwards.
struct Time {
    std::int64_t seconds = 0;
    std::int32_t nanoseconds = 0;
};

/// Sets when the file, directory or symbolic link `path` (the link itself) was last changed, as finely as the
/// file system keeps it; a time that it cannot keep becomes the nearest one, or std::errc::invalid_argument.
[[nodiscard]] std::error_code setModificationTime(const std::string& path, Time time);

/// Gives `path` the permission bits `mode` (nine of them), less the umask. Nothing on Windows.
[[nodiscard]] std::error_code setPermissions(const std::string& path, unsigned mode);

// ---- Processes -----------------------------------------------------------------------------------------

/// The words of the command line as UTF-8, the program's name first.
std::vector<std::string> commandLine(int count, char** words);

/// Makes std::terminate end the process abnormally without a word of the runtime's own on any stream, and
/// on Windows without a message box. A limit on the size of files, where there are such, makes writing fail
/// from now on and no longer ends the process.
void silenceAbnormalEnd();

/// Unpacks `archive` into the existing `directory` with the tar program "tar.exe" in `programDirectory`, its
/// standard output silenced. Answers 0 when it succeeded.
///
/// Elsewhere than on Windows the program is started directly with an argument list, so no shell ever sees a
/// name; the answer is its exit status, 127 when it cannot be started, 128 and the signal's number when a
/// signal ended it. On Windows the command line
/// `""PROGRAMS/tar.exe" --force-local -C "DIRECTORY" -xvf "ARCHIVE"" > nul` runs through `system`.
int unpackTar(const std::string& programDirectory, const std::string& directory, const std::string& archive);

// ---- Version information -------------------------------------------------------------------------------

/// The four fields of a Windows file version, most significant first.
using FileVersion = std::array<std::uint16_t, 4>;

/// Reads the file version (not the product version) from the version resource of the Windows executable
/// `path`. False when there is no such file or no version information in it.
///
/// On Windows the system's version functions answer; elsewhere a bounded reader of the PE/COFF resource.
bool fileVersion(const std::string& path, FileVersion& version);

}  // namespace os
