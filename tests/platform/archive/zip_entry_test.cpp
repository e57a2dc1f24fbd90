#include "platform/archive/zip_entry.h"

#include <functional>

#include "tests/platform/archive/zip_fixture.h"

// Headers of members. Each image is sound but for the one thing the test names.

namespace {

using namespace testing;

class ZipEntry : public ZipTest {
  protected:
    ZipMember& member() { return image.members[0]; }
    std::string refusalOf(const std::function<void(ZipMember&)>& change) {
        ZipImage changed = image;
        change(changed.members[0]);
        return refusal(changed);
    }
    ZipImage image{.members = {stored("data/a", "content")}};
};

// ---- The central header ---------------------------------------------------------------------------------

TEST_F(ZipEntry, refusesADamagedCentralSignature) {
    member().centralSignature ^= 1;
    EXPECT_EQ(refusal(image), "an entry of the central directory is missing or damaged");
}

TEST_F(ZipEntry, refusesACentralHeaderBeyondTheDirectory) {
    // The last entry claims a comment that would reach into the end record.
    std::string bytes = image.bytes();
    bytes[bytes.size() - 22 - image.members[0].centralRecord(0).size() + 32] = 1;
    EXPECT_EQ(refusal(bytes), "an entry of the central directory reaches beyond its end");
}

TEST_F(ZipEntry, refusesTheBeginningOfACentralHeaderAtTheEndOfTheDirectory) {
    image.behindDirectory = "PK\x01\x02";
    image.end = {.countHere = 2, .count = 2, .directorySize = image.members[0].centralRecord(0).size() + 4};
    EXPECT_EQ(refusal(image), "an entry of the central directory is missing or damaged");
}

TEST_F(ZipEntry, refusesNoName) {
    member().both([](ZipFields& fields) { fields.name.clear(); });
    EXPECT_EQ(refusal(image), "a member without a name");
}

TEST_F(ZipEntry, refusesAZeroByteInAName) {
    member().both([](ZipFields& fields) { fields.name = std::string("a\0b", 3); });
    EXPECT_EQ(refusal(image), "member a?b: a zero byte in the name");
}

TEST_F(ZipEntry, refusesAnotherDisk) {
    member().disk = 1;
    EXPECT_EQ(refusal(image), "member data/a: the member lies on another disk");
    member().disk = allOnes16;  // a mark without its record
    EXPECT_EQ(refusal(image), "member data/a: the member lies on another disk");
}

TEST_F(ZipEntry, refusesStoredMembersOfTwoSizes) {
    member().both([](ZipFields& fields) { ++fields.size; });
    EXPECT_EQ(refusal(image), "member data/a: stored, but its two sizes differ");
}

TEST_F(ZipEntry, takesTwoSizesOfAnEncryptedStoredMember) {
    member().data = "twelve bytes" + member().data;
    member().both([](ZipFields& fields) {
        fields.flags = encryptedFlag;
        fields.compressedSize += 12;
    });
    EXPECT_EQ(refusal(image), "loads");
}

TEST_F(ZipEntry, takesWhatMeansNothingHere) {
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.madeBy = 0xFFFF; }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.internal = 0xFFFF; }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.external = 0xFFFFFFFF; }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.comment = "the member's own"; }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.local.needed = 20; }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.central.needed = 63; }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.local.extra = extraRecord(0x5455, "123"); }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.central.extra = extraRecord(0x7875, "12"); }), "loads");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.both([](ZipFields& f) { f.time = 0; }); }), "loads");
}

// ---- The local header -----------------------------------------------------------------------------------

TEST_F(ZipEntry, refusesAnOffsetOutsideOfTheMembers) {
    const std::uint64_t directory = member().localRecord().size();
    for (const std::uint64_t offset : {directory - 29, directory, directory + 1, allOnes32 - 1, allOnes32}) {
        EXPECT_EQ(refusalOf([offset](ZipMember& m) { m.offset = offset; }),
                  "member data/a: its local header lies outside of the archive's members")
            << offset;
    }
}

TEST_F(ZipEntry, refusesAnOffsetWithoutAHeader) {
    const char* const why = "member data/a: no local header where the central directory points";
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.offset = 1; }), why);
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.localSignature ^= 1; }), why);
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.localSignature = 0x02014b50; }), why);
}

TEST_F(ZipEntry, refusesDataBeyondTheMembers) {
    const char* const why = "member data/a: its data reaches beyond the archive's members";
    for (const std::uint64_t size : {std::uint64_t{8}, allOnes32 - 1, allOnes32}) {
        EXPECT_EQ(refusalOf([size](ZipMember& m) {
                      m.both([size](ZipFields& fields) { fields.size = fields.compressedSize = size; });
                  }),
                  why)
            << size;
    }
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.data.pop_back(); }), why);
    // A name or an extra field that reaches beyond.
    std::string bytes = image.bytes();
    bytes[27] = 1;
    EXPECT_EQ(refusal(bytes), why);
    bytes = image.bytes();
    bytes[29] = 1;
    EXPECT_EQ(refusal(bytes), why);
}

