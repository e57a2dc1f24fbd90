#include "platform/os/pe_version.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/platform/os/pe_image.h"
#include "tests/testing/scratch_directory.h"

namespace {

using os::FileVersion;
using testing::PeImage;
using testing::ScratchDirectory;

constexpr FileVersion first{6, 1, 2, 57};
constexpr FileVersion second{10, 0, 0, 1};
constexpr FileVersion third{1, 0, 0, 0};

constexpr std::uint32_t neutral = 0;
constexpr std::uint32_t english = 0x409;
constexpr std::uint32_t german = 0x407;
constexpr std::uint32_t french = 0x40C;

std::optional<FileVersion> ownAnswer(const std::string& path) {
    os::InputFile file;
    EXPECT_FALSE(file.open(path));
    FileVersion version{};
    if (!os::pe::readFileVersion(file, version)) return {};
    return version;
}

std::optional<FileVersion> systemAnswer(const std::string& path) {
    FileVersion version{};
    if (!os::fileVersion(path, version)) return {};
    return version;
}

/// Both sizes of image; every expectation is one of our own reader and, on Windows, of the system's
/// functions.
class PeVersion : public testing::TestWithParam<bool> {
  protected:
    static PeImage image(std::vector<PeImage::Resource> resources) {
        PeImage made;
        made.is64Bit = GetParam();
        made.resources = std::move(resources);
        return made;
    }
    static PeImage plain() { return image({{16, 1, neutral, first}}); }

    void expect(const PeImage& made, std::optional<FileVersion> version) const {
        expectOfBytes(made.build(), version);
    }
    void expectOfBytes(const std::string& bytes, std::optional<FileVersion> version) const {
        const std::string path = scratch_.write("image.exe", bytes);
        EXPECT_EQ(ownAnswer(path), version);
        EXPECT_EQ(systemAnswer(path), version);
    }
    std::optional<FileVersion> own(const std::string& bytes) const {
        return ownAnswer(scratch_.write("image.exe", bytes));
    }

    /// Where the header of the plain image's only section lies.
    static std::size_t sectionHeader() { return testing::peHeaderAt + 24 + (GetParam() ? 240 : 224); }
    /// Where the record of the plain image's version ends: tree, block header and key, first fields of the
    /// record.
    static constexpr std::size_t languageDirectory = testing::resourceSectionAt + 2 * 24;
    static constexpr std::size_t leaf = testing::resourceSectionAt + 3 * 24;
    static constexpr std::size_t block = leaf + 16;
    static constexpr std::size_t endOfVersion = block + 40 + 16;

