#include "platform/archive/zip_directory.h"

#include "tests/platform/archive/zip_fixture.h"

// The end records and the directory as a whole. Each image is sound but for the one thing the test names.

namespace {

using namespace testing;

class ZipDirectory : public ZipTest {
  protected:
    ZipImage image{.members = {stored("one", "1"), deflated("two", "22")}};
};

// ---- No end record where it must be ---------------------------------------------------------------------

TEST_F(ZipDirectory, loadsWhatIsSound) {
    EXPECT_EQ(refusal(image), "loads");
    EXPECT_EQ(refusal(ZipImage{}), "loads");
}

TEST_F(ZipDirectory, refusesWhatIsNoArchive) {
    EXPECT_EQ(refusal(""), "the file is empty");
    EXPECT_EQ(refusal("P"), "no end record: not a ZIP archive");
    EXPECT_EQ(refusal("#!/bin/sh\necho no archive, however long this text may be\n"),
              "no end record: not a ZIP archive");
    EXPECT_EQ(refusal(std::string(100'000, 'x')), "no end record: not a ZIP archive");
}

TEST_F(ZipDirectory, refusesEveryBeginningOfAnArchive) {
    image.comment = "a comment";
    const std::string whole = image.bytes();
    const std::size_t end = whole.size() - 22 - image.comment.size();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const char* why = size == 0         ? "the file is empty"
                          : size < 4        ? "no end record: not a ZIP archive"
                          : size < end + 4  ? "no end record: the archive is cut short"
                          : size < end + 22 ? "the end record is cut short"
                                            : "the archive comment is cut short";
        EXPECT_EQ(refusal(whole.substr(0, size)), why) << size;
    }
}

TEST_F(ZipDirectory, refusesBytesBehindTheEnd) {
    EXPECT_EQ(refusal(image.bytes() + "x"), "bytes behind the end record");
    EXPECT_EQ(refusal(image.bytes() + std::string(1, '\0')), "bytes behind the end record");
    // Too far from the end to be looked for.
    EXPECT_EQ(refusal(image.bytes() + std::string(70'000, ' ')), "no end record: the archive is cut short");
}

TEST_F(ZipDirectory, refusesTwoArchivesInOneFile) {
    const std::string other = ZipImage{.members = {stored("other", "other")}}.bytes();
    EXPECT_EQ(refusal(image.bytes() + other),
              "the central directory does not end where the end record begins");
}

TEST_F(ZipDirectory, refusesACommentThatHoldsAnotherEnd) {
    image.comment = "before PK\x05\x06 behind";
    EXPECT_EQ(refusal(image), "the archive comment holds another end record's mark");
    image.comment = ZipImage{}.bytes();
    EXPECT_EQ(refusal(image), "the archive comment holds another end record's mark");
}

TEST_F(ZipDirectory, takesCommentsOfEveryLength) {
    for (const std::size_t size : {1u, 22u, 4096u, 65'535u}) {
        image.comment = std::string(size, 'c');
        EXPECT_EQ(refusal(image), "loads") << size;
    }
}

// ---- What the end record says ---------------------------------------------------------------------------

TEST_F(ZipDirectory, refusesSeveralDisks) {
    for (auto number : {&ZipNumbers::disk, &ZipNumbers::directoryDisk, &ZipNumbers::countHere}) {
        image.end = {};
        image.end.*number = 1;
        EXPECT_EQ(refusal(image), "the archive is spread over several disks");
    }
}

TEST_F(ZipDirectory, refusesADirectoryThatIsNotWhereItIsSaidToBe) {
    const std::string sound = image.bytes();
    const std::uint64_t begin = image.members[0].localRecord().size() + image.members[1].localRecord().size();
    const std::uint64_t size = sound.size() - 22 - begin;
    for (const std::uint64_t wrong : {std::uint64_t{0}, begin - 1, begin + 1, allOnes32 - 1, allOnes32}) {
        image.end = {.directoryOffset = wrong};
        EXPECT_EQ(refusal(image), "the central directory does not end where the end record begins") << wrong;
    }
    for (const std::uint64_t wrong : {std::uint64_t{0}, size - 1, size + 1, allOnes32}) {
        image.end = {.directorySize = wrong};
        EXPECT_EQ(refusal(image), "the central directory does not end where the end record begins") << wrong;
    }
}

TEST_F(ZipDirectory, refusesBytesInFrontThatOffsetsDoNotCount) {
    EXPECT_EQ(refusal("MZ" + image.bytes()),
              "the central directory does not end where the end record begins");
}

TEST_F(ZipDirectory, takesBytesInFrontThatOffsetsCount) {
    image.prefix = "#!/bin/sh\n";
    EXPECT_EQ(refusal(image), "loads");
    image.prefix.clear();
    EXPECT_EQ(resaved(image), image.bytes());
}

TEST_F(ZipDirectory, refusesAWrongNumberOfEntries) {
    for (const std::uint64_t count : {3u, 4u, 65'535u}) {
        image.end = {.countHere = count, .count = count};
        EXPECT_EQ(refusal(image), "an entry of the central directory is missing or damaged") << count;
    }
    for (const std::uint64_t count : {0u, 1u}) {
        image.end = {.countHere = count, .count = count};
        EXPECT_EQ(refusal(image), "the central directory holds more than the stated number of entries");
    }
}

TEST_F(ZipDirectory, refusesBytesBehindTheLastEntry) {
    image.behindDirectory = "x";
    const std::uint64_t size =
        1 + image.members[0].centralRecord(0).size() + image.members[1].centralRecord(0).size();
    image.end.directorySize = size;
    EXPECT_EQ(refusal(image), "the central directory holds more than the stated number of entries");
    image.end = {};
    EXPECT_EQ(refusal(image), "the central directory does not end where the end record begins");
}

// ---- Members beside each other --------------------------------------------------------------------------

TEST_F(ZipDirectory, refusesANameThatOccursTwice) {
    image.members.push_back(stored("one", "another"));
    EXPECT_EQ(refusal(image), "member one: the name occurs twice");
}

TEST_F(ZipDirectory, tellsNamesApartByEveryByte) {
    image.members.push_back(stored("One", ""));
    image.members.push_back(stored("one/", ""));
    image.members.push_back(stored("./one", ""));
    EXPECT_EQ(refusal(image), "loads");
}

TEST_F(ZipDirectory, refusesOverlappingMembers) {
    // The second entry points to the first one's data too, by a local header of its own inside it.
    ZipMember inner = stored("inner", "i");
    ZipMember outer = stored("outer", inner.localRecord());
    const std::uint64_t inside = outer.localRecord().size() - inner.localRecord().size();
    inner.offset = inside;
    image.members = {outer, inner};
    EXPECT_EQ(refusal(image), "two members overlap at offset " + std::to_string(inside));
    image.directoryOrder = {1, 0};
    EXPECT_EQ(refusal(image), "two members overlap at offset " + std::to_string(inside));
}

TEST_F(ZipDirectory, refusesAMemberInsideADataDescriptor) {
    // The size at the descriptor's end is the beginning of the next member's header.
    ZipMember outer = deflated("outer", "content");
    const ZipMember inner = stored("inner", "");
    outer.both([&](ZipFields& fields) { fields.size = inner.localSignature | inner.local.needed << 32; });
    const std::uint64_t size = outer.central.size;
    outer = streamed(outer, 8);
    outer.central.size = allOnes32;
    outer.central.extra = extraRecord(zip64Id, number(size, 8));
    image.members = {outer, inner};
    EXPECT_EQ(refusal(image), "loads");
    image.members[0].descriptor.resize(outer.descriptor.size() - 8);
    EXPECT_EQ(refusal(image),
              "two members overlap at offset " + std::to_string(outer.localRecord().size() - 8));
}

TEST_F(ZipDirectory, refusesOneMemberUnderTwoEntries) {
    // Both entries must have the local header's name, so they cannot but have the same.
    ZipMember again = image.members[0];
    again.offset = 0;
    image.members.push_back(again);
    EXPECT_EQ(refusal(image), "member one: the name occurs twice");
}

TEST_F(ZipDirectory, putsMembersInTheDirectorysOrder) {
    const std::string sound = ZipImage{.members = {image.members[1], image.members[0]}}.bytes();
    image.directoryOrder = {1, 0};
    EXPECT_EQ(resaved(image), sound);
}

TEST_F(ZipDirectory, leavesGapsOut) {
    const std::string sound = image.bytes();
    image.members[0].slack = "in front";
    image.members[1].slack = "between";
    image.beforeDirectory = "before the directory";
    EXPECT_EQ(resaved(image), sound);
}

// ---- ZIP64 end records ----------------------------------------------------------------------------------

class Zip64Directory : public ZipDirectory {
  protected:
    void SetUp() override { image.zip64.emplace(); }
};

TEST_F(Zip64Directory, isTakenThoughItIsNotNeeded) {
    EXPECT_EQ(refusal(image), "loads");
    image.zip64->extension = "an extensible data sector";
    EXPECT_EQ(refusal(image), "loads");
    image.zip64->disks = 0;
    EXPECT_EQ(refusal(image), "loads");
}

TEST_F(Zip64Directory, isNotWrittenThoughItWasReadWhenItIsNotNeeded) {
    const std::string written = resaved(image);
    image.zip64.reset();
    EXPECT_EQ(written, image.bytes());
}

TEST_F(Zip64Directory, isBelievedWhereThePlainRecordHasMarks) {
    image.end = {allOnes16, allOnes16, allOnes16, allOnes16, allOnes32, allOnes32};
    EXPECT_EQ(refusal(image), "loads");
    for (auto number :
         {&ZipNumbers::disk, &ZipNumbers::directoryDisk, &ZipNumbers::countHere, &ZipNumbers::count}) {
        image.end = {};
        image.end.*number = allOnes16;
        EXPECT_EQ(refusal(image), "loads");
    }
    for (auto number : {&ZipNumbers::directorySize, &ZipNumbers::directoryOffset}) {
        image.end = {};
        image.end.*number = allOnes32;
        EXPECT_EQ(refusal(image), "loads");
    }
}

TEST_F(Zip64Directory, refusesNumbersThatDiffer) {
    for (auto number : {&ZipNumbers::disk, &ZipNumbers::directoryDisk, &ZipNumbers::countHere,
                        &ZipNumbers::count, &ZipNumbers::directorySize, &ZipNumbers::directoryOffset}) {
        image.end = {};
        image.zip64->stated = {};
        image.end.*number = 7;
        EXPECT_EQ(refusal(image), "the end record and the ZIP64 end record differ");
        image.end = {};
        image.zip64->stated.*number = 7;
        EXPECT_EQ(refusal(image), "the end record and the ZIP64 end record differ");
    }
}

TEST_F(Zip64Directory, refusesWrongNumbersBehindMarks) {
    image.end = {allOnes16, allOnes16, allOnes16, allOnes16, allOnes32, allOnes32};
    for (auto number : {&ZipNumbers::disk, &ZipNumbers::directoryDisk, &ZipNumbers::countHere}) {
        image.zip64->stated = {};
        image.zip64->stated.*number = 1;
        EXPECT_EQ(refusal(image), "the archive is spread over several disks");
    }
    for (auto number : {&ZipNumbers::directorySize, &ZipNumbers::directoryOffset}) {
        for (const std::uint64_t wrong : {std::uint64_t{0}, allOnes32, ~std::uint64_t{0}}) {
            image.zip64->stated = {};
            image.zip64->stated.*number = wrong;
            EXPECT_EQ(refusal(image), "the central directory does not end where the end record begins");
        }
    }
    image.zip64->stated = {.countHere = ~std::uint64_t{0}, .count = ~std::uint64_t{0}};
    EXPECT_EQ(refusal(image), "an entry of the central directory is missing or damaged");
}

TEST_F(Zip64Directory, refusesALocatorOnAnotherDisk) {
    image.zip64->locatorDisk = 1;
    EXPECT_EQ(refusal(image), "the archive is spread over several disks");
    image.zip64->locatorDisk = 0;
    image.zip64->disks = 2;
    EXPECT_EQ(refusal(image), "the archive is spread over several disks");
}

TEST_F(Zip64Directory, refusesALocatorThatPointsElsewhere) {
    const std::uint64_t end = image.bytes().size() - 22 - 20;  // where the locator begins
    for (const std::uint64_t wrong : {end - 55, end, end + 1, ~std::uint64_t{0}}) {
        image.zip64->locatorOffset = wrong;
        EXPECT_EQ(refusal(image), "the ZIP64 locator points out of its place") << wrong;
    }
    for (const std::uint64_t wrong : {std::uint64_t{0}, end - 57}) {
        image.zip64->locatorOffset = wrong;
        EXPECT_EQ(refusal(image), "no ZIP64 end record where its locator points") << wrong;
    }
}

TEST_F(Zip64Directory, refusesARecordOfAnotherSize) {
    for (const std::uint64_t wrong :
         {std::uint64_t{0}, std::uint64_t{43}, std::uint64_t{45}, ~std::uint64_t{0}}) {
        image.zip64->recordSize = wrong;
        EXPECT_EQ(refusal(image), "the ZIP64 end record has another size than stated") << wrong;
    }
}

TEST_F(Zip64Directory, refusesADamagedRecord) {
    image.zip64->signature = 0x06064b51;
    EXPECT_EQ(refusal(image), "no ZIP64 end record where its locator points");
}

}  // namespace
