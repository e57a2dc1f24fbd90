#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/archive/source_file.h"
#include "platform/archive/zip_extra.h"

namespace zip {

/// One member as the central and the local header describe it, agreeing. The views are valid until the next
/// entry is read.
struct Entry {
    std::span<const std::uint8_t> central;  ///< The whole central header.
    std::span<const std::uint8_t> local;    ///< The whole local header.
    std::string_view name;
    ExtraField centralExtra;

    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t size = 0;
    std::uint64_t localOffset = 0;
    bool localHasZip64 = false;
    std::size_t descriptorSize = 0;  ///< 0 without a data descriptor.

    bool isEncrypted() const { return (flags & flag::encrypted) != 0; }
    /// True when the content can be decoded, and so be checked.
    bool isReadable() const {
        return !isEncrypted() && (method == method::stored || method == method::deflated);
    }
    std::uint64_t dataOffset() const { return localOffset + local.size(); }
    std::uint64_t dataEnd() const { return dataOffset() + compressedSize; }
    std::uint64_t end() const { return dataEnd() + descriptorSize; }
};

/// Where the central directory lies in a file.
struct DirectoryPlace {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// Reads entries and refuses those that two readers could understand in two ways.
class EntryReader {
  public:
    EntryReader(const SourceFile& file, DirectoryPlace directory)
        : file_(file), directory_(directory), centralWindow_(file), localWindow_(file) {}

    /// Reads the central header at `offset` alone: central, name and centralExtra of `entry`, and its
    /// numbers.
    zStatus readCentral(std::uint64_t offset, Entry& entry);

    /// Reads the central header at `offset`, the local header it points to, and the data descriptor.
    zStatus read(std::uint64_t offset, Entry& entry);

    /// The window that moves along the members' local headers and data.
    FileWindow& members() { return localWindow_; }

  private:
    zStatus parseCentral(Entry& entry);
    zStatus readLocal(Entry& entry);
    const char* compareLocal(Entry& entry) const;
    zStatus readDescriptor(Entry& entry);

    const SourceFile& file_;
    DirectoryPlace directory_;
    FileWindow centralWindow_;
    FileWindow localWindow_;
};

}  // namespace zip
