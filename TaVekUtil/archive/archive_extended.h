#pragma once

#include <string>

#include "TaVekUtil/archive/installation_files.h"
#include "platform/base/object.h"

/// One upgrade archive opened for editing, or the host installation directory that stands in its place for
/// platform "win". Copies share the container and the manifest, so an edit through a copy reaches them all.
class ArchiveExtended {
  public:
    /// Opens `path`, finds out its platform and loads or creates its manifest. Loaded once.
    ///
    /// Raises Ta::Exception: "Path not found: " and the path when it names nothing, "Invalid Archive Path: "
    /// and the path for what is neither an archive nor an installation directory, and what the probes
    /// (archive_probes.h) and the manifest (unified_manifest.h) raise. `path` is set in any case.
    void Load(const char* path);

    /// The host software version that the manifest states (`BeVersion`). Raises Ta::Exception when it is
    /// missing or has more than 127 characters.
    std::string Version() const;

    /// zStatus_BadArgument when `output` is the archive itself, by another name or through a link: writing
    /// there would change what must stay as it is.
    zStatus CheckOutput(const char* output) const;

    /// True when an installation directory stands in the archive's place.
    bool isInstallation() const { return platform == "win"; }

    Ta::Object<void*> archive;   ///< The container; constructed but empty for platform "win".
    Ta::Object<void*> manifest;  ///< The unified manifest document.
    std::string path;            ///< As given to Load: the archive file or the installation directory.
    std::string platform;        ///< "linux_arm7", "linux_arm64", "ombix" or "win".

    /// Through which the files of an installation directory are changed. Never null.
    InstallationFiles* files = &InstallationFiles::onDisk();
};
