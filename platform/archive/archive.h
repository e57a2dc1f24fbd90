#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/allocator.h"
#include "platform/base/object.h"
#include "platform/base/status.h"

/// The archive container: an ordered set of named members in a ZIP file (PKWARE APPNOTE 6.3.9), described
/// field by field in docs/container.md.
///
/// Names are zero-terminated, compare exactly and use forward slashes. An index names a member until the
/// container is next changed. Members that nobody looks into stay on disk: memory does not grow with the
/// archive, and the loaded file stays open until the container is destroyed or loaded anew. No operation
/// throws.

/// Creates the archive library object, which must exist before any container and be destroyed
/// (zObject_Destroy) after the last. With leak logging on, destroying it reports objects that are still
/// alive.
zStatus zTdLib_Construct(zHandle* library);

/// Creates an empty container, to be given back with zObject_Destroy.
zStatus zArchive_Construct(zHandle* archive, const zAllocator* allocator);

/// Replaces the container's content with the members of the file `path`. A failure leaves the container as it
/// was: zStatus_NotFound for a path that does not exist, zStatus_IoError for a directory or an unreadable
/// file, zStatus_Malformed or zStatus_Unsupported for a file that is no container or whose reading is not
/// safe; a plain file refused also gives a log entry "zArchive_Load: <detail>".
zStatus zArchive_Load(zHandle archive, const char* path);

/// Writes all members to `path`, replacing what is there, complete or not at all and durably; `path` may be
/// the loaded file. Carried members keep their compressed bytes and every field; the CRC-32 of each that can
/// be decoded is checked on the way, and a damaged one fails the save (zStatus_Malformed).
zStatus zArchive_Save(zHandle archive, const char* path);

/// Finds the member of exactly that name and gets its bytes ready, decoded and checked. zStatus_NotFound when
/// there is none; zStatus_Malformed when it is damaged; zStatus_Unsupported for a method that is not read or
/// an encrypted one.
zStatus zArchive_Find(zHandle archive, const char* name, std::int64_t* index);

/// Size in bytes of the member that a find has answered; 0 for any other index.
std::uint64_t zArchive_FileSize(zHandle archive, std::int64_t index);

/// The bytes of the member that a find has answered, followed by a zero byte. Owned by the container, valid
/// until it is changed or destroyed; null for any other index.
const void* zArchive_FileData(zHandle archive, std::int64_t index);

/// Appends a member with a copy of `size` bytes at `data`. A name that is taken already is refused with
/// zStatus_BadArgument, as are an empty one and one longer than the format allows. `options` must be 0.
zStatus zArchive_AddData(zHandle archive, const void* data, std::size_t size, const char* name, int options);

/// Removes the member `name`; a name that is not there is a success.
zStatus zArchive_DeleteFile(zHandle archive, const char* name);

// ---- Live members ---------------------------------------------------------------------------------------

/// Content that is edited in a richer form than bytes, a parsed document say: the container asks for the
/// bytes when somebody looks into the member or saves, not after each edit. So a thousand edits of one member
/// cost one serialisation.
class LiveContent {
  public:
    virtual ~LiveContent() = default;
    /// Puts the bytes as they are now into `bytes`. Answers 1, or the status of what went wrong.
    virtual zStatus serialise(std::string& bytes) const = 0;
};

/// Appends a member whose bytes `content` provides. Otherwise as zArchive_AddData.
zStatus zArchive_AddLive(zHandle archive, std::shared_ptr<LiveContent> content, const char* name);

/// The content of the live member `name`; empty when there is no such member or it is a plain one.
std::shared_ptr<LiveContent> zArchive_Live(zHandle archive, const char* name);
