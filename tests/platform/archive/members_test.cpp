#include "platform/archive/members.h"

#include <gmock/gmock.h>

#include "platform/archive/archive.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::ElementsAre;
using testing::loadArchive;
using testing::ScratchDirectory;
using testing::writeArchive;

std::vector<zMemberInfo> membersOf(zHandle archive) {
    std::vector<zMemberInfo> members;
    EXPECT_EQ(zArchive_Members(archive, members), zStatus_Success);
    return members;
}

/// An archive file of one stored member "a" whose content is changed without its checksum.
std::string writeDamaged(const ScratchDirectory& scratch) {
    const std::string path = writeArchive(scratch.path("damaged.pkg"), {{"a", "content"}, {"b", "sound"}});
    std::string bytes = scratch.read("damaged.pkg");
    bytes.replace(bytes.find("content"), 7, "CONTENT");
    return scratch.write("damaged.pkg", bytes);
}

TEST(Members, areDescribedInTheirOrder) {
    const ScratchDirectory scratch;
    const auto archive =
        loadArchive(writeArchive(scratch.path("a.pkg"), {{"one", "123456789"}, {"two", ""}}));
    const auto members = membersOf(archive.get());
    ASSERT_EQ(members.size(), 2u);
    EXPECT_EQ(members[0].name, "one");
    EXPECT_EQ(members[0].size, 9u);
    EXPECT_EQ(members[0].packedSize, 9u);
    EXPECT_EQ(members[0].crc, 0xCBF43926u);  // the check value of CRC-32
    EXPECT_EQ(members[0].method, 0u);
    EXPECT_FALSE(members[0].encrypted);
    EXPECT_EQ(members[0].time, (zMemberTime{1980, 1, 1, 0, 0, 0}));
    EXPECT_EQ(members[1].name, "two");
}

TEST(Members, addedOnesAreDescribedAsTheyWouldBeSaved) {
    const ScratchDirectory scratch;
    const auto archive = loadArchive(writeArchive(scratch.path("a.pkg"), {{"gone", "x"}, {"kept", "y"}}));
    EXPECT_EQ(zArchive_DeleteFile(archive.get(), "gone"), zStatus_Success);
    EXPECT_EQ(zArchive_AddData(archive.get(), "123456789", 9, "new", 0), zStatus_Success);
    const auto members = membersOf(archive.get());
    EXPECT_EQ(zArchive_Save(archive.get(), scratch.path("b.pkg").c_str()), zStatus_Success);
    EXPECT_EQ(members, membersOf(loadArchive(scratch.path("b.pkg")).get()));
}

TEST(Members, areVerifiedOneByOne) {
    const ScratchDirectory scratch;
    const auto archive = loadArchive(writeDamaged(scratch));
    EXPECT_EQ(zArchive_VerifyMember(archive.get(), "a"), zStatus_Malformed);
    EXPECT_EQ(zArchive_VerifyMember(archive.get(), "b"), zStatus_Success);
    EXPECT_EQ(zArchive_VerifyMember(archive.get(), "c"), zStatus_NotFound);
}

TEST(Members, areVerifiedInTheFileThatTookTheOldOnesPlace) {
    const ScratchDirectory scratch;
    const std::string path = writeArchive(scratch.path("a.pkg"), {{"a", "x"}, {"b", "y"}});
    const auto archive = loadArchive(path);
    EXPECT_EQ(zArchive_VerifyMember(archive.get(), "b"), zStatus_Success);
    EXPECT_EQ(zArchive_DeleteFile(archive.get(), "a"), zStatus_Success);
    EXPECT_EQ(zArchive_Save(archive.get(), path.c_str()), zStatus_Success);
    EXPECT_EQ(zArchive_VerifyMember(archive.get(), "b"), zStatus_Success);
    EXPECT_EQ(membersOf(archive.get()).at(0).name, "b");
}

TEST(Members, tryingToSaveWritesNothingAndFailsAsSavingDoes) {
    const ScratchDirectory scratch;
    const auto damaged = loadArchive(writeDamaged(scratch));
    EXPECT_EQ(zArchive_TrySave(damaged.get()), zStatus_Malformed);
    EXPECT_EQ(zArchive_DeleteFile(damaged.get(), "a"), zStatus_Success);
    EXPECT_EQ(zArchive_TrySave(damaged.get()), zStatus_Success);
    EXPECT_THAT(scratch.entries(), ElementsAre("damaged.pkg"));
}

TEST(Members, aForeignHandleIsRefused) {
    std::vector<zMemberInfo> members;
    EXPECT_EQ(zArchive_Members(nullptr, members), zStatus_BadArgument);
    EXPECT_EQ(zArchive_VerifyMember(nullptr, "a"), zStatus_BadArgument);
    EXPECT_EQ(zArchive_TrySave(nullptr), zStatus_BadArgument);
}

}  // namespace
