#pragma once

#include <cstddef>

#include "platform/base/allocator.h"
#include "platform/base/status.h"

/// Operations on whole files. A path is UTF-8 and may use either separator. Failures answer zStatus_NotFound
/// when there is no such file and zStatus_IoError for whatever else the system refuses.

/// Reads the file `path` whole into a new block of `allocator` (null: the application allocator), which then
/// belongs to the caller; `size` is its length in bytes, a zero byte that does not count stands behind them.
/// `data` is null after a failure.
zStatus zFile_Load(const char* path, void** data, std::size_t* size, const zAllocator* allocator);

/// Copies the file `source` to `destination`, replacing what is there. The copy appears complete or not at
/// all and is on disk when the call returns; a replaced file's permissions are kept, a new file gets those of
/// `source`.
zStatus zFile_Copy(const char* source, const char* destination);

/// Removes the file `path`, never a directory. zStatus_NotFound when it does not exist.
zStatus zFile_Delete(const char* path);

/// True when `one` and `other` name the same plain file, by whatever name or link. False also when that
/// cannot be told, for `one` may not be read.
bool zFile_IsSame(const char* one, const char* other);

/// Writes `size` bytes to the file `path`, replacing what is there, complete or not at all.
zStatus zFile_Save(const char* path, const void* data, std::size_t size);
