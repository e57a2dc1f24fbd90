#pragma once

#include <cstdint>
#include <string>

#include "platform/archive/member_table.h"
#include "platform/archive/zip_entry.h"

namespace zip {

/// What the records at the end of an archive say.
struct Ending {
    DirectoryPlace directory;
    std::uint64_t count = 0;  ///< Of members.
    std::string comment;      ///< Of the archive.
};

/// Finds the end records, which must be the last thing in the file and agree with each other.
zStatus readEnding(const SourceFile& file, Ending& ending);

/// Appends every member to the empty `members`, with the offset of its central header as origin, after
/// checking all of them: each for itself, that no two overlap, and that their number and length are as told.
zStatus readDirectory(const SourceFile& file, const Ending& ending, MemberTable& members);

}  // namespace zip
