#include "platform/archive/zip_extra.h"

#include <algorithm>

namespace zip {

const char* parseExtra(std::span<const std::uint8_t> bytes, ExtraField& field) {
    field = {};
    field.whole = bytes;
    while (bytes.size() >= extra::headerSize) {
        const std::uint16_t id = get16(bytes.data());
        const std::size_t size = get16(bytes.data() + 2);
        bytes = bytes.subspan(extra::headerSize);
        if (size > bytes.size()) return "a record of the extra field is longer than the field";
        if (id == extra::zip64) {
            if (field.hasZip64) return "two ZIP64 records in the extra field";
            field.hasZip64 = true;
            field.zip64 = bytes.first(size);
        }
        bytes = bytes.subspan(size);
    }
    // Some programs pad the field to make the data begin at an even place.
    const bool padding = std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
    return padding ? nullptr : "bytes that are no record in the extra field";
}

const std::uint8_t* Zip64Values::take(std::size_t size) {
    if (left_.size() < size) {
        tooShort_ = true;
        return nullptr;
    }
    const std::uint8_t* at = left_.data();
    left_ = left_.subspan(size);
    return at;
}

std::uint64_t Zip64Values::wide(std::uint32_t plain) {
    if (plain != mark32 || !present_) return plain;
    const std::uint8_t* at = take(8);
    return at == nullptr ? 0 : get64(at);
}

std::uint32_t Zip64Values::disk(std::uint16_t plain) {
    if (plain != mark16 || !present_) return plain;
    const std::uint8_t* at = take(4);
    return at == nullptr ? 0 : get32(at);
}

}  // namespace zip
