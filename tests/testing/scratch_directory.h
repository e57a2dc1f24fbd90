#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace testing {

/// A new empty directory that is removed with everything in it when the object goes.
class ScratchDirectory {
  public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    /// The directory's path, or that of `name` in it; separators are `/`.
    std::string path(std::string_view name = "") const;

    /// Writes a file, making its directories; answers its path.
    std::string write(std::string_view name, std::string_view content) const;
    /// The content of the file `name`; fails the test when it cannot be read.
    std::string read(std::string_view name) const;
    bool exists(std::string_view name) const;
    /// Names of everything in the directory, hidden files too, sorted.
    std::vector<std::string> entries() const;

  private:
    std::string path_;
};

/// The whole content of the file `path`; fails the test when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace testing
