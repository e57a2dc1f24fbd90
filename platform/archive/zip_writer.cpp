#include "platform/archive/zip_writer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/archive/crc32.h"
#include "platform/archive/zip_central.h"
#include "platform/base/failure.h"

namespace zip {
namespace {

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Fills in the fields that both headers of an added member share.
void putShared(std::uint8_t* at, std::string_view name, const Content& content, std::size_t extraLength,
               bool wide) {
    put16(at + common::needed, wide ? version45 : version10);
    put16(at + common::flags, isAscii(name) ? 0 : flag::utf8);
    put16(at + common::method, method::stored);
    put32(at + common::time, fixedTime);
    put32(at + common::crc, content.crc);
    put32(at + common::compressedSize, plain32(content.size()));
    put32(at + common::size, plain32(content.size()));
    put16(at + common::nameLength, name.size());
    put16(at + common::extraLength, extraLength);
}

/// A ZIP64 record under construction.
class Zip64Record {
  public:
    void append(std::uint64_t value) {
        put64(bytes_.data() + size_, value);
        size_ += 8;
    }
    /// The record with its header; nothing when it has no values.
    std::span<const std::uint8_t> bytes() {
        if (size_ == extra::headerSize) return {};
        put16(bytes_.data(), extra::zip64);
        put16(bytes_.data() + 2, size_ - extra::headerSize);
        return {bytes_.data(), size_};
    }

