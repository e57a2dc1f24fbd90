#pragma once

#include <cstddef>

#include "platform/base/object.h"
#include "platform/base/status.h"

/// Operations on directories. A path is UTF-8 and may use either separator. Unless told otherwise, failures
/// answer zStatus_NotFound when there is no such directory and zStatus_IoError for whatever else the system
/// refuses.

/// The directory that holds the running program. One that does not fit into `capacity` characters, terminator
/// included, answers zStatus_DoesNotFit and leaves the buffer empty.
zStatus zDirectory_Application(char* destination, std::size_t capacity);

/// True when `path` names an existing directory.
bool zDirectory_Exists(const char* path);

/// Finds out whether `path` names an existing directory: zStatus_NotFound when it does not, zStatus_IoError
/// when that cannot be told.
zStatus zDirectory_Find(const char* path);

/// Creates the directory `path` with its missing parents; one that exists already is a success.
zStatus zDirectory_Create(const char* path);

/// Appends to `list` (a string list) the names of the plain files in `directory`, and of links to such,
/// sorted by byte value.
zStatus zDirectory_ListFiles(const char* directory, zHandle list);
