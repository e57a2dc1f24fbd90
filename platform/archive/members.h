#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/object.h"
#include "platform/base/status.h"

/// Looking at a container's members without handling their bytes: what its directory says of each, and
/// whether each is sound. None of these operations changes the container, and none throws.

/// When a member was last changed, as the archive states it; to two seconds, in no stated time zone.
struct zMemberTime {
    unsigned year = 1980, month = 1, day = 1;
    unsigned hour = 0, minute = 0, second = 0;

    bool operator==(const zMemberTime&) const = default;
};

/// What the archive says of one member.
struct zMemberInfo {
    std::string name;
    std::uint64_t size = 0;        ///< Bytes of content.
    std::uint64_t packedSize = 0;  ///< Bytes that it takes in the archive, headers not counted.
    std::uint32_t crc = 0;
    std::uint16_t method = 0;  ///< 0 stored, 8 deflated; other methods are not read.
    bool encrypted = false;
    zMemberTime time;

    bool operator==(const zMemberInfo&) const = default;
};

/// Appends to `members` what is known of each member, in their order. An added member is described as a save
/// would write it.
zStatus zArchive_Members(zHandle archive, std::vector<zMemberInfo>& members);

/// Decodes the member `name` and checks its size and checksum, in memory that does not depend on its length.
/// zStatus_NotFound when there is none; zStatus_Malformed when it is damaged; zStatus_Unsupported for a
/// method that is not read or an encrypted one.
zStatus zArchive_VerifyMember(zHandle archive, const char* name);

/// Does everything that zArchive_Save does but write: reads and checks every member. Answers what saving
/// would, as far as it does not depend on the target.
zStatus zArchive_TrySave(zHandle archive);