  private:
    std::array<std::uint8_t, extra::headerSize + 3 * sizeof(std::uint64_t)> bytes_{};
    std::size_t size_ = extra::headerSize;
};

bool isWide(std::uint64_t value) {
    return value >= mark32;
}

}  // namespace

zStatus Writer::write(MemberTable& members, const std::string& comment) {
    offsets_.reserve(members.count());
    for (std::size_t i = 0; i < members.places(); ++i) {
        Member* member = members.at(i);
        if (member == nullptr) continue;
        offsets_.push_back(output_.position());
        if (const zStatus status = writeMember(members, *member); status != zStatus_Success) return status;
    }
    written_.begin = output_.position();
    std::size_t next = 0;
    for (std::size_t i = 0; i < members.places(); ++i) {
        Member* member = members.at(i);
        if (member == nullptr) continue;
        const std::uint64_t localOffset = std::exchange(offsets_[next++], output_.position());
        const zStatus status = writeCentral(members, *member, localOffset);
        if (status != zStatus_Success) return status;
    }
    if (firstReading_ != secondReading_) {
        return failure::record(zStatus_IoError, file_.path() + ": the file was changed while it was read");
    }
    written_.end = output_.position();
    return writeEnd(comment);
}

// ---- Members -------------------------------------------------------------------------------------------

zStatus Writer::writeMember(MemberTable& members, Member& member) {
    const std::string_view name = members.nameOf(member);
    return member.isAdded() ? writeAdded(name, *member.content) : writeCarried(name, member.origin);
}

zStatus Writer::writeCarried(std::string_view name, std::uint64_t origin) {
    Entry entry;
    zStatus status = reader_.read(origin, entry);
    if (status != zStatus_Success) return status;
    if (entry.name != name) {
        return failure::record(zStatus_IoError, file_.path() + ": the file was changed while it was read");
    }
    firstReading_ = checksum::update(firstReading_, entry.central.data(), entry.central.size());
    status = output_.write(entry.local);
    if (status == zStatus_Success) status = data_.carry(entry, output_);
    if (status != zStatus_Success || entry.descriptorSize == 0) return status;
    const std::uint8_t* bytes = nullptr;
    status = reader_.members().view(entry.dataEnd(), entry.descriptorSize, bytes);
    return status == zStatus_Success ? output_.write({bytes, entry.descriptorSize}) : status;
}

zStatus Writer::writeAdded(std::string_view name, Content& content) {
    if (content.live) {
        if (const zStatus status = content.live->serialise(content.text); status != zStatus_Success)
            return status;
    }
    const std::span<const std::uint8_t> bytes(static_cast<const std::uint8_t*>(content.data()),
                                              content.size());
    content.crc = checksum::update(0, bytes.data(), bytes.size());

    Zip64Record record;
    if (isWide(bytes.size())) {
        // A local header has both sizes in its record, always.
        record.append(bytes.size());
        record.append(bytes.size());
    }
    const auto extraBytes = record.bytes();
    std::array<std::uint8_t, local::fixedSize> header{};
    put32(header.data(), local::signature);
    putShared(header.data() + local::shared, name, content, extraBytes.size(), !extraBytes.empty());
    for (const auto part : {std::span<const std::uint8_t>(header), asBytes(name), extraBytes, bytes}) {
        if (const zStatus status = output_.write(part); status != zStatus_Success) return status;
    }
    return zStatus_Success;
}

// ---- The central directory -----------------------------------------------------------------------------

zStatus Writer::writeCentral(MemberTable& members, Member& member, std::uint64_t localOffset) {
    const std::string_view name = members.nameOf(member);
    return member.isAdded() ? writeAddedCentral(name, *member.content, localOffset)
                            : writeCarriedCentral(name, member.origin, localOffset);
}

zStatus Writer::writeCarriedCentral(std::string_view name, std::uint64_t origin, std::uint64_t localOffset) {
    Entry entry;
    if (const zStatus status = reader_.readCentral(origin, entry); status != zStatus_Success) return status;
    secondReading_ = checksum::update(secondReading_, entry.central.data(), entry.central.size());
    header_.assign(entry.central.begin(), entry.central.end());
    if (!moveCentral(header_, entry.centralExtra, localOffset)) {
        return file_.refuseMember(name, "no room in its extra field for an offset beyond 4 GiB",
                                  zStatus_DoesNotFit);
    }
    return output_.write(header_);
}

zStatus Writer::writeAddedCentral(std::string_view name, const Content& content, std::uint64_t localOffset) {
    Zip64Record record;
    if (isWide(content.size())) {
        record.append(content.size());
        record.append(content.size());
    }
    if (isWide(localOffset)) record.append(localOffset);
    const auto extraBytes = record.bytes();
    std::array<std::uint8_t, central::fixedSize> header{};
    put32(header.data(), central::signature);
    put16(header.data() + central::madeBy, madeByUnix);
    putShared(header.data() + central::shared, name, content, extraBytes.size(), !extraBytes.empty());
    put32(header.data() + central::externalAttributes, regularFile0644);
    put32(header.data() + central::localOffset, plain32(localOffset));
    for (const auto part : {std::span<const std::uint8_t>(header), asBytes(name), extraBytes}) {
        if (const zStatus status = output_.write(part); status != zStatus_Success) return status;
    }
    return zStatus_Success;
}

// ---- The end records -----------------------------------------------------------------------------------

zStatus Writer::writeEnd(const std::string& comment) {
    const std::uint64_t size = written_.end - written_.begin;
    const std::uint64_t count = offsets_.size();
    if (count >= mark16 || isWide(size) || isWide(written_.begin)) {
        std::array<std::uint8_t, end64::fixedSize + locator::fixedSize> wide{};
        std::uint8_t* record = wide.data();
        put32(record, end64::signature);
        put64(record + end64::recordSize, end64::fixedSize - end64::uncounted);
        put16(record + end64::madeBy, madeByUnix);
        put16(record + end64::needed, version45);
        put64(record + end64::countHere, count);
        put64(record + end64::count, count);
        put64(record + end64::directorySize, size);
        put64(record + end64::directoryOffset, written_.begin);
        std::uint8_t* found = wide.data() + end64::fixedSize;
        put32(found, locator::signature);
        put64(found + locator::recordOffset, written_.end);
        put32(found + locator::disks, 1);
        if (const zStatus status = output_.write(wide); status != zStatus_Success) return status;
    }
    std::array<std::uint8_t, end::fixedSize> record{};
    put32(record.data(), end::signature);
    put16(record.data() + end::countHere, plain16(count));
    put16(record.data() + end::count, plain16(count));
    put32(record.data() + end::directorySize, plain32(size));
    put32(record.data() + end::directoryOffset, plain32(written_.begin));
    put16(record.data() + end::commentLength, comment.size());
    if (const zStatus status = output_.write(record); status != zStatus_Success) return status;
    return output_.write(asBytes(comment));
}

}  // namespace zip
