#include "platform/archive/zip_directory.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace zip {
namespace {

// ---- The end records -----------------------------------------------------------------------------------

/// The last part of the file, where the end record must be.
struct Tail {
    std::vector<std::uint8_t> bytes;
    std::uint64_t begin = 0;  // in the file
};

zStatus readTail(const SourceFile& file, Tail& tail) {
    const std::uint64_t size = std::min<std::uint64_t>(file.size(), end::fixedSize + longestText);
    tail.bytes.resize(static_cast<std::size_t>(size));
    tail.begin = file.size() - size;
    return file.read(tail.begin, tail.bytes.data(), tail.bytes.size());
}

bool isMark(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= 4 && get32(bytes.data()) == end::signature;
}

/// True when an end record begins here whose comment ends exactly with the file.
bool isExactEnd(std::span<const std::uint8_t> bytes) {
    return isMark(bytes) && bytes.size() >= end::fixedSize &&
           bytes.size() == end::fixedSize + get16(bytes.data() + end::commentLength);
}

bool isLocalHeader(const SourceFile& file) {
    std::uint8_t start[4];
    return file.size() >= sizeof start && file.read(0, start, sizeof start) == zStatus_Success &&
           get32(start) == local::signature;
}

/// Says why no end record ends with the file.
zStatus refuseTail(const SourceFile& file, const Tail& tail) {
    if (file.size() == 0) return file.refuse("the file is empty");
    const std::span<const std::uint8_t> bytes(tail.bytes);
    for (std::size_t at = bytes.size(); at-- > 0;) {
        const auto rest = bytes.subspan(at);
        if (!isMark(rest)) continue;
        if (rest.size() < end::fixedSize) return file.refuse("the end record is cut short");
        const std::size_t stated = end::fixedSize + get16(rest.data() + end::commentLength);
        return file.refuse(stated > rest.size() ? "the archive comment is cut short"
                                                : "bytes behind the end record");
    }
    return file.refuse(isLocalHeader(file) ? "no end record: the archive is cut short"
                                           : "no end record: not a ZIP archive");
}

/// Finds the end record in the tail: the first one that ends with the file, whose comment must not hold what
/// a reader that comes from behind would take for another.
zStatus findEnd(const SourceFile& file, const Tail& tail, std::size_t& at) {
    const std::span<const std::uint8_t> bytes(tail.bytes);
    at = 0;
    while (at < bytes.size() && !isExactEnd(bytes.subspan(at))) ++at;
    if (at == bytes.size()) return refuseTail(file, tail);
    for (std::size_t i = at + end::fixedSize; i < bytes.size(); ++i) {
        if (isMark(bytes.subspan(i)))
            return file.refuse("the archive comment holds another end record's mark");
    }
    return zStatus_Success;
}

/// The numbers of an end record, or of its ZIP64 counterpart.
struct EndNumbers {
    std::uint64_t disk, directoryDisk, countHere, count, directorySize, directoryOffset;
};

EndNumbers plainNumbers(const std::uint8_t* record) {
    return {get16(record + end::disk),          get16(record + end::directoryDisk),
            get16(record + end::countHere),     get16(record + end::count),
            get32(record + end::directorySize), get32(record + end::directoryOffset)};
}

EndNumbers wideNumbers(const std::uint8_t* record) {
    return {get32(record + end64::disk),          get32(record + end64::directoryDisk),
            get64(record + end64::countHere),     get64(record + end64::count),
            get64(record + end64::directorySize), get64(record + end64::directoryOffset)};
}

/// True when each plain number is the wide one or the mark that stands for it.
bool agree(const EndNumbers& plain, const EndNumbers& wide) {
    const auto same = [](std::uint64_t narrow, std::uint64_t full, std::uint64_t mark) {
        return narrow == full || narrow == mark;
    };
    return same(plain.disk, wide.disk, mark16) && same(plain.directoryDisk, wide.directoryDisk, mark16) &&
           same(plain.countHere, wide.countHere, mark16) && same(plain.count, wide.count, mark16) &&
           same(plain.directorySize, wide.directorySize, mark32) &&
           same(plain.directoryOffset, wide.directoryOffset, mark32);
}

/// Looks for the ZIP64 locator in front of the end record at `endOffset`. With one, reads the record it
/// points to, whose place then is where the directory must end.
zStatus readZip64(const SourceFile& file, std::uint64_t endOffset, EndNumbers& numbers,
                  std::uint64_t& directoryLimit) {
    if (endOffset < locator::fixedSize) return zStatus_Success;
    const std::uint64_t locatorOffset = endOffset - locator::fixedSize;
    std::uint8_t found[locator::fixedSize];
    zStatus status = file.read(locatorOffset, found, sizeof found);
    if (status != zStatus_Success || get32(found) != locator::signature) return status;

    // Some programs write 0 for the number of disks where they mean the one.
    if (get32(found + locator::disk) != 0 || get32(found + locator::disks) > 1) {
        return file.refuse("the archive is spread over several disks");
    }
    const std::uint64_t offset = get64(found + locator::recordOffset);
    if (offset > locatorOffset || locatorOffset - offset < end64::fixedSize) {
        return file.refuse("the ZIP64 locator points out of its place");
    }
    std::uint8_t record[end64::fixedSize];
    status = file.read(offset, record, sizeof record);
    if (status != zStatus_Success) return status;
    if (get32(record) != end64::signature) {
        return file.refuse("no ZIP64 end record where its locator points");
    }
    if (get64(record + end64::recordSize) != locatorOffset - offset - end64::uncounted) {
        return file.refuse("the ZIP64 end record has another size than stated");
    }
    const EndNumbers wide = wideNumbers(record);
    if (!agree(numbers, wide)) return file.refuse("the end record and the ZIP64 end record differ");
    numbers = wide;
    directoryLimit = offset;
    return zStatus_Success;
}

// ---- The directory -------------------------------------------------------------------------------------

/// Where a member lies in the file, for finding overlaps.
using Extent = std::pair<std::uint64_t, std::uint64_t>;

zStatus refuseOverlap(const SourceFile& file, std::vector<Extent>& extents) {
    // Almost every archive has its members in the order of their places.
    if (!std::is_sorted(extents.begin(), extents.end())) std::sort(extents.begin(), extents.end());
    const auto overlap = std::adjacent_find(
        extents.begin(), extents.end(), [](const Extent& a, const Extent& b) { return a.second > b.first; });
    if (overlap == extents.end()) return zStatus_Success;
    return file.refuse("two members overlap at offset " + std::to_string(std::next(overlap)->first));
}

}  // namespace

