#pragma once

#include <cstddef>

/// Puts into `buffer` (of `capacity` characters) where a file is installed on `platform` when its package
/// names no destination: "/user/" and `name` on "linux_arm7" and "linux_arm64".
///
/// Raises Ta::Exception on every other platform: "Default Destination for Windows Platform is Not Supported"
/// on "win", status -984 without a message otherwise. "ombix" raises too, after its path has gone into the
/// buffer. A path that does not fit raises before that.
void TaVekUtils_GetDefaultDestination(const char* platform, const char* name, char* buffer,
                                      std::size_t capacity);
