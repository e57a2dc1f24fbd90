#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/status.h"
#include "platform/os/os.h"

/// The file that a container was loaded from, and how to complain about it.
class SourceFile {
  public:
    /// Opens a plain file; anything else is refused.
    zStatus open(const std::string& path);
    /// Opens the file anew at `path`, after close(); it must have `size` bytes.
    zStatus reopen(const std::string& path, std::uint64_t size);
    void close() { file_.close(); }

    bool isOpen() const { return file_.isOpen(); }
    bool isSameFileAs(const std::string& path) const { return isOpen() && file_.isSameFileAs(path); }
    const std::string& path() const { return path_; }
    /// Size when the file was opened.
    std::uint64_t size() const { return size_; }

    /// Reads exactly `size` bytes at `offset`.
    zStatus read(std::uint64_t offset, void* bytes, std::size_t size) const;

    /// Records "PATH: fault", and answers zStatus_Malformed.
    zStatus refuse(std::string_view fault) const;
    /// Records "PATH: member NAME: fault", and answers `status`.
    zStatus refuseMember(std::string_view name, std::string_view fault,
                         zStatus status = zStatus_Malformed) const;

  private:
    os::InputFile file_;
    std::string path_;
    std::uint64_t size_ = 0;
};

/// A view of the file that moves along with small reads: these cost a copy, not a system call each. It reads
/// little ahead after a jump and ever more on a straight way.
class FileWindow {
  public:
    explicit FileWindow(const SourceFile& file) : file_(file) {}

    /// Makes the `size` bytes at `offset`, which the file has, visible at `bytes` until the next call.
    zStatus view(std::uint64_t offset, std::size_t size, const std::uint8_t*& bytes);

    /// Copies the `size` bytes at `offset`, which the file has, to `bytes`; large pieces straight from the
    /// file.
    zStatus copy(std::uint64_t offset, std::size_t size, std::uint8_t* bytes);

  private:
    bool holds(std::uint64_t offset, std::size_t size) const;
    std::uint64_t end() const { return begin_ + held_; }

    const SourceFile& file_;
    std::vector<std::uint8_t> buffer_;
    std::uint64_t begin_ = 0;  // of what the buffer holds, in the file
    std::size_t held_ = 0;
    std::size_t ahead_ = 0;
};
