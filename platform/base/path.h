#pragma once

#include <cstddef>

#include "platform/base/status.h"

/// Operations on the text of paths; none looks at the file system. `/` and `\` both separate components, on
/// every system. Results go into a buffer of the caller, which may be the one that an input lies in; one that
/// does not fit answers zStatus_DoesNotFit and leaves the buffer empty. An empty answer is a success.

/// Joins two paths. An empty side gives the other one; otherwise all separators at the end of `first` and the
/// start of `second` are replaced by one of the system's own ("host\" and "/a" give "host/a", on Windows
/// "host\a").
zStatus zPath_Combine(const char* first, const char* second, char* destination, std::size_t capacity);

/// What stands before the last separator: "a" of "a/b", "" of "b"; a root is kept: "/" of "/x".
zStatus zPath_Directory(const char* path, char* destination, std::size_t capacity);

/// What stands behind the last separator: "b.so" of "a/b.so", "" of "a/".
zStatus zPath_FileName(const char* path, char* destination, std::size_t capacity);

/// What stands behind the last dot of the file name: "so" of "a/b.so", "" of "b" and of ".profile".
zStatus zPath_Extension(const char* path, char* destination, std::size_t capacity);

/// The path without its extension and that one's dot: "a/b.tar" of "a/b.tar.gz".
zStatus zPath_StripExtension(const char* path, char* destination, std::size_t capacity);

/// True for a path that begins with a separator, on Windows also with a drive letter and a colon.
bool zPath_IsAbsolute(const char* path);
