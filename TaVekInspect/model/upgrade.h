#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TaVekInspect/model/finding.h"
#include "TaVekUtil/archive/archive_extended.h"
#include "platform/archive/members.h"

/// One entry of the start-up script.
struct ScriptEntry {
    std::string name;
    std::string source;                    ///< The member it installs.
    std::vector<std::string> controllers;  ///< Models that it is restricted to; none means all.
    bool isComplete = true;                ///< False when it lacks its name or its source.

    bool operator==(const ScriptEntry&) const = default;
};

/// One file of an installed package, as the unified manifest records it.
struct RecordedFile {
    std::string type;
    std::string source;
    std::string destination;  ///< As recorded; empty for the platform's default.

    bool operator==(const RecordedFile&) const = default;
};

/// One package that the unified manifest records.
struct RecordedPackage {
    std::string name;
    std::vector<RecordedFile> files;

    bool operator==(const RecordedPackage&) const = default;
};

/// An upgrade archive, or the host installation directory that stands in its place, as far as it could be
/// read with the tool's own operations.
struct Upgrade {
    std::string path;
    ArchiveExtended handles;  ///< The container and the manifest, as the tool holds them.
    bool isOpen = false;      ///< False when `path` names neither; then `problems` says why.
    std::string hostVersion;  ///< Of the start-up script or the host executable; "" when there is none.
    bool hasScript = false;
    bool hasManifest = false;  ///< False: the tool would build a fresh one.
    std::string manifestVersion;
    std::string manifestPlatform;
    std::vector<zMemberInfo> members;  ///< None for an installation directory.
    std::vector<ScriptEntry> entries;
    std::vector<RecordedPackage> packages;
    Findings problems;  ///< What could not be read.

    const std::string& platform() const { return handles.platform; }
    bool isInstallation() const { return handles.isInstallation(); }
};

/// What the names of the members of packages begin with.
inline constexpr const char* packageMemberPrefix = "data/12345-";

/// Reads the archive or installation directory `path`.
Upgrade readUpgrade(const std::string& path);

/// What `handles`, opened and perhaps edited by the tool's operations, holds now.
Upgrade readUpgrade(const ArchiveExtended& handles);

/// The packages that the unified manifest `manifest` records.
std::vector<RecordedPackage> readPackages(zHandle manifest);

/// Where `file` is installed on `platform`: its destination, or the default for its file name. "" when the
/// platform has no default.
std::string destinationOf(const RecordedFile& file, const std::string& platform);

/// The last component of a path, whichever separator is used.
std::string fileNameOf(const std::string& path);

/// What `exception`, just caught, says, without the tool's own place when the failed operation left a detail.
std::string reasonOf(const Ta::Exception& exception, const std::string& path);

/// The detail of the last failure without "PATH: " in front, or the phrase for `status`.
std::string reasonOf(zStatus status, const std::string& path);
