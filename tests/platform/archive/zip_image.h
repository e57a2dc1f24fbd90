#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// ZIP files put together field by field, so that a test can say what is wrong with one. Nothing here is
/// checked or computed by the code under test.
namespace testing {

/// The low `width` bytes of `value`, lowest first.
std::string number(std::uint64_t value, unsigned width);
/// A record of an extra field.
std::string extraRecord(std::uint16_t id, const std::string& content);
/// CRC-32, bit by bit.
std::uint32_t crcOf(const std::string& bytes);

inline constexpr std::uint64_t allOnes16 = 0xFFFF, allOnes32 = 0xFFFFFFFF;
inline constexpr std::uint16_t zip64Id = 1;
inline constexpr std::uint64_t encryptedFlag = 1, descriptorFlag = 8, utf8Flag = 0x800;

/// The fields that the local and the central header both have.
struct ZipFields {
    std::uint64_t needed = 10, flags = 0, method = 0, time = 0x58214A3C, crc = 0, compressedSize = 0,
                  size = 0;
    std::string name, extra;
};

struct ZipMember {
    std::string slack;  ///< In front of the local header.
    std::uint64_t localSignature = 0x04034b50;
    ZipFields local;
    std::string data;
    std::string descriptor;

    std::uint64_t centralSignature = 0x02014b50;
    std::uint64_t madeBy = 0x031E, disk = 0, internal = 0, external = 0x81A40000;
    ZipFields central;
    std::optional<std::uint64_t> offset;  ///< Instead of the true one.
    std::string comment;

    /// Both sets of fields, for what is to be the same in them.
    template <typename Change>
    ZipMember& both(Change change) {
        change(local);
        change(central);
        return *this;
    }
    std::string localRecord() const;
    std::string centralRecord(std::uint64_t trueOffset) const;
};

ZipMember stored(const std::string& name, const std::string& content);
/// `content` packed into one block of fixed codes.
ZipMember deflated(const std::string& name, const std::string& content);
/// A deflated member of any stream, said to decode to `content`.
ZipMember packed(const std::string& name, const std::string& stream, const std::string& content);
/// Moves the sizes and the checksum from the local header into a data descriptor behind the data.
ZipMember streamed(ZipMember member, unsigned width = 4, bool isSigned = true);

/// Numbers of an end record that are to stand there instead of the true ones.
struct ZipNumbers {
    std::optional<std::uint64_t> disk{}, directoryDisk{}, countHere{}, count{}, directorySize{},
        directoryOffset{};
};

/// The ZIP64 end record and its locator.
struct Zip64End {
    ZipNumbers stated;
    std::uint64_t signature = 0x06064b50;
    std::optional<std::uint64_t> recordSize;
    std::string extension;
    std::optional<std::uint64_t> locatorOffset;
    std::uint64_t locatorDisk = 0, disks = 1;
};

/// A whole archive. (Every member has its initialiser, for a warning asks for them where only some are
/// given.)
struct ZipImage {
    std::string prefix{};
    std::vector<ZipMember> members{};
    std::vector<std::size_t> directoryOrder{};  ///< Indices of members; empty: as they lie.
    std::string beforeDirectory{}, behindDirectory{};
    std::optional<Zip64End> zip64{};
    ZipNumbers end{};
    std::string comment{};
    std::optional<std::uint64_t> commentLength{};

    std::string bytes() const;
};

}  // namespace testing
