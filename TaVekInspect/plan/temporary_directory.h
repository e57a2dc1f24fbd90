#pragma once

#include <string>

/// A new directory among the system's temporary files, for this user alone; it goes, with everything in it,
/// when the object goes.
class TemporaryDirectory {
  public:
    /// Throws std::filesystem::filesystem_error when it cannot be made.
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// The path of `name` in the directory; separators are `/`.
    std::string path(const std::string& name) const { return path_ + '/' + name; }

  private:
    std::string path_;
};
