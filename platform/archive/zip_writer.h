#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/archive/member_table.h"
#include "platform/archive/output_stream.h"
#include "platform/archive/zip_member_data.h"

namespace zip {

/// Writes an archive from front to back: every member, the central directory, the end records.
class Writer {
  public:
    /// Carried members come from `file`, whose directory lies at `directory`.
    Writer(const SourceFile& file, DirectoryPlace directory, OutputStream& output)
        : file_(file), reader_(file, directory), data_(file, reader_.members()), output_(output) {}

    /// Writes everything but does not commit.
    zStatus write(MemberTable& members, const std::string& comment);

    /// Where the central directory lies in what was written.
    DirectoryPlace directory() const { return written_; }

    /// Offset of each member's central header in what was written, in the order of the members.
    const std::vector<std::uint64_t>& centralOffsets() const { return offsets_; }

  private:
    zStatus writeMember(MemberTable& members, Member& member);
    zStatus writeCarried(std::string_view name, std::uint64_t origin);
    zStatus writeAdded(std::string_view name, Content& content);
    zStatus writeCentral(MemberTable& members, Member& member, std::uint64_t localOffset);
    zStatus writeCarriedCentral(std::string_view name, std::uint64_t origin, std::uint64_t localOffset);
    zStatus writeAddedCentral(std::string_view name, const Content& content, std::uint64_t localOffset);
    zStatus writeEnd(const std::string& comment);

    const SourceFile& file_;
    EntryReader reader_;
    MemberData data_;
    OutputStream& output_;
    DirectoryPlace written_;
    std::vector<std::uint8_t> header_;    // the central one at hand
    std::vector<std::uint64_t> offsets_;  // of local headers at first, then of central ones
    // The central headers are read twice, for their checksums and for copying them: both must be the same.
    std::uint32_t firstReading_ = 0;
    std::uint32_t secondReading_ = 0;
};

}  // namespace zip
