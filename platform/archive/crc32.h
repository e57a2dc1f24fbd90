#pragma once

#include <cstddef>
#include <cstdint>

/// CRC-32 as ZIP and Ethernet know it (polynomial 0x04C11DB7, bits reflected, inverted before and after).
namespace checksum {

/// The CRC-32 of what `crc` was computed of, followed by `size` bytes at `bytes`; 0 is that of nothing.
/// Picks the fastest way this processor has.
std::uint32_t update(std::uint32_t crc, const void* bytes, std::size_t size);

// The ways themselves, for tests and benchmarks.
using Function = std::uint32_t (*)(std::uint32_t crc, const void* bytes, std::size_t size);

/// Eight table look-ups for eight bytes; runs everywhere.
std::uint32_t updatePortable(std::uint32_t crc, const void* bytes, std::size_t size);

/// Carry-less multiplication; null where the processor (or this build) does not have it.
Function accelerated();

}  // namespace checksum
