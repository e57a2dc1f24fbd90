#pragma once

#include <functional>
#include <span>

#include "tools/tar/byte_source.h"

namespace tar {

/// True when the next bytes of `source` begin a gzip file; takes none of them.
bool isGzip(ByteSource& source);

using ByteTaker = std::function<void(std::span<const std::uint8_t>)>;

/// Hands everything that the gzip file (RFC 1952) in `source` holds to `take`, in pieces: one member after
/// the other, zero bytes behind the last one allowed. Throws Failure when it is damaged: header, stream,
/// checksum or length.
void unzip(ByteSource& source, const ByteTaker& take);

}  // namespace tar
