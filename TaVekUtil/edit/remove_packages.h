#pragma once

#include <string>
#include <vector>

#include "TaVekUtil/archive/archive_extended.h"

/// Removes every package of `names` from the archive: the files of each `VekApp` entry of just that name,
/// then, when all names are done, the entries themselves. Nothing is saved, except what is deleted from an
/// installation directory.
///
/// Answers 0 for an empty list, else 1. Raises Ta::Exception, -984 "Package %s not found in archive" for a
/// name that the manifest does not list.
int TaVekUtils_RemovePackages(ArchiveExtended archive, const std::vector<std::string>& names);
