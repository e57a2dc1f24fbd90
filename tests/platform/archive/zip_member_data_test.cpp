#include "platform/archive/zip_member_data.h"

#include "tests/platform/archive/deflate_stream.h"
#include "tests/platform/archive/zip_fixture.h"

// Data of members whose headers are sound: what does not decode to what they promise is found by looking into
// the member and by saving it on alike.

namespace {

using namespace testing;

class ZipMemberData : public ZipTest {
  protected:
    void expectFault(const ZipMember& member, const std::string& fault) {
        const ZipImage image{.members = {stored("first", "1"), member, stored("last", "2")}};
        const std::string expected = "member " + member.central.name + ": " + fault;
        EXPECT_EQ(saveRefusal(image), expected);

        const ArchiveHandle archive;
        ASSERT_EQ(zArchive_Load(archive.get(), write(image).c_str()), zStatus_Success);
        std::int64_t index = 7;
        EXPECT_EQ(zArchive_Find(archive.get(), member.central.name.c_str(), &index), zStatus_Malformed);
        EXPECT_EQ(detail(zStatus_Malformed), expected);
        EXPECT_EQ(index, 7);
        EXPECT_EQ(contentOf(archive.get(), "first"), "1");
        EXPECT_EQ(contentOf(archive.get(), "last"), "2");
    }

    void expectContent(const ZipMember& member, const std::string& content) {
        const ZipImage image{.members = {member}};
        EXPECT_EQ(resaved(image), image.bytes());
        const ArchiveHandle archive;
        ASSERT_EQ(zArchive_Load(archive.get(), scratch.path("saved.zip").c_str()), zStatus_Success);
        EXPECT_EQ(contentOf(archive.get(), member.central.name), content);
    }
};

TEST_F(ZipMemberData, isWhatItsHeadersPromise) {
    for (const std::string& content :
         {std::string(), std::string("x"), std::string("a\0b", 3), std::string(300'000, 'y')}) {
        expectContent(stored("a", content), content);
        expectContent(deflated("a", content), content);
    }
}

TEST_F(ZipMemberData, refusesAWrongChecksum) {
    ZipMember member = stored("a", "content");
    member.data[3] = 'T';
    expectFault(member, "checksum mismatch");
    member = deflated("a", "content");
    member.both([](ZipFields& fields) { fields.crc ^= 0x80000000; });
    expectFault(member, "checksum mismatch");
    member = stored("a", "");
    member.both([](ZipFields& fields) { fields.crc = 1; });
    expectFault(member, "checksum mismatch");
}

TEST_F(ZipMemberData, refusesAWrongSize) {
    ZipMember member = deflated("a", "content");
    member.both([](ZipFields& fields) { --fields.size; });
    expectFault(member, "it decodes to more bytes than its size says");
    member.both([](ZipFields& fields) { fields.size = 0; });
    expectFault(member, "it decodes to more bytes than its size says");
    member.both([](ZipFields& fields) { fields.size = 8; });
    expectFault(member, "it decodes to fewer bytes than its size says");
}

TEST_F(ZipMemberData, neverAsksForMemoryThatNoStreamCanFill) {
    ZipMember member = deflated("a", "content");
    member.both([](ZipFields& fields) { fields.size = allOnes32 - 1; });
    expectFault(member, "it decodes to fewer bytes than its size says");
    member.both([](ZipFields& fields) {
        fields.size = allOnes32;
        fields.extra = extraRecord(zip64Id, number(1ull << 62, 8));
    });
    expectFault(member, "it decodes to fewer bytes than its size says");
}

TEST_F(ZipMemberData, refusesBytesBehindTheStream) {
    ZipMember member = packed("a", DeflateStream().fixedBlock("content").bytes() + "x", "content");
    expectFault(member, "its stream ends before its compressed size");
    member = packed("a", DeflateStream().fixedBlock("").bytes() + std::string(100'000, '\0'), "");
    expectFault(member, "its stream ends before its compressed size");
}

TEST_F(ZipMemberData, refusesEveryMalformedStream) {
    using S = DeflateStream;
    const std::string content = "content";
    const auto expect = [&](const S& stream, const std::string& phrase) {
        expectFault(packed("a", stream.bytes(), content), "damaged: " + phrase);
    };
    expect(S(), "the stream ends early");
    expect(S().header(true, S::fixedType).fixedLiterals("con"), "the stream ends early");
    expect(S().header(true, S::unknownType), "a block of unknown type");
    expect(S().header(true, S::storedType).align().bits(7, 16).bits(7, 16),
           "a stored block's length contradicts its complement");
    expect(S().header(true, S::dynamicType).bits(30, 5).bits(0, 5).bits(0, 4),
           "a block declares more codes than there are");
    expect(S().header(true, S::dynamicType).bits(0, 5).bits(0, 5).bits(0, 4).bits(0xFFF, 12),
           "a block's code lengths make no code");
    std::vector<unsigned> noEnd(257);
    noEnd[0] = 1;
    expect(S().dynamicHeader(noEnd, {0}), "a block without an end code");
    expect(S().header(true, S::fixedType).fixedSymbol(286), "bits that are no code");
    expect(S().header(true, S::fixedType).fixedLiterals("c").fixedSymbol(257).code(1, 5),
           "a match reaches back before the first byte");
}

TEST_F(ZipMemberData, carriesWhatItCannotReadAndRefusesToLookIntoIt) {
    ZipMember encrypted = deflated("encrypted", "no stream");
    encrypted.data = "whatever";
    encrypted.both([](ZipFields& fields) {
        fields.flags = encryptedFlag;
        fields.compressedSize = 8;
    });
    ZipMember bzip2 = encrypted;
    bzip2.both([](ZipFields& fields) {
        fields.name = "other";
        fields.flags = 0;
        fields.method = 12;
    });
    const ZipImage image{.members = {encrypted, bzip2}};
    EXPECT_EQ(resaved(image), image.bytes());

    const ArchiveHandle archive;
    ASSERT_EQ(zArchive_Load(archive.get(), write(image).c_str()), zStatus_Success);
    std::int64_t index = 0;
    EXPECT_EQ(zArchive_Find(archive.get(), "encrypted", &index), zStatus_Unsupported);
    EXPECT_EQ(detail(zStatus_Unsupported), "member encrypted: it is encrypted");
    EXPECT_EQ(zArchive_Find(archive.get(), "other", &index), zStatus_Unsupported);
    EXPECT_EQ(detail(zStatus_Unsupported), "member other: compression method 12 is not read");
}

TEST_F(ZipMemberData, isReadAcrossThePiecesOfTheBuffers) {
    // Sizes around those of the pieces that pass through: 64 KiB of room, 256 KiB buffers and decoded pieces.
    for (const std::size_t size : {65'537u, 262'143u, 300'000u}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * i >> 7);
        expectContent(stored("a", content), content);
        expectContent(streamed(deflated("a", content)), content);
        ZipMember damaged = stored("a", content);
        damaged.data.back() = static_cast<char>(damaged.data.back() + 1);
        expectFault(damaged, "checksum mismatch");
    }
}

}  // namespace
