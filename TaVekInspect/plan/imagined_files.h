#pragma once

#include <set>
#include <string>
#include <system_error>

#include "TaVekUtil/archive/installation_files.h"

/// The files on disk and, on top of them, changes that are not made: what the tool would do to an
/// installation directory is only remembered, so that later steps find it done.
class ImaginedFiles : public InstallationFiles {
  public:
    zStatus findDirectory(const char* path) override;
    zStatus createDirectory(const char* path) override;
    zStatus copyFile(const char* source, const char* destination) override;
    zStatus deleteFile(const char* path) override;

    /// True when a file `path` is there, or would be.
    bool fileExists(const std::string& path) const;

    /// Files that were copied so far.
    std::size_t copies() const { return copies_; }

  private:
    bool directoryExists(const std::string& path) { return findDirectory(path.c_str()) == zStatus_Success; }

    std::set<std::string> directories_;  // made
    std::set<std::string> files_;        // made
    std::set<std::string> deleted_;      // there and gone
    std::size_t copies_ = 0;
};

/// Whether a file could be written as `path`: its directory must be there and writable, and it must be no
/// directory. Leaves a detail when not.
zStatus checkTarget(const std::string& path);
