#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/os/os.h"

namespace tar {

constexpr std::size_t blockSize = 512;
using Block = std::array<std::uint8_t, blockSize>;

enum class Kind {
    file,
    directory,
    hardLink,
    symbolicLink,
    // What says something about the next member, or all of them:
    longName,
    longLink,
    extended,
    globallyExtended,
    /// A device, a part of another volume, a file with holes: nothing that this program unpacks.
    unsupported,
};

/// What an archive says of a member.
struct Member {
    std::string name;
    std::string link;  ///< what a link leads to
    Kind kind = Kind::file;
    std::uint64_t size = 0;  ///< bytes of content that follow
    unsigned mode = 0;       ///< permission bits
    os::Time time;           ///< of the last change
};

/// True for a block of zeros, with which archives end.
bool isEndMark(const Block& block);

/// True when the block's checksum is right, which it is in every header.
bool isHeader(const Block& block);

/// Reads a header of the old (V7), POSIX (ustar) or GNU kind, whose checksum is right. Throws Failure when a
/// number in it is none.
Member readHeader(const Block& block);

}  // namespace tar
