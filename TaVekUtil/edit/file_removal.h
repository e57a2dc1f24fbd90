#pragma once

#include "TaVekUtil/archive/archive_extended.h"
#include "platform/xml/xml.h"

/// Removes the files that a package installed: those of the children of its `VekApp` element `vekAppEntry` in
/// `manifest` that are of type "VekApp" or "Resource" in any letter case. A file without a destination is
/// looked for at the default destination of `packageName`, which is not where adding it has put it. What
/// TaVekUtil_RemoveFile and TaVekUtils_GetDefaultDestination raise ends the walk.
void TaVekUtil_RemovePackageFiles(ArchiveExtended archive, zHandle manifest, zXmlItem vekAppEntry,
                                  const char* platform, const char* packageName);

/// Removes one file. On "win", `destination` is relative to the installation directory, and a file that is
/// gone already gets a line on standard output. Elsewhere it is the name of a script entry, which goes
/// together with the member it names; none of that name is passed over in silence. Raises Ta::Exception,
/// after one line on standard error.
void TaVekUtil_RemoveFile(ArchiveExtended archive, const char* destination);
