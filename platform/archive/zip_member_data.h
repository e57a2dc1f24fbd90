#pragma once

#include <memory>

#include "platform/archive/content.h"
#include "platform/archive/inflate.h"
#include "platform/archive/output_stream.h"
#include "platform/archive/zip_entry.h"

namespace zip {

/// Moves the data of members, decoding and checking it on the way, whatever its length in constant memory.
class MemberData {
  public:
    MemberData(const SourceFile& file, FileWindow& window) : file_(file), window_(window) {}

    /// Copies the compressed bytes of `entry` to `output`. Those of a readable member are decoded as they
    /// pass: a stream, a size or a checksum that is not as told fails.
    zStatus carry(const Entry& entry, OutputStream& output);

    /// zStatus_Unsupported, with the reason, for a member that cannot be decoded.
    zStatus requireReadable(const Entry& entry) const;

    /// Decodes a member into `bytes`. zStatus_Unsupported for one that is not readable.
    zStatus decode(const Entry& entry, const zAllocator* allocator, Block& bytes);

  private:
    zStatus pass(const Entry& entry, OutputStream& output, std::uint8_t* decoded);

    const SourceFile& file_;
    FileWindow& window_;
    std::unique_ptr<inflation::Inflater> inflater_;  // made for the first deflated member
};

}  // namespace zip
