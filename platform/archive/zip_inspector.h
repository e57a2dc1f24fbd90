#pragma once

#include <string_view>

#include "platform/archive/members.h"
#include "platform/archive/output_stream.h"
#include "platform/archive/zip_member_data.h"

namespace zip {

/// Looks at the members of a file one after the other, best in the order in which they lie there.
class Inspector {
  public:
    /// The members are those of `file`, whose directory lies at `directory`.
    Inspector(const SourceFile& file, DirectoryPlace directory)
        : file_(file), reader_(file, directory), data_(file, reader_.members()) {}

    /// Fills in all but the name from the central header at `origin`, which must be that of `name`.
    zStatus describe(std::string_view name, std::uint64_t origin, zMemberInfo& info);

    /// Decodes and checks the member `name`, whose central header lies at `origin`.
    zStatus verify(std::string_view name, std::uint64_t origin);

  private:
    zStatus requireName(const Entry& entry, std::string_view name) const;

    const SourceFile& file_;
    EntryReader reader_;
    MemberData data_;
    OutputStream nowhere_;
};

}  // namespace zip
