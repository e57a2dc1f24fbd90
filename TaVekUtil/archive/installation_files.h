#pragma once

#include "platform/base/status.h"

/// What is done to the files of a host installation directory. The tool does it on disk; a program that only
/// foretells a run puts its own in place (`ArchiveExtended::files`).
class InstallationFiles {
  public:
    virtual ~InstallationFiles() = default;

    /// The operations of platform/base with those names.
    virtual zStatus findDirectory(const char* path) = 0;
    virtual zStatus createDirectory(const char* path) = 0;
    virtual zStatus copyFile(const char* source, const char* destination) = 0;
    virtual zStatus deleteFile(const char* path) = 0;

    /// The files on disk. Lives as long as the process.
    static InstallationFiles& onDisk();
};
