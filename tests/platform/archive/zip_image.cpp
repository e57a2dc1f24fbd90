#include "tests/platform/archive/zip_image.h"

#include <numeric>

#include "tests/platform/archive/deflate_stream.h"

namespace testing {
namespace {

std::string shared(const ZipFields& fields) {
    return number(fields.needed, 2) + number(fields.flags, 2) + number(fields.method, 2) +
           number(fields.time, 4) + number(fields.crc, 4) + number(fields.compressedSize, 4) +
           number(fields.size, 4) + number(fields.name.size(), 2) + number(fields.extra.size(), 2);
}

/// The true numbers, but for those that are to be others.
ZipNumbers merged(ZipNumbers numbers, const ZipNumbers& others) {
    const auto take = [](auto& mine, const auto& other) {
        if (other) mine = other;
    };
    take(numbers.disk, others.disk);
    take(numbers.directoryDisk, others.directoryDisk);
    take(numbers.countHere, others.countHere);
    take(numbers.count, others.count);
    take(numbers.directorySize, others.directorySize);
    take(numbers.directoryOffset, others.directoryOffset);
    return numbers;
}

std::string zip64Records(const Zip64End& zip64, const ZipNumbers& truth, std::uint64_t offset) {
    const ZipNumbers numbers = merged(truth, zip64.stated);
    const std::string body = number(0x031E, 2) + number(45, 2) + number(*numbers.disk, 4) +
                             number(*numbers.directoryDisk, 4) + number(*numbers.countHere, 8) +
                             number(*numbers.count, 8) + number(*numbers.directorySize, 8) +
                             number(*numbers.directoryOffset, 8) + zip64.extension;
    const std::string record =
        number(zip64.signature, 4) + number(zip64.recordSize.value_or(body.size()), 8) + body;
    return record + number(0x07064b50, 4) + number(zip64.locatorDisk, 4) +
           number(zip64.locatorOffset.value_or(offset), 8) + number(zip64.disks, 4);
}

}  // namespace

std::string number(std::uint64_t value, unsigned width) {
    std::string bytes;
    for (unsigned i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string extraRecord(std::uint16_t id, const std::string& content) {
    return number(id, 2) + number(content.size(), 2) + content;
}

std::uint32_t crcOf(const std::string& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

std::string ZipMember::localRecord() const {
    return slack + number(localSignature, 4) + shared(local) + local.name + local.extra + data + descriptor;
}

std::string ZipMember::centralRecord(std::uint64_t trueOffset) const {
    return number(centralSignature, 4) + number(madeBy, 2) + shared(central) + number(comment.size(), 2) +
           number(disk, 2) + number(internal, 2) + number(external, 4) +
           number(offset.value_or(trueOffset), 4) + central.name + central.extra + comment;
}

ZipMember stored(const std::string& name, const std::string& content) {
    ZipMember member;
    member.data = content;
    member.both([&](ZipFields& fields) {
        fields.name = name;
        fields.crc = crcOf(content);
        fields.size = fields.compressedSize = content.size();
    });
    return member;
}

ZipMember packed(const std::string& name, const std::string& stream, const std::string& content) {
    ZipMember member = stored(name, content);
    member.data = stream;
    member.both([&](ZipFields& fields) {
        fields.method = 8;
        fields.compressedSize = stream.size();
    });
    return member;
}

ZipMember deflated(const std::string& name, const std::string& content) {
    return packed(name, DeflateStream().fixedBlock(content).bytes(), content);
}

ZipMember streamed(ZipMember member, unsigned width, bool isSigned) {
    member.descriptor = (isSigned ? number(0x08074b50, 4) : "") + number(member.local.crc, 4) +
                        number(member.local.compressedSize, width) + number(member.local.size, width);
    member.local.crc = member.local.compressedSize = member.local.size = 0;
    member.both([](ZipFields& fields) { fields.flags |= descriptorFlag; });
    return member;
}

std::string ZipImage::bytes() const {
    std::string file = prefix;
    std::vector<std::uint64_t> offsets;
    for (const ZipMember& member : members) {
        offsets.push_back(file.size() + member.slack.size());
        file += member.localRecord();
    }
    file += beforeDirectory;

    std::vector<std::size_t> order = directoryOrder;
    if (order.empty()) {
        order.resize(members.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
    }
    const std::uint64_t begin = file.size();
    for (const std::size_t i : order) file += members[i].centralRecord(offsets[i]);
    const ZipNumbers truth{0, 0, order.size(), order.size(), file.size() - begin, begin};
    file += behindDirectory;
    if (zip64) file += zip64Records(*zip64, truth, file.size());

    const ZipNumbers numbers = merged(truth, end);
    return file + number(0x06054b50, 4) + number(*numbers.disk, 2) + number(*numbers.directoryDisk, 2) +
           number(*numbers.countHere, 2) + number(*numbers.count, 2) + number(*numbers.directorySize, 4) +
           number(*numbers.directoryOffset, 4) + number(commentLength.value_or(comment.size()), 2) + comment;
}

}  // namespace testing