zStatus readEnding(const SourceFile& file, Ending& ending) {
    Tail tail;
    zStatus status = readTail(file, tail);
    if (status != zStatus_Success) return status;
    std::size_t at = 0;
    status = findEnd(file, tail, at);
    if (status != zStatus_Success) return status;

    const std::uint8_t* record = tail.bytes.data() + at;
    EndNumbers numbers = plainNumbers(record);
    std::uint64_t limit = tail.begin + at;
    status = readZip64(file, limit, numbers, limit);
    if (status != zStatus_Success) return status;

    if (numbers.disk != 0 || numbers.directoryDisk != 0 || numbers.countHere != numbers.count) {
        return file.refuse("the archive is spread over several disks");
    }
    if (numbers.directoryOffset > limit || limit - numbers.directoryOffset != numbers.directorySize) {
        return file.refuse("the central directory does not end where the end record begins");
    }
    ending.directory = {numbers.directoryOffset, limit};
    ending.count = numbers.count;
    ending.comment.assign(reinterpret_cast<const char*>(record + end::fixedSize),
                          tail.bytes.size() - at - end::fixedSize);
    return zStatus_Success;
}

zStatus readDirectory(const SourceFile& file, const Ending& ending, MemberTable& members) {
    // The count may be a lie, which is found out below; so it must not cost much here.
    constexpr std::uint64_t mostTrusted = 1 << 20;
    const std::uint64_t room = (ending.directory.end - ending.directory.begin) / central::fixedSize;
    const auto expected = static_cast<std::size_t>(std::min({ending.count, room, mostTrusted}));
    members.reserve(expected);
    std::vector<Extent> extents;
    extents.reserve(expected);
    EntryReader reader(file, ending.directory);
    std::uint64_t offset = ending.directory.begin;
    for (std::uint64_t i = 0; i < ending.count; ++i) {
        Entry entry;
        if (const zStatus status = reader.read(offset, entry); status != zStatus_Success) return status;
        if (members.append(entry.name, offset) == nullptr) {
            return file.refuseMember(entry.name, "the name occurs twice");
        }
        extents.emplace_back(entry.localOffset, entry.end());
        offset += entry.central.size();
    }
    if (offset != ending.directory.end) {
        return file.refuse("the central directory holds more than the stated number of entries");
    }
    return refuseOverlap(file, extents);
}

}  // namespace zip
