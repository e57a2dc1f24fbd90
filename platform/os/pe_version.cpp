#include "platform/os/pe_version.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
#include <optional>

// The way to the version, every step of it a fixed number of bounded reads:
//
//   DOS header -> PE header -> data directory 2 (resources) -> section that holds it
//     -> resource tree: type 16 -> name 1 -> language -> data entry -> VS_VERSIONINFO -> VS_FIXEDFILEINFO
//
// The tree is walked to its fixed depth of three, so entries that point back lead nowhere else.

namespace os::pe {
namespace {

/// A stretch of the file. What is read from a region lies within it.
struct Region {
    std::uint64_t begin = 0;
    std::uint64_t size = 0;
};

/// A record of `size` bytes, numbers in it little-endian.
template <std::size_t size>
class Record {
  public:
    /// False when the record does not lie in `region` and in the file wholly.
    bool read(const InputFile& file, const Region& region, std::uint64_t offset) {
        if (offset > region.size || size > region.size - offset) return false;
        std::size_t count = 0;
        return !file.read(region.begin + offset, bytes_.data(), size, count) && count == size;
    }

    std::uint16_t u16(std::size_t at) const {
        return static_cast<std::uint16_t>(bytes_[at] | (bytes_[at + 1] << 8));
    }
    std::uint32_t u32(std::size_t at) const {
        return u16(at) | (static_cast<std::uint32_t>(u16(at + 2)) << 16);
    }

  private:
    std::array<std::uint8_t, size> bytes_{};
};

/// Where the image's sections are described, and where its resources are once it is loaded.
struct Headers {
    std::uint64_t sectionTable = 0;
    std::uint16_t sectionCount = 0;
    std::uint32_t resources = 0;  // an address, relative to the image's own
};

class Reader {
  public:
    explicit Reader(const InputFile& file) : file_(file), whole_{0, file.size()} {}

    bool readVersion(FileVersion& version) {
        if (!readHeaders()) return false;
        const std::optional<Region> tree = regionAt(headers_.resources);
        if (!tree) return false;
        const std::optional<Region> resource = findVersionResource(*tree);
        return resource && readFixedInfo(*resource, version);
    }

  private:
    bool readHeaders() {
        constexpr std::uint16_t dosMagic = 0x5A4D;     // "MZ"
        constexpr std::uint32_t peMagic = 0x00004550;  // "PE"
        constexpr std::uint16_t pe32Magic = 0x10B;
        constexpr std::uint16_t pe32PlusMagic = 0x20B;
        constexpr std::size_t fileHeaderSize = 24;  // the magic included

        Record<64> dos;
        if (!dos.read(file_, whole_, 0) || dos.u16(0) != dosMagic) return false;
        const std::uint64_t start = dos.u32(60);
        Record<fileHeaderSize> header;
        if (!header.read(file_, whole_, start) || header.u32(0) != peMagic) return false;
        headers_.sectionCount = header.u16(6);

        const Region optional{start + fileHeaderSize, header.u16(20)};
        headers_.sectionTable = optional.begin + optional.size;
        Record<2> magic;
        if (!magic.read(file_, optional, 0)) return false;
        if (magic.u16(0) == pe32Magic) return readDirectory(optional, 92);
        return magic.u16(0) == pe32PlusMagic && readDirectory(optional, 108);
    }

    /// The count of data directories stands at `offset` of the optional header, the directories behind it.
    bool readDirectory(const Region& optional, std::uint64_t offset) {
        constexpr std::uint32_t resourceDirectory = 2;
        Record<4> count;
        Record<8> directory;
        if (!count.read(file_, optional, offset) || count.u32(0) <= resourceDirectory) return false;
        if (!directory.read(file_, optional, offset + 4 + std::uint64_t{8} * resourceDirectory)) return false;
        headers_.resources = directory.u32(0);
        return headers_.resources != 0;
    }

