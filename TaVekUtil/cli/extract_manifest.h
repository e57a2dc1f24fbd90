#pragma once

#include <string>

/// The manifest mode: writes the unified manifest of the archive or installation directory `archivePath` to
/// the file `outputName`, taken exactly as typed. The archive is not changed; an `outputName` that names it
/// is refused.
///
/// Answers 0, or 1 after reporting a Ta::Exception on standard error.
int extractManifest(const char* archivePath, std::string outputName);