TEST_F(ZipEntry, refusesHeadersThatDiffer) {
    using Change = std::function<void(ZipFields&)>;
    const std::vector<std::pair<Change, std::string>> differences = {
        {[](ZipFields& f) { f.flags = utf8Flag; }, "the local flags differ from the central ones"},
        {[](ZipFields& f) { f.method = 99; }, "the local method differs from the central one"},
        {[](ZipFields& f) { ++f.time; }, "the local time differs from the central one"},
        {[](ZipFields& f) { f.time ^= 0x80000000; }, "the local time differs from the central one"},
        {[](ZipFields& f) { ++f.crc; }, "the local checksum differs from the central one"},
    };
    for (const auto& difference : differences) {
        const Change& change = difference.first;
        const std::string& why = difference.second;
        EXPECT_EQ(refusalOf([&](ZipMember& m) { change(m.local); }), "member data/a: " + why);
        EXPECT_EQ(refusalOf([&](ZipMember& m) { change(m.central); }), "member data/a: " + why);
    }
    EXPECT_EQ(refusalOf([](ZipMember& m) { ++m.local.compressedSize; }),
              "member data/a: the local compressed size differs from the central one");
    EXPECT_EQ(refusalOf([](ZipMember& m) { ++m.local.size; }),
              "member data/a: the local size differs from the central one");
}

TEST_F(ZipEntry, refusesNamesThatDiffer) {
    for (const char* other : {"Data/a", "data/b", "data/", "data/aa", "data\\a"}) {
        EXPECT_EQ(refusalOf([&](ZipMember& m) { m.local.name = other; }),
                  "member data/a: the local name differs from the central one");
        EXPECT_EQ(refusalOf([&](ZipMember& m) { m.central.name = other; }),
                  std::string("member ") + other + ": the local name differs from the central one");
    }
}

TEST_F(ZipEntry, refusesZerosInALocalHeaderWithoutADescriptor) {
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.local.crc = 0; }),
              "member data/a: the local checksum differs from the central one");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.local.compressedSize = 0; }),
              "member data/a: the local compressed size differs from the central one");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.local.size = 0; }),
              "member data/a: the local size differs from the central one");
}

// ---- Extra fields ---------------------------------------------------------------------------------------

TEST_F(ZipEntry, refusesExtraFieldsThatAreNoRecords) {
    const std::vector<std::pair<std::string, std::string>> faults = {
        {std::string("UT\5\0\3\1\2\3", 8), "a record of the extra field is longer than the field"},
        {"abc", "bytes that are no record in the extra field"},
        {extraRecord(zip64Id, "") + extraRecord(zip64Id, ""), "two ZIP64 records in the extra field"},
    };
    for (const auto& fault : faults) {
        const std::string& extra = fault.first;
        const std::string& why = fault.second;
        EXPECT_EQ(refusalOf([&](ZipMember& m) { m.central.extra = extra; }), "member data/a: " + why);
        EXPECT_EQ(refusalOf([&](ZipMember& m) { m.local.extra = extra; }), "member data/a: " + why);
    }
}

class Zip64Entry : public ZipEntry {
  protected:
    /// Puts the values of both headers into ZIP64 records.
    void widen() {
        member().both([](ZipFields& fields) {
            fields.extra = extraRecord(zip64Id, number(fields.size, 8) + number(fields.compressedSize, 8));
            fields.size = fields.compressedSize = allOnes32;
        });
    }
};

TEST_F(Zip64Entry, isTakenThoughItIsNotNeeded) {
    widen();
    EXPECT_EQ(resaved(image), image.bytes());
    member().central.extra = extraRecord(zip64Id, number(7, 8) + number(7, 8) + number(0, 8) + number(0, 4));
    member().offset = allOnes32;
    member().disk = allOnes16;
    EXPECT_EQ(resaved(image), image.bytes());
}

TEST_F(Zip64Entry, mayStandInOneHeaderAlone) {
    widen();
    const ZipMember wide = member();
    member().central = stored("data/a", "content").central;
    EXPECT_EQ(resaved(image), image.bytes());
    member() = wide;
    member().local = stored("data/a", "content").local;
    EXPECT_EQ(resaved(image), image.bytes());
}

TEST_F(Zip64Entry, isNotLookedIntoWithoutMarks) {
    member().central.extra = extraRecord(zip64Id, number(99, 8));
    member().local.extra = extraRecord(zip64Id, "");
    EXPECT_EQ(resaved(image), image.bytes());
}

TEST_F(Zip64Entry, refusesRecordsTooShortForTheirMarks) {
    widen();
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.central.extra = extraRecord(zip64Id, number(7, 8)); }),
              "member data/a: the ZIP64 record is too short");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.offset = allOnes32; }),
              "member data/a: the ZIP64 record is too short");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.disk = allOnes16; }),
              "member data/a: the ZIP64 record is too short");
    EXPECT_EQ(refusalOf([](ZipMember& m) { m.local.extra = extraRecord(zip64Id, number(7, 8)); }),
              "member data/a: the local ZIP64 record is too short");
}

