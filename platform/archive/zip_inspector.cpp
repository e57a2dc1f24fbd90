#include "platform/archive/zip_inspector.h"

#include "platform/archive/zip_format.h"
#include "platform/base/failure.h"

namespace zip {
namespace {

/// Takes apart the two 16-bit fields of a header's time stamp: time of day, then date.
zMemberTime timeOf(const Entry& entry) {
    const std::uint8_t* stamp = entry.central.data() + central::shared + common::time;
    const unsigned time = get16(stamp), date = get16(stamp + 2);
    return {1980 + (date >> 9), date >> 5 & 15, date & 31, time >> 11, time >> 5 & 63, 2 * (time & 31)};
}

}  // namespace

zStatus Inspector::requireName(const Entry& entry, std::string_view name) const {
    if (entry.name == name) return zStatus_Success;
    return failure::record(zStatus_IoError, file_.path() + ": the file was changed while it was read");
}

zStatus Inspector::describe(std::string_view name, std::uint64_t origin, zMemberInfo& info) {
    Entry entry;
    zStatus status = reader_.readCentral(origin, entry);
    if (status == zStatus_Success) status = requireName(entry, name);
    if (status != zStatus_Success) return status;
    info.size = entry.size;
    info.packedSize = entry.compressedSize;
    info.crc = entry.crc;
    info.method = entry.method;
    info.encrypted = entry.isEncrypted();
    info.time = timeOf(entry);
    return zStatus_Success;
}

zStatus Inspector::verify(std::string_view name, std::uint64_t origin) {
    Entry entry;
    zStatus status = reader_.read(origin, entry);
    if (status == zStatus_Success) status = requireName(entry, name);
    if (status == zStatus_Success) status = data_.requireReadable(entry);
    return status == zStatus_Success ? data_.carry(entry, nowhere_) : status;
}

}  // namespace zip