    /// What the file holds of the section at `address`, from there to the section's end.
    std::optional<Region> regionAt(std::uint32_t address) const {
        constexpr std::uint64_t sectionHeaderSize = 40;
        for (std::uint64_t i = 0; i < headers_.sectionCount; ++i) {
            Record<sectionHeaderSize> section;
            if (!section.read(file_, whole_, headers_.sectionTable + i * sectionHeaderSize)) return {};
            const std::uint32_t first = section.u32(12);
            const std::uint32_t size = section.u32(16);
            if (address < first || address - first >= size) continue;
            return Region{std::uint64_t{section.u32(20)} + (address - first), size - (address - first)};
        }
        return {};
    }

    std::optional<Region> findVersionResource(const Region& tree) const {
        constexpr std::uint32_t versionType = 16;
        constexpr std::uint32_t versionName = 1;
        constexpr std::uint32_t neutral = 0;
        constexpr std::uint32_t usEnglish = 0x409;
        const auto names = descend(tree, subdirectory, {versionType}, false);
        const auto languages = names ? descend(tree, *names, {versionName}, false) : std::nullopt;
        const auto leaf = languages ? descend(tree, *languages, {neutral, usEnglish}, true) : std::nullopt;
        Record<16> data;
        if (!leaf || (*leaf & subdirectory) != 0 || !data.read(file_, tree, *leaf)) return {};
        std::optional<Region> resource = regionAt(data.u32(0));
        if (resource) resource->size = std::min<std::uint64_t>(resource->size, data.u32(4));
        return resource;
    }

    /// The target of the entry in `directory` that bears the earliest of the `wanted` numbers; without one,
    /// of the first entry if that will do.
    std::optional<std::uint32_t> descend(const Region& tree, std::uint32_t directory,
                                         std::initializer_list<std::uint32_t> wanted,
                                         bool firstWillDo) const {
        constexpr std::uint64_t headerSize = 16;
        constexpr std::uint64_t entrySize = 8;
        if ((directory & subdirectory) == 0) return {};
        const std::uint64_t start = directory & ~subdirectory;
        Record<headerSize> header;
        if (!header.read(file_, tree, start)) return {};
        const std::uint32_t count = header.u16(12) + std::uint32_t{header.u16(14)};  // named, numbered

        std::optional<std::uint32_t> target;
        auto rank = std::end(wanted);
        for (std::uint64_t i = 0; i < count; ++i) {
            Record<entrySize> entry;
            if (!entry.read(file_, tree, start + headerSize + i * entrySize)) break;
            const auto found = std::find(std::begin(wanted), rank, entry.u32(0));
            if (found != rank || (i == 0 && firstWillDo)) target = entry.u32(4);
            rank = found;
        }
        return target;
    }

    /// The system's functions look at the value's length, not at its key, and read from a resource that is
    /// cut off what is there; so does this.
    bool readFixedInfo(const Region& resource, FileVersion& version) const {
        // Length, length of the value, kind; then the key "VS_VERSION_INFO" in UTF-16, filled up to 40 bytes.
        constexpr std::uint64_t fixedInfo = 40;
        constexpr std::uint16_t fixedInfoSize = 52;
        constexpr std::uint32_t signature = 0xFEEF04BD;
        Record<6> block;
        Record<16> info;  // its start: signature, version of the record, most and least significant word
        if (!block.read(file_, resource, 0) || block.u16(2) < fixedInfoSize) return false;
        if (!info.read(file_, resource, fixedInfo) || info.u32(0) != signature) return false;
        version = {info.u16(10), info.u16(8), info.u16(14), info.u16(12)};
        return true;
    }

    static constexpr std::uint32_t subdirectory = 0x80000000;  // set in the target of an entry

    const InputFile& file_;
    const Region whole_;
    Headers headers_;
};

}  // namespace

bool readFileVersion(const InputFile& file, FileVersion& version) {
    return Reader(file).readVersion(version);
}

}  // namespace os::pe
