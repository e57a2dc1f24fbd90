#pragma once

#include <string>

/// What may be done to files, asked without doing it. The answer may be out of date when it is used.
namespace os {

/// False when the system would refuse to write the file `path` by way of a temporary file beside it, or to
/// remove it: for want of rights to its directory, on Windows because the file is marked read-only. Rights
/// are not looked at on Windows, nor are links followed.
bool mayReplace(const std::string& path);

}  // namespace os
