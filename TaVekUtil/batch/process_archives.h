#pragma once

#include <string>
#include <vector>

#include "TaVekUtil/archive/archive_extended.h"
#include "TaVekUtil/batch/build_config.h"

/// Processes every archive of `config.stockPackages` in order. The first failure ends the run, after one line
/// on standard error; archives saved before it stay. Raises Ta::Exception.
void TaVekUtil_ProcessStockPackages(const BuildConfig& config);

/// Removes the packages `names` from the archive `path`, adds `packages`, and when either changed anything
/// saves the archive with its manifest beside the input, under the output prefix of `config`; of an
/// installation directory the manifest file is written. Raises Ta::Exception, after one line on standard
/// error.
void TaVekUtil_ModifyVekPkgs(const std::vector<AddonPackage>& packages, const std::vector<std::string>& names,
                             const char* path, const BuildConfig& config);

// The steps of it, for whoever wants to know without saving.

/// An archive's path taken apart.
struct ArchivePlace {
    Ta::PathText directory;
    Ta::PathText fileName;
};

/// Raises Ta::Exception.
ArchivePlace TaVekUtil_SplitPath(const char* path);

/// Where the changed archive from `place` is saved. Raises Ta::Exception.
Ta::PathText TaVekUtil_OutputPath(const ArchivePlace& place, const BuildConfig& config);

/// Makes the manifest of `archive` a member of its container. Raises Ta::Exception.
void TaVekUtil_StoreManifest(const ArchiveExtended& archive);
