#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// The records of a ZIP file (PKWARE APPNOTE 6.3.9): their signatures, sizes and where their fields lie. All
/// numbers are little-endian. docs/container.md draws each record.
namespace zip {

inline std::uint16_t get16(const std::uint8_t* at) {
    return static_cast<std::uint16_t>(at[0] | at[1] << 8);
}
inline std::uint32_t get32(const std::uint8_t* at) {
    return get16(at) | static_cast<std::uint32_t>(get16(at + 2)) << 16;
}
inline std::uint64_t get64(const std::uint8_t* at) {
    return get32(at) | static_cast<std::uint64_t>(get32(at + 4)) << 32;
}

/// Writes the low `bytes` bytes of `value` at `at`.
inline void put(std::uint8_t* at, std::uint64_t value, unsigned bytes) {
    for (unsigned i = 0; i < bytes; ++i) at[i] = static_cast<std::uint8_t>(value >> (8 * i));
}
inline void put16(std::uint8_t* at, std::uint64_t value) {
    put(at, value, 2);
}
inline void put32(std::uint8_t* at, std::uint64_t value) {
    put(at, value, 4);
}
inline void put64(std::uint8_t* at, std::uint64_t value) {
    put(at, value, 8);
}

// Values that stand for "see the ZIP64 record".
inline constexpr std::uint16_t mark16 = 0xFFFF;
inline constexpr std::uint32_t mark32 = 0xFFFFFFFF;

/// What the plain field says of `value`: itself, or the mark when it does not fit below it.
inline std::uint32_t plain32(std::uint64_t value) {
    return value >= mark32 ? mark32 : static_cast<std::uint32_t>(value);
}
inline std::uint16_t plain16(std::uint64_t value) {
    return value >= mark16 ? mark16 : static_cast<std::uint16_t>(value);
}

/// The run of fields that the local and the central header share, in the same layout.
namespace common {
inline constexpr std::size_t needed = 0, flags = 2, method = 4, time = 6, crc = 10, compressedSize = 14,
                             size = 18, nameLength = 22, extraLength = 24;
}

namespace local {
inline constexpr std::uint32_t signature = 0x04034b50;
inline constexpr std::size_t shared = 4, fixedSize = 30;
}  // namespace local

namespace central {
inline constexpr std::uint32_t signature = 0x02014b50;
inline constexpr std::size_t madeBy = 4, shared = 6, commentLength = 32, disk = 34, externalAttributes = 38,
                             localOffset = 42, fixedSize = 46;
}  // namespace central

namespace descriptor {
inline constexpr std::uint32_t signature = 0x08074b50;
}

namespace end {
inline constexpr std::uint32_t signature = 0x06054b50;
inline constexpr std::size_t disk = 4, directoryDisk = 6, countHere = 8, count = 10, directorySize = 12,
                             directoryOffset = 16, commentLength = 20, fixedSize = 22;
}  // namespace end

namespace end64 {
inline constexpr std::uint32_t signature = 0x06064b50;
/// The record's own size field does not count itself and what stands before it.
inline constexpr std::size_t recordSize = 4, uncounted = 12;
inline constexpr std::size_t madeBy = 12, needed = 14, disk = 16, directoryDisk = 20, countHere = 24,
                             count = 32, directorySize = 40, directoryOffset = 48, fixedSize = 56;
}  // namespace end64

namespace locator {
inline constexpr std::uint32_t signature = 0x07064b50;
inline constexpr std::size_t disk = 4, recordOffset = 8, disks = 16, fixedSize = 20;
}  // namespace locator

namespace extra {
inline constexpr std::size_t headerSize = 4;
inline constexpr std::uint16_t zip64 = 0x0001;
}  // namespace extra

namespace flag {
inline constexpr std::uint16_t encrypted = 1 << 0, descriptorFollows = 1 << 3, utf8 = 1 << 11;
}

namespace method {
inline constexpr std::uint16_t stored = 0, deflated = 8;
}

inline constexpr std::size_t longestText = 0xFFFF;  // of a name, an extra field or a comment

// What added members carry.
inline constexpr std::uint16_t version10 = 10, version45 = 45;    // stored; with ZIP64
inline constexpr std::uint16_t madeByUnix = 3 << 8 | version45;   // host Unix, format version 4.5
inline constexpr std::uint32_t fixedTime = 0x00210000;            // 1980-01-01 00:00:00
inline constexpr std::uint32_t regularFile0644 = 0100644u << 16;  // Unix mode in the external attributes

}  // namespace zip
