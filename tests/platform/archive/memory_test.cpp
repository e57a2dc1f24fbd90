// How much memory a container takes, whatever the size of what it holds.

#include "platform/archive/crc32.h"
#include "platform/archive/members.h"
#include "tests/platform/archive/deflate_stream.h"
#include "tests/platform/archive/zip_fixture.h"
#include "tests/platform/xml/counted_memory.h"

namespace {

using namespace testing;

/// Allocations are seen by operators new and delete of this program.
class ArchiveMemory : public ZipTest {
  protected:
    static constexpr std::size_t memberSize = 1 + std::size_t{258} * 8192;
    /// What the container may need for itself: buffers, windows, tables.
    static constexpr std::size_t itsOwn = std::size_t{3} << 19;

    void SetUp() override {
        static const std::string bytes = archiveBytes();
        scratch.write("a.zip", bytes);
    }

    static std::string archiveBytes() {
        const std::string content(memberSize, 'y');
        ZipMember plain = stored("stored", "");
        plain.data = content;
        // One literal, and the same again and again.
        constexpr unsigned longestMatch = 258;
        DeflateStream stream;
        stream.header(true, DeflateStream::fixedType).fixedLiterals("y");
        for (std::size_t i = 1; i < memberSize; i += longestMatch) stream.fixedSymbol(285).code(0, 5);
        stream.fixedSymbol(256);
        ZipMember dense = packed("deflated", stream.bytes(), "");
        for (ZipMember* member : {&plain, &dense}) {
            member->both([&](ZipFields& fields) {
                // Bit by bit it would take long.
                fields.crc = checksum::update(0, content.data(), content.size());
                fields.size = content.size();
                fields.compressedSize = member->data.size();
            });
        }
        ZipImage image;
        image.members = {plain, dense, stored("script.xml", "<a/>")};
        return image.bytes();
    }

    /// The most that `work` holds at a time.
    template <typename Work>
    static std::size_t peakOf(Work work) {
        const std::size_t before = memoryCount().held;
        memoryCount().peak = before;
        work();
        return memoryCount().peak - before;
    }
};

TEST_F(ArchiveMemory, doesNotGrowWithMembersThatNobodyLooksInto) {
    const std::size_t peak = peakOf([&] {
        zHandle archive = nullptr;
        ASSERT_EQ(zArchive_Construct(&archive, &countedAllocator), zStatus_Success);
        ASSERT_EQ(zArchive_Load(archive, scratch.path("a.zip").c_str()), zStatus_Success);
        EXPECT_EQ(contentOf(archive, "script.xml"), "<a/>");
        ASSERT_EQ(zArchive_DeleteFile(archive, "script.xml"), zStatus_Success);
        ASSERT_EQ(zArchive_AddData(archive, "<b/>", 4, "script.xml", 0), zStatus_Success);
        ASSERT_EQ(zArchive_Save(archive, scratch.path("a.zip").c_str()), zStatus_Success);
        ASSERT_EQ(zArchive_Save(archive, scratch.path("b.zip").c_str()), zStatus_Success);
        EXPECT_EQ(zObject_Destroy(archive), zStatus_Success);
    });
    EXPECT_LT(peak, itsOwn);
    EXPECT_GT(peak, 64u * 1024) << "something was counted";
}

TEST_F(ArchiveMemory, doesNotGrowWithMembersThatAreVerified) {
    const ArchiveHandle archive;
    const std::size_t peak = peakOf([&] {
        ASSERT_EQ(zArchive_Load(archive.get(), scratch.path("a.zip").c_str()), zStatus_Success);
        for (const char* name : {"stored", "deflated"}) {
            EXPECT_EQ(zArchive_VerifyMember(archive.get(), name), zStatus_Success);
        }
        EXPECT_EQ(zArchive_TrySave(archive.get()), zStatus_Success);
    });
    EXPECT_LT(peak, itsOwn);
}

TEST_F(ArchiveMemory, ofAMemberLookedIntoGoesWithTheNextChange) {
    zHandle archive = nullptr;
    ASSERT_EQ(zArchive_Construct(&archive, &countedAllocator), zStatus_Success);
    ASSERT_EQ(zArchive_Load(archive, scratch.path("a.zip").c_str()), zStatus_Success);
    const std::size_t before = memoryCount().held;
    std::int64_t index = 0;
    ASSERT_EQ(zArchive_Find(archive, "deflated", &index), zStatus_Success);
    EXPECT_GE(memoryCount().held - before, memberSize);
    ASSERT_EQ(zArchive_DeleteFile(archive, "script.xml"), zStatus_Success);
    EXPECT_LT(memoryCount().held, before + itsOwn);
    EXPECT_EQ(zObject_Destroy(archive), zStatus_Success);
}

}  // namespace
