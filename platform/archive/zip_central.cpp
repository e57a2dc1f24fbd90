#include "platform/archive/zip_central.h"

#include <algorithm>

namespace zip {
namespace {

/// True when the ZIP64 record holds the offset, whose place in it is then `at`, counted from its values.
bool hasWideOffset(const std::vector<std::uint8_t>& header, const ExtraField& field, std::size_t& at) {
    const std::uint8_t* shared = header.data() + central::shared;
    at = 0;
    if (get32(shared + common::size) == mark32) at += 8;
    if (get32(shared + common::compressedSize) == mark32) at += 8;
    return field.hasZip64 && get32(header.data() + central::localOffset) == mark32;
}

/// The ZIP64 record that `header` needs once its offset is in it too.
std::vector<std::uint8_t> widerRecord(const std::vector<std::uint8_t>& header, const ExtraField& field,
                                      std::uint64_t localOffset) {
    std::vector<std::uint8_t> record(extra::headerSize);
    const auto append = [&record](std::uint64_t value, unsigned width) {
        record.resize(record.size() + width);
        put(record.data() + record.size() - width, value, width);
    };
    const std::uint8_t* shared = header.data() + central::shared;
    Zip64Values values(field);
    // A plain value that equals the mark is a mark from now on.
    for (const std::size_t place : {common::size, common::compressedSize}) {
        const std::uint32_t plain = get32(shared + place);
        if (plain == mark32) append(values.wide(plain), 8);
    }
    append(localOffset, 8);
    if (get16(header.data() + central::disk) == mark16) append(0, 4);
    put16(record.data(), extra::zip64);
    put16(record.data() + 2, record.size() - extra::headerSize);
    return record;
}

}  // namespace

bool moveCentral(std::vector<std::uint8_t>& header, const ExtraField& field, std::uint64_t localOffset) {
    const std::size_t extraBegin =
        central::fixedSize + get16(header.data() + central::shared + common::nameLength);
    const auto recordBegin =
        static_cast<std::size_t>(field.hasZip64 ? field.zip64.data() - field.whole.data() : 0);
    std::size_t at = 0;
    if (hasWideOffset(header, field, at)) {
        put64(header.data() + extraBegin + recordBegin + at, localOffset);
        return true;
    }
    std::uint8_t* plainOffset = header.data() + central::localOffset;
    if (localOffset < mark32) {
        put32(plainOffset, localOffset);
        return true;
    }

    const std::vector<std::uint8_t> record = widerRecord(header, field, localOffset);
    const std::size_t oldSize = field.hasZip64 ? extra::headerSize + field.zip64.size() : 0;
    const std::size_t extraSize = field.whole.size() - oldSize + record.size();
    if (extraSize > longestText) return false;
    std::uint8_t* shared = header.data() + central::shared;
    put32(plainOffset, mark32);
    put16(shared + common::extraLength, extraSize);
    put16(shared + common::needed, std::max(get16(shared + common::needed), version45));
    // A new record goes first, so that padding stays the end of the field.
    const auto place =
        header.begin() +
        static_cast<std::ptrdiff_t>(extraBegin + (field.hasZip64 ? recordBegin - extra::headerSize : 0));
    header.erase(place, place + static_cast<std::ptrdiff_t>(oldSize));
    header.insert(place, record.begin(), record.end());
    return true;
}

}  // namespace zip