TEST_F(Zip64Entry, refusesWrongValues) {
    widen();
    EXPECT_EQ(
        refusalOf([](ZipMember& m) { m.central.extra = extraRecord(zip64Id, number(8, 8) + number(8, 8)); }),
        "member data/a: its data reaches beyond the archive's members");
    EXPECT_EQ(refusalOf([](ZipMember& m) {
                  m.central.extra = extraRecord(zip64Id, number(7, 8) + number(~std::uint64_t{0}, 8));
              }),
              "member data/a: stored, but its two sizes differ");
    EXPECT_EQ(refusalOf([](ZipMember& m) {
                  m.both([](ZipFields& fields) {
                      fields.extra =
                          extraRecord(zip64Id, number(~std::uint64_t{0}, 8) + number(~std::uint64_t{0}, 8));
                  });
              }),
              "member data/a: its data reaches beyond the archive's members");
    EXPECT_EQ(
        refusalOf([](ZipMember& m) { m.local.extra = extraRecord(zip64Id, number(6, 8) + number(7, 8)); }),
        "member data/a: the local size differs from the central one");
    EXPECT_EQ(refusalOf([](ZipMember& m) {
                  m.offset = allOnes32;
                  m.central.extra =
                      extraRecord(zip64Id, number(7, 8) + number(7, 8) + number(~std::uint64_t{0}, 8));
              }),
              "member data/a: its local header lies outside of the archive's members");
}

// ---- Data descriptors -----------------------------------------------------------------------------------

class ZipDescriptor : public ZipEntry {};

TEST_F(ZipDescriptor, isReadInEachOfItsForms) {
    for (const unsigned width : {4u, 8u}) {
        for (const bool isSigned : {true, false}) {
            for (const char* content : {"content", "PK\x07\x08"}) {
                image.members = {streamed(stored("a", content), width, isSigned),
                                 streamed(deflated("b", content), width, isSigned), stored("c", "")};
                EXPECT_EQ(resaved(image), image.bytes()) << width << isSigned << content;
            }
        }
    }
}

TEST_F(ZipDescriptor, ofNothingIsTakenForTheNarrowForm) {
    // With a size of 0 the wide form begins with the narrow one; what is left over is slack.
    for (const bool isSigned : {true, false}) {
        image.members = {streamed(stored("a", ""), 8, isSigned), streamed(deflated("b", ""), 8, isSigned)};
        const std::string saved = resaved(image);
        image.members = {streamed(stored("a", ""), 4, isSigned), streamed(deflated("b", ""), 4, isSigned)};
        EXPECT_EQ(saved, image.bytes());
        EXPECT_EQ(resaved(image), image.bytes());
    }
}

TEST_F(ZipDescriptor, isReadBehindALocalZip64Record) {
    for (const unsigned width : {4u, 8u}) {
        member() = streamed(stored("data/a", "content"), width);
        member().local.size = member().local.compressedSize = allOnes32;
        member().local.extra = extraRecord(zip64Id, number(0, 8) + number(0, 8));
        EXPECT_EQ(resaved(image), image.bytes()) << width;
    }
}

TEST_F(ZipDescriptor, mayStandBehindAHeaderThatKnowsTheValues) {
    member() = streamed(stored("data/a", "content"));
    member().local.crc = member().central.crc;
    member().local.size = member().local.compressedSize = 7;
    EXPECT_EQ(resaved(image), image.bytes());
}

TEST_F(ZipDescriptor, refusesValuesThatDiffer) {
    const ZipMember sound = streamed(stored("data/a", "content"));
    for (std::size_t i = 0; i < sound.descriptor.size(); ++i) {
        member() = sound;
        member().descriptor[i] = static_cast<char>(member().descriptor[i] ^ 0x40);
        EXPECT_EQ(refusal(image), "member data/a: the data descriptor differs from the central directory");
    }
    member() = sound;
    member().local.size = 6;
    EXPECT_EQ(refusal(image), "member data/a: the local size differs from the central one");
}

TEST_F(ZipDescriptor, refusesTheNarrowFormOfASizeThatDoesNotFit) {
    member() = streamed(deflated("data/a", "content"));
    member().central.size = allOnes32;
    member().central.extra = extraRecord(zip64Id, number((std::uint64_t{1} << 32) + 7, 8));
    EXPECT_EQ(refusal(image), "member data/a: the data descriptor differs from the central directory");
}

TEST_F(ZipDescriptor, isReadInTheWideFormOfASizeThatNeedsIt) {
    constexpr std::uint64_t size = (std::uint64_t{1} << 32) + 7;
    member() = deflated("data/a", "content");
    member().both([](ZipFields& fields) { fields.size = size; });
    member() = streamed(member(), 8);
    member().central.size = allOnes32;
    member().central.extra = extraRecord(zip64Id, number(size, 8));
    EXPECT_EQ(refusal(image), "loads");
}

TEST_F(ZipDescriptor, refusesOneThatIsMissingOrCut) {
    const ZipMember sound = streamed(stored("data/a", "content"));
    for (std::size_t size = 0; size < sound.descriptor.size(); ++size) {
        member() = sound;
        member().descriptor.resize(size);
        EXPECT_EQ(refusal(image), "member data/a: the data descriptor differs from the central directory");
    }
}

}  // namespace
