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

// The steps of it, for whoever wants to go on where it would end.

/// True when `package` was built for the archive's host version, or for "*"; otherwise two lines on standard
/// error. Raises Ta::Exception.
bool TaVekUtils_FitsVersion(const ArchiveExtended& archive, const AddonPackage& package);

/// Where a file of a package comes from and where it goes.
struct Installation {
    Ta::PathText path;
    Ta::PathText member;       ///< "data/12345-" and the file's name; of no meaning on "win".
    Ta::PathText destination;  ///< The default where the package names none.
};

/// What installing `file` means. Raises Ta::Exception.
Installation TaVekUtils_PlanInstallation(const PackageFile& file);

/// Installs `file` when it is for the archive's platform; answers false when it is not. Raises Ta::Exception.
bool TaVekUtils_InstallFile(const ArchiveExtended& archive, const PackageFile& file);
