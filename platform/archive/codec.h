#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/archive/content.h"
#include "platform/archive/member_table.h"
#include "platform/archive/members.h"

/// A container format, and the file in it that a container was loaded from. The container itself knows
/// members, look-up and edits, and nothing of any format.
///
/// Operations answer a status and leave a detail (platform/base/failure.h); they may throw std::bad_alloc.
class Codec {
  public:
    virtual ~Codec() = default;

    /// Opens the file `path` and appends its members, in order, to the empty `members`. The file stays open.
    virtual zStatus load(const std::string& path, MemberTable& members) = 0;

    /// Decodes and checks the loaded member `name` at `origin` into a block of `allocator`.
    virtual zStatus read(std::string_view name, std::uint64_t origin, const zAllocator* allocator,
                         Block& bytes) = 0;

    /// Writes all members to the file `path`, checking those that are carried over from the loaded file. When
    /// `path` is the loaded file, origins are changed to where the members are now.
    virtual zStatus save(const std::string& path, MemberTable& members) = 0;

    /// Fills in `info`, all but its name, with what the file says of the loaded member `name` at `origin`.
    virtual zStatus describe(std::string_view name, std::uint64_t origin, zMemberInfo& info) = 0;

    /// Decodes and checks the loaded member `name` at `origin` in constant memory.
    virtual zStatus verify(std::string_view name, std::uint64_t origin) = 0;

    /// Does all that `save` does but write.
    virtual zStatus trySave(MemberTable& members) = 0;

    /// Most bytes that a member's name may have.
    virtual std::size_t longestName() const = 0;
};

/// A codec for ZIP files that no file is loaded into: its first save begins an archive.
std::unique_ptr<Codec> makeZipCodec();
