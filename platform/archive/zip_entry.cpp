#include "platform/archive/zip_entry.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zip {
namespace {

constexpr std::string_view lostEntry = "an entry of the central directory is missing or damaged";

std::string_view text(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

zStatus EntryReader::readCentral(std::uint64_t offset, Entry& entry) {
    const std::uint8_t* bytes = nullptr;
    if (offset > directory_.end || directory_.end - offset < central::fixedSize)
        return file_.refuse(lostEntry);
    zStatus status = centralWindow_.view(offset, central::fixedSize, bytes);
    if (status != zStatus_Success) return status;
    if (get32(bytes) != central::signature) return file_.refuse(lostEntry);

    const std::uint8_t* shared = bytes + central::shared;
    const std::size_t size = central::fixedSize + get16(shared + common::nameLength) +
                             get16(shared + common::extraLength) + get16(bytes + central::commentLength);
    if (directory_.end - offset < size) {
        return file_.refuse("an entry of the central directory reaches beyond its end");
    }
    status = centralWindow_.view(offset, size, bytes);
    if (status != zStatus_Success) return status;
    entry = {};
    entry.central = {bytes, size};
    return parseCentral(entry);
}

zStatus EntryReader::parseCentral(Entry& entry) {
    const std::uint8_t* bytes = entry.central.data();
    const std::uint8_t* shared = bytes + central::shared;
    const std::size_t nameLength = get16(shared + common::nameLength);
    entry.name = text(entry.central.subspan(central::fixedSize, nameLength));
    if (entry.name.empty()) return file_.refuse("a member without a name");
    if (entry.name.find('\0') != std::string_view::npos) {
        return file_.refuseMember(entry.name, "a zero byte in the name");
    }
    const auto extraBytes =
        entry.central.subspan(central::fixedSize + nameLength, get16(shared + common::extraLength));
    if (const char* fault = parseExtra(extraBytes, entry.centralExtra)) {
        return file_.refuseMember(entry.name, fault);
    }

    Zip64Values values(entry.centralExtra);
    entry.flags = get16(shared + common::flags);
    entry.method = get16(shared + common::method);
    entry.crc = get32(shared + common::crc);
    entry.size = values.wide(get32(shared + common::size));
    entry.compressedSize = values.wide(get32(shared + common::compressedSize));
    entry.localOffset = values.wide(get32(bytes + central::localOffset));
    const std::uint32_t disk = values.disk(get16(bytes + central::disk));
    if (values.tooShort()) return file_.refuseMember(entry.name, "the ZIP64 record is too short");
    if (disk != 0) return file_.refuseMember(entry.name, "the member lies on another disk");
    if (entry.method == method::stored && !entry.isEncrypted() && entry.compressedSize != entry.size) {
        return file_.refuseMember(entry.name, "stored, but its two sizes differ");
    }
    return zStatus_Success;
}

zStatus EntryReader::read(std::uint64_t offset, Entry& entry) {
    zStatus status = readCentral(offset, entry);
    if (status == zStatus_Success) status = readLocal(entry);
    if (status == zStatus_Success && (entry.flags & flag::descriptorFollows) != 0) {
        status = readDescriptor(entry);
    }
    return status;
}

zStatus EntryReader::readLocal(Entry& entry) {
    // Members lie before the directory. Every sum is checked before it is made.
    const std::uint64_t limit = directory_.begin;
    if (entry.localOffset > limit || limit - entry.localOffset < local::fixedSize) {
        return file_.refuseMember(entry.name, "its local header lies outside of the archive's members");
    }
    const std::uint8_t* bytes = nullptr;
    zStatus status = localWindow_.view(entry.localOffset, local::fixedSize, bytes);
    if (status != zStatus_Success) return status;
    if (get32(bytes) != local::signature) {
        return file_.refuseMember(entry.name, "no local header where the central directory points");
    }
    const std::size_t size = local::fixedSize + get16(bytes + local::shared + common::nameLength) +
                             get16(bytes + local::shared + common::extraLength);
    const std::uint64_t room = limit - entry.localOffset;
    if (room < size || room - size < entry.compressedSize) {
        return file_.refuseMember(entry.name, "its data reaches beyond the archive's members");
    }
    status = localWindow_.view(entry.localOffset, size, bytes);
    if (status != zStatus_Success) return status;
    entry.local = {bytes, size};
    const char* fault = compareLocal(entry);
    return fault == nullptr ? zStatus_Success : file_.refuseMember(entry.name, fault);
}

/// Null when the local header says what the central one says, else the difference.
const char* EntryReader::compareLocal(Entry& entry) const {
    const std::uint8_t* here = entry.local.data() + local::shared;
    const std::uint8_t* there = entry.central.data() + central::shared;
    const std::size_t nameLength = get16(here + common::nameLength);
    if (text(entry.local.subspan(local::fixedSize, nameLength)) != entry.name) {
        return "the local name differs from the central one";
    }
    if (get16(here + common::flags) != entry.flags) return "the local flags differ from the central ones";
    if (get16(here + common::method) != entry.method) return "the local method differs from the central one";
    if (get32(here + common::time) != get32(there + common::time)) {
        return "the local time differs from the central one";
    }
    ExtraField extraField;
    if (const char* fault = parseExtra(entry.local.subspan(local::fixedSize + nameLength), extraField)) {
        return fault;
    }
    entry.localHasZip64 = extraField.hasZip64;
    Zip64Values values(extraField);
    const std::uint64_t size = values.wide(get32(here + common::size));
    const std::uint64_t compressedSize = values.wide(get32(here + common::compressedSize));
    if (values.tooShort()) return "the local ZIP64 record is too short";
    // A writer that knew them only afterwards put zeros here, and the values into the data descriptor.
    const bool later = (entry.flags & flag::descriptorFollows) != 0;
    const auto differ = [later](std::uint64_t mine, std::uint64_t theirs) {
        return mine != theirs && !(later && mine == 0);
    };
    if (differ(get32(here + common::crc), entry.crc))
        return "the local checksum differs from the central one";
    if (differ(compressedSize, entry.compressedSize)) {
        return "the local compressed size differs from the central one";
    }
    if (differ(size, entry.size)) return "the local size differs from the central one";
    return nullptr;
}

/// Finds the data descriptor in the one of its four forms that fits: with or without a signature, sizes of
/// 4 or 8 bytes. Programs differ in when they choose which; a ZIP64 record in the local header asks for 8.
zStatus EntryReader::readDescriptor(Entry& entry) {
    constexpr std::size_t longest = 24;
    const auto available =
        static_cast<std::size_t>(std::min<std::uint64_t>(longest, directory_.begin - entry.dataEnd()));
    std::array<std::uint8_t, longest> bytes{};
    // The views of the local header must stay: its window is not moved.
    const zStatus status = file_.read(entry.dataEnd(), bytes.data(), available);
    if (status != zStatus_Success) return status;

    const std::array<unsigned, 2> widths = entry.localHasZip64 ? std::array{8u, 4u} : std::array{4u, 8u};
    for (const unsigned width : widths) {
        for (const bool isSigned : {true, false}) {
            std::array<std::uint8_t, longest> expected{};
            std::size_t size = 0;
            const auto append = [&](std::uint64_t value, unsigned valueWidth) {
                put(expected.data() + size, value, valueWidth);
                size += valueWidth;
            };
            if (isSigned) append(descriptor::signature, 4);
            append(entry.crc, 4);
            append(entry.compressedSize, width);
            append(entry.size, width);
            const bool fits = width == 8 || std::max(entry.size, entry.compressedSize) <= mark32;
            if (fits && size <= available && std::memcmp(expected.data(), bytes.data(), size) == 0) {
                entry.descriptorSize = size;
                return zStatus_Success;
            }
        }
    }
    return file_.refuseMember(entry.name, "the data descriptor differs from the central directory");
}

}  // namespace zip