  private:
    ScratchDirectory scratch_;
};

INSTANTIATE_TEST_SUITE_P(Sizes, PeVersion, testing::Values(false, true),
                         [](const auto& size) { return std::string(size.param ? "Of64Bits" : "Of32Bits"); });

TEST_P(PeVersion, isThatOfTheFile) {
    expect(plain(), first);
}

TEST_P(PeVersion, hasFieldsUpTo65535) {
    expect(image({{16, 1, neutral, {65535, 65534, 65533, 65532}}}), FileVersion{65535, 65534, 65533, 65532});
}

TEST_P(PeVersion, isFoundAmongOtherTypes) {
    expect(image({{10, 1, neutral, second}, {16, 1, neutral, first}, {24, 1, neutral, third}}), first);
}

TEST_P(PeVersion, isThatOfNameOne) {
    expect(image({{16, 0, neutral, second}, {16, 1, neutral, first}, {16, 2, neutral, third}}), first);
    expect(image({{16, 2, neutral, second}}), std::nullopt);
}

TEST_P(PeVersion, prefersTheNeutralLanguageThenEnglishThenTheFirst) {
    expect(image({{16, 1, neutral, first}, {16, 1, german, second}, {16, 1, english, third}}), first);
    expect(image({{16, 1, german, second}, {16, 1, english, third}}), third);
    expect(image({{16, 1, german, second}, {16, 1, french, third}}), second);
}

TEST_P(PeVersion, isFoundInALaterSection) {
    PeImage made = plain();
    made.emptySectionFirst = true;
    expect(made, first);
}

TEST_P(PeVersion, isAbsentWithoutResources) {
    expect(image({}), std::nullopt);
    expect(image({{10, 1, neutral, first}}), std::nullopt);
}

TEST_P(PeVersion, needsTheThirdDataDirectory) {
    PeImage made = plain();
    made.directoryCount = 2;
    expect(made, std::nullopt);
    made.directoryCount = 3;
    expect(made, first);
}

TEST_P(PeVersion, needsTheFixedRecord) {
    PeImage made = plain();
    made.valueLength = 0;
    expect(made, std::nullopt);
    made.valueLength = 51;
    expect(made, std::nullopt);
    made.valueLength = 52;
    made.signature = 0xFEEF04BC;
    expect(made, std::nullopt);
}

TEST_P(PeVersion, isReadAsSoonAsTheFileHoldsItAndNotBefore) {
    const std::string whole = plain().build();
    for (std::size_t size = 0; size <= endOfVersion; ++size) {
        const auto expected = size < endOfVersion ? std::nullopt : std::optional(first);
        ASSERT_EQ(own(whole.substr(0, size)), expected) << "cut to " << size << " bytes";
    }
}

TEST_P(PeVersion, isReadAsFarAsItsSectionReaches) {
    std::string bytes = plain().build();
    const std::size_t needed = endOfVersion - testing::resourceSectionAt;
    bytes.replace(sectionHeader() + 16, 4, std::string({static_cast<char>(needed), 0, 0, 0}));
    EXPECT_EQ(own(bytes), first);
    --bytes[sectionHeader() + 16];
    EXPECT_EQ(own(bytes), std::nullopt);
}

TEST_P(PeVersion, isAbsentWhenItsDirectoryLiesNowhere) {
    const std::string nowhere(4, '\0');
    std::string bytes = plain().build();
    const std::size_t resourceDirectory = sectionHeader() - 14 * 8;
    EXPECT_EQ(bytes.substr(resourceDirectory, 4), bytes.substr(sectionHeader() + 12, 4));
    bytes.replace(resourceDirectory, 4, nowhere);
    bytes.replace(sectionHeader() + 12, 4, nowhere);  // though a section lies there
    bytes.replace(leaf + 1, 1, nowhere, 0, 1);
    EXPECT_EQ(own(bytes), std::nullopt);
}

TEST_P(PeVersion, survivesEveryDamagedByte) {
    const std::string whole = plain().build();
    std::size_t noticed = 0;
    for (std::size_t at = 0; at < endOfVersion; ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        const std::optional<FileVersion> version = own(damaged);
        noticed += version != first;
        // The record's last eight bytes are the version itself.
        EXPECT_TRUE(!version || version == first || at >= endOfVersion - 8) << "byte " << at;
    }
    EXPECT_GT(noticed, 8u);
}

TEST_P(PeVersion, leavesTheAnswerAloneWhenThereIsNone) {
    ScratchDirectory scratch;
    os::InputFile file;
    ASSERT_FALSE(file.open(scratch.write("a.exe", "MZ")));
    FileVersion version = second;
    EXPECT_FALSE(os::pe::readFileVersion(file, version));
    EXPECT_EQ(version, second);
    EXPECT_FALSE(os::fileVersion(scratch.path("a.exe"), version));
    EXPECT_FALSE(os::fileVersion(scratch.path("missing.exe"), version));
    EXPECT_FALSE(os::fileVersion(scratch.path(), version)) << "a directory";
    EXPECT_EQ(version, second);
}

TEST_P(PeVersion, refusesATreeThatRunsInCircles) {
    std::string bytes = plain().build();
    bytes.replace(languageDirectory + 20, 4, std::string("\0\0\0\x80", 4));  // the leaf is the root again
    EXPECT_EQ(own(bytes), std::nullopt);
}

TEST_P(PeVersion, refusesALeafWhereADirectoryBelongs) {
    std::string bytes = plain().build();
    bytes[testing::resourceSectionAt + 24 + 23] = '\0';
    EXPECT_EQ(own(bytes), std::nullopt);
}

TEST_P(PeVersion, readsNoMoreEntriesThanTheFileHolds) {
    std::string bytes = plain().build();
    bytes.replace(testing::resourceSectionAt + 12, 4, "\xFF\xFF\xFF\xFF");  // 131,070 entries
    EXPECT_EQ(own(bytes), first) << "the first entry is still the right one";
    bytes[testing::resourceSectionAt + 16] = 5;
    EXPECT_EQ(own(bytes), std::nullopt);
}

TEST_P(PeVersion, refusesAPlaceBeyondTheFile) {
    std::string bytes = plain().build();
    bytes.replace(60, 4, "\xF0\xFF\xFF\xFF");
    EXPECT_EQ(own(bytes), std::nullopt) << "the PE header";

    bytes = plain().build();
    bytes.replace(leaf, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(own(bytes), std::nullopt) << "the version block";

    bytes = plain().build();
    bytes.replace(leaf + 4, 4, std::string("\x37\0\0\0", 4));
    EXPECT_EQ(own(bytes), std::nullopt) << "one byte less than the version needs";
    bytes[leaf + 4] = '\x38';
    EXPECT_EQ(own(bytes), first);
}

}  // namespace
