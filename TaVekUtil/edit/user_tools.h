#pragma once

#include "TaVekUtil/archive/installation_files.h"

/// Copies the file `filePath` to `destination`, a path relative to the host installation directory
/// `installDirectory`, replacing what is there. A target directory that is missing is not made: the file is
/// skipped with a line on standard output. Raises Ta::Exception, after one line on standard error.
void TaVekUtil_InjectFile(const char* filePath, const char* destination, const char* installDirectory,
                          InstallationFiles& files = InstallationFiles::onDisk());
