#include "tests/platform/os/pe_image.h"

#include <map>

namespace testing {
namespace {

constexpr std::uint32_t sectionAlignment = 0x1000;
constexpr std::uint32_t subdirectory = 0x80000000;

/// Bytes under construction; numbers are little-endian.
class Bytes {
  public:
    void u16(std::uint32_t value) {
        content += static_cast<char>(value & 0xFF);
        content += static_cast<char>((value >> 8) & 0xFF);
    }
    void u32(std::uint32_t value) {
        u16(value & 0xFFFF);
        u16(value >> 16);
    }
    void address(bool is64Bit, std::uint32_t value) {
        u32(value);
        if (is64Bit) u32(0);
    }
    void text(std::string_view bytes) { content += bytes; }
    void fillTo(std::size_t size) { content.resize(std::max(content.size(), size), '\0'); }

    std::string content;
};

std::uint32_t size32(const std::string& content) {
    return static_cast<std::uint32_t>(content.size());
}

std::string versionBlock(const PeImage& image, const os::FileVersion& version) {
    Bytes block;
    block.u16(92);
    block.u16(image.valueLength);
    block.u16(0);
    for (const char letter : std::string("VS_VERSION_INFO")) block.u16(static_cast<std::uint8_t>(letter));
    block.fillTo(40);
    block.u32(image.signature);
    block.u32(0x00010000);
    block.u16(version[1]);
    block.u16(version[0]);
    block.u16(version[3]);
    block.u16(version[2]);
    block.u32(0x00630063);  // the product version, which is nobody's business: 99.99.99.99
    block.u32(0x00630063);
    block.fillTo(92);
    return block.content;
}

/// Type, name, language, data: the tree of resources as it is written down.
using Languages = std::map<std::uint32_t, std::string>;
using Names = std::map<std::uint32_t, Languages>;
using Types = std::map<std::uint32_t, Names>;

void directory(Bytes& tree, std::size_t entries) {
    tree.u32(0);
    tree.u32(0);
    tree.u32(0);
    tree.u16(0);
    tree.u16(static_cast<std::uint32_t>(entries));
}

std::uint32_t directorySize(std::size_t entries) {
    return static_cast<std::uint32_t>(16 + 8 * entries);
}

/// Writes the tree level by level, as compilers of resources do.
std::string resourceSection(const Types& types, std::uint32_t sectionAddress) {
    std::uint32_t next = directorySize(types.size());
    Bytes typeLevel;
    Bytes nameLevel;
    Bytes languageLevel;
    Bytes leaves;
    Bytes data;

    std::uint32_t languagesAt = next;
    std::uint32_t leavesAt = 0;
    std::uint32_t leafCount = 0;
    for (const auto& [type, names] : types) languagesAt += directorySize(names.size());
    leavesAt = languagesAt;
    for (const auto& [type, names] : types) {
        for (const auto& [name, languages] : names) {
            leavesAt += directorySize(languages.size());
            leafCount += static_cast<std::uint32_t>(languages.size());
        }
    }
    const std::uint32_t dataAt = leavesAt + 16 * leafCount;

    directory(typeLevel, types.size());
    for (const auto& [type, names] : types) {
        typeLevel.u32(type);
        typeLevel.u32(subdirectory | (next + size32(nameLevel.content)));
        directory(nameLevel, names.size());
        for (const auto& [name, languages] : names) {
            nameLevel.u32(name);
            nameLevel.u32(subdirectory | (languagesAt + size32(languageLevel.content)));
            directory(languageLevel, languages.size());
            for (const auto& [language, content] : languages) {
                languageLevel.u32(language);
                languageLevel.u32(leavesAt + size32(leaves.content));
                leaves.u32(sectionAddress + dataAt + size32(data.content));
                leaves.u32(size32(content));
                leaves.u32(0);
                leaves.u32(0);
                data.text(content);
            }
        }
    }
    return typeLevel.content + nameLevel.content + languageLevel.content + leaves.content + data.content;
}

void sectionHeader(Bytes& file, std::string name, std::uint32_t virtualSize, std::uint32_t address,
                   std::uint32_t rawSize, std::uint32_t rawAt) {
    name.resize(8, '\0');
    file.text(name);
    file.u32(virtualSize);
    file.u32(address);
    file.u32(rawSize);
    file.u32(rawAt);
    file.u32(0);
    file.u32(0);
    file.u32(0);
    file.u32(0x40000040);  // initialised data, readable
}

void optionalHeader(Bytes& file, const PeImage& image, std::uint32_t resources, std::uint32_t resourceSize) {
    file.u16(image.is64Bit ? 0x20B : 0x10B);
    file.u16(0);
    for (int i = 0; i < 3; ++i) file.u32(0);  // sizes of code and data
    file.u32(0);                              // entry point
    file.u32(0);                              // base of code
    if (!image.is64Bit) file.u32(0);          // base of data
    file.address(image.is64Bit, 0x400000);    // image base
    file.u32(sectionAlignment);
    file.u32(0x200);  // file alignment
    for (const std::uint32_t version : {6u, 0u, 0u, 0u, 6u, 0u}) file.u16(version);
    file.u32(0);
    file.u32(resources + 2 * sectionAlignment);  // size of image
    file.u32(static_cast<std::uint32_t>(resourceSectionAt));
    file.u32(0);
    file.u16(3);  // console
    file.u16(0);
    for (int i = 0; i < 4; ++i) file.address(image.is64Bit, 0x1000);
    file.u32(0);
    file.u32(image.directoryCount);
    for (std::uint32_t i = 0; i < 16; ++i) {
        file.u32(i == 2 ? resources : 0);
        file.u32(i == 2 ? resourceSize : 0);
    }
}

}  // namespace

std::string PeImage::build() const {
    const std::uint32_t address = emptySectionFirst ? 2 * sectionAlignment : sectionAlignment;
    Types types;
    for (const Resource& resource : resources) {
        types[resource.type][resource.name][resource.language] = versionBlock(*this, resource.version);
    }
    Bytes section;
    section.text(resourceSection(types, address));
    const std::uint32_t used = size32(section.content);
    section.fillTo((used + 0x1FF) / 0x200 * 0x200);

    Bytes file;
    file.text("MZ");
    file.fillTo(60);
    file.u32(peHeaderAt);
    file.text(std::string_view("PE\0\0", 4));
    file.u16(is64Bit ? 0x8664 : 0x14C);
    file.u16(emptySectionFirst ? 2 : 1);
    for (int i = 0; i < 3; ++i) file.u32(0);  // time, symbols
    file.u16(is64Bit ? 240 : 224);            // size of the optional header
    file.u16(is64Bit ? 0x22 : 0x102);         // executable
    optionalHeader(file, *this, address, used);
    if (emptySectionFirst) sectionHeader(file, ".bss", sectionAlignment, sectionAlignment, 0, 0);
    sectionHeader(file, ".rsrc", used, address, size32(section.content), resourceSectionAt);
    file.fillTo(resourceSectionAt);
    file.text(section.content);
    return file.content;
}

}  // namespace testing
