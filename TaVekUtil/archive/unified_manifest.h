#pragma once

#include <string>

#include "platform/base/object.h"
#include "platform/base/status.h"

/// The unified manifest "vekPackages.xml": which host version and platform an archive or installation is for,
/// and which add-on packages it carries. Its format is told in docs/unified-manifest.md.

inline constexpr const char* manifestFileName = "vekPackages.xml";

/// Archive form: parses the member "vekPackages.xml" of the container `archive` into `manifest`, or builds a
/// fresh document (`VekAppPackage` with `BeVersion` and `Platform`) when there is no such member. `fileName`
/// is not used. Raises Ta::Exception.
void TaVekUtils_GetUnifiedManifest(zHandle archive, const std::string& fileName, Ta::Object<void*>& manifest);

/// Directory form: the same with the file "vekPackages.xml" in the installation directory `path`, whose host
/// version is that of its executable.
void TaVekUtils_GetUnifiedManifest(const std::string& path, Ta::Object<void*>& manifest);

/// The place of the manifest file in the installation directory `path`: joined by one backslash, even when
/// the path ends in a separator.
std::string installedManifestPath(const std::string& path);

/// Records the package of `packageManifest` in the unified manifest: a new last `VekApp` entry with copies of
/// the file entries of every platform element whose `name` begins with `platform`. Entries that the new name
/// replaces (TaVekUtils_RemoveVekAppEntries) go first. Answers 1 or the first failing status, leaving what
/// was done so far.
zStatus TaVekUtils_MergeVekApp(zHandle packageManifest, zHandle unifiedManifest, const char* platform);

/// Drops every `VekApp` entry whose `name` is a leading part of `packageName`: "abc" and "" go when "abcdef"
/// is merged. Answers 1 or the first failing status.
zStatus TaVekUtils_RemoveVekAppEntries(zHandle unifiedManifest, const char* packageName);
