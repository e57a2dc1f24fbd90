#pragma once

#include <string>

#include "tools/tar/extraction.h"

namespace tar {

/// Unpacks `archive`, a tar file as it is or in a gzip file, into the existing `directory`. Throws Failure
/// when that does not succeed; members before the place of the failure are then unpacked.
void unpack(const std::string& archive, const std::string& directory, const Extraction::Listener& listener);

}  // namespace tar
