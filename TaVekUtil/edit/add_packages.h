#pragma once

#include <vector>

#include "TaVekUtil/archive/archive_extended.h"
#include "TaVekUtil/edit/addon_package.h"

/// Installs every package of `packages` that was built for the archive's host version (or for "*"): its files
/// for the archive's platform, then its entry in the unified manifest. A package of another version is
/// skipped with two lines on standard error. Nothing is saved, except what is copied into an installation
/// directory.
///
/// Answers 1 when at least one file was installed, else 0. Raises Ta::Exception.
int TaVekUtils_AddPackages(ArchiveExtended archive, const std::vector<AddonPackage>& packages);
