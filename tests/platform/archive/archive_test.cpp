#include "platform/archive/archive.h"

#include <cstdlib>
#include <cstring>

#include "platform/base/log.h"
#include "tests/platform/archive/zip_fixture.h"

// The operations as their callers see them: statuses, details, log entries, handles.

namespace {

using namespace testing;

std::vector<std::string> logged;

zStatus note(void*, const zLogEntry* entry) {
    logged.emplace_back(entry->message);
    return zStatus_Success;
}

class Archive : public ZipTest {
  protected:
    void SetUp() override {
        logged.clear();
        ASSERT_EQ(zApiLib_AddLogHandler(note, nullptr), zStatus_Success);
    }
    void TearDown() override { EXPECT_EQ(zApiLib_RemoveLogHandler(note, nullptr), zStatus_Success); }

    zStatus load(const std::string& path) { return zArchive_Load(archive.get(), path.c_str()); }
    zStatus add(const std::string& name, const std::string& content) {
        return zArchive_AddData(archive.get(), content.data(), content.size(), name.c_str(), 0);
    }
    zStatus find(const std::string& name) { return zArchive_Find(archive.get(), name.c_str(), &index); }

    const ArchiveHandle archive;
    std::int64_t index = 77;
};

// ---- Handles --------------------------------------------------------------------------------------------

TEST_F(Archive, needsAPlaceForAHandle) {
    EXPECT_EQ(zTdLib_Construct(nullptr), zStatus_BadArgument);
    EXPECT_EQ(zArchive_Construct(nullptr, nullptr), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "no place for a handle given");
}

TEST_F(Archive, refusesHandlesOfOtherThings) {
    zHandle library = nullptr;
    ASSERT_EQ(zTdLib_Construct(&library), zStatus_Success);
    for (zHandle other : {zHandle{nullptr}, library}) {
        EXPECT_EQ(zArchive_Load(other, "a.zip"), zStatus_BadArgument);
        EXPECT_EQ(zArchive_Save(other, "a.zip"), zStatus_BadArgument);
        EXPECT_EQ(zArchive_Find(other, "a", &index), zStatus_BadArgument);
        EXPECT_EQ(zArchive_AddData(other, "", 0, "a", 0), zStatus_BadArgument);
        EXPECT_EQ(zArchive_DeleteFile(other, "a"), zStatus_BadArgument);
        EXPECT_EQ(zArchive_AddLive(other, nullptr, "a"), zStatus_BadArgument);
        EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the handle is that of no archive container");
        EXPECT_EQ(zArchive_Live(other, "a"), nullptr);
        EXPECT_EQ(zArchive_FileSize(other, 0), 0u);
        EXPECT_EQ(zArchive_FileData(other, 0), nullptr);
    }
    EXPECT_EQ(zObject_Destroy(library), zStatus_Success);
}

TEST_F(Archive, libraryReportsWhatIsStillAliveWhenItGoes) {
    zHandle library = nullptr;
    zApiLib_EnableLeakLogging(1);
    ASSERT_EQ(zTdLib_Construct(&library), zStatus_Success);
    EXPECT_EQ(zObject_Destroy(library), zStatus_Success);
    EXPECT_THAT(logged, ElementsAre("leaked object: archive container"));  // the test's own

    logged.clear();
    zApiLib_EnableLeakLogging(0);
    ASSERT_EQ(zTdLib_Construct(&library), zStatus_Success);
    EXPECT_EQ(zObject_Destroy(library), zStatus_Success);
    EXPECT_THAT(logged, IsEmpty());
}

// ---- Loading --------------------------------------------------------------------------------------------

TEST_F(Archive, loadSaysWhatIsNoContainer) {
    const std::string path = scratch.write("a.zip", "no archive");
    EXPECT_EQ(load(path), zStatus_Malformed);
    EXPECT_EQ(detail(zStatus_Malformed), "no end record: not a ZIP archive");
    EXPECT_THAT(logged, ElementsAre("zArchive_Load: " + path + ": no end record: not a ZIP archive"));
}

TEST_F(Archive, loadLogsNothingAboutWhatIsNoPlainFile) {
    EXPECT_EQ(load(scratch.path("absent")), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), scratch.path("absent") + ": No such file or directory");
    EXPECT_EQ(load(scratch.path()), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), scratch.path() + ": Is a directory");
    EXPECT_EQ(load(""), zStatus_NotFound);
    EXPECT_THAT(logged, IsEmpty());
}

TEST_F(Archive, loadReplacesWhatWasThere) {
    ASSERT_EQ(add("old", "o"), zStatus_Success);
    ASSERT_EQ(load(write({.members = {stored("new", "n")}})), zStatus_Success);
    EXPECT_EQ(find("old"), zStatus_NotFound);
    EXPECT_EQ(contentOf(archive.get(), "new"), "n");
    EXPECT_THAT(logged, IsEmpty());
}

TEST_F(Archive, loadThatFailsLeavesTheContainerAsItWas) {
    ASSERT_EQ(load(write({.members = {stored("member", "m")}})), zStatus_Success);
    ASSERT_EQ(add("added", "a"), zStatus_Success);
    EXPECT_EQ(load(scratch.path("absent")), zStatus_NotFound);
    EXPECT_EQ(load(scratch.write("b.zip", "no archive")), zStatus_Malformed);
    EXPECT_EQ(load(scratch.write("b.zip", ZipImage{.members = {stored("b", ""), stored("b", "")}}.bytes())),
              zStatus_Malformed);
    EXPECT_EQ(contentOf(archive.get(), "member"), "m");
    EXPECT_EQ(contentOf(archive.get(), "added"), "a");
    EXPECT_EQ(zArchive_Save(archive.get(), scratch.path("c.zip").c_str()), zStatus_Success);
}

// ---- Looking into members -------------------------------------------------------------------------------

TEST_F(Archive, findAnswersMinus999ForAbsentMembers) {
    EXPECT_EQ(find("member"), zStatus_NotFound);
    EXPECT_EQ(find("member"), -999);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), "no member member");
    ASSERT_EQ(load(write({.members = {stored("member", "m"), stored("dir/", "")}})), zStatus_Success);
    for (const char* other : {"", "Member", "member ", "membe", "/member", "dir", "dir\\"}) {
        EXPECT_EQ(find(other), zStatus_NotFound) << other;
        EXPECT_EQ(detail(zStatus_NotFound), std::string("no member ") + other);
    }
    EXPECT_EQ(index, 77);
}

TEST_F(Archive, findGivesIndexSizeAndData) {
    ASSERT_EQ(load(write({.members = {stored("a", "first"), deflated("b", "second")}})), zStatus_Success);
    ASSERT_EQ(find("b"), zStatus_Success);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(zArchive_FileSize(archive.get(), index), 6u);
    EXPECT_STREQ(static_cast<const char*>(zArchive_FileData(archive.get(), index)), "second");
}

TEST_F(Archive, dataEndsInAZeroByte) {
    ASSERT_EQ(
        load(write({.members = {stored("stored", "s"), deflated("deflated", "dd"), stored("empty", "")}})),
        zStatus_Success);
    ASSERT_EQ(add("added", "aaa"), zStatus_Success);
    ASSERT_EQ(add("added empty", ""), zStatus_Success);
    for (const char* name : {"stored", "deflated", "empty", "added", "added empty"}) {
        ASSERT_EQ(find(name), zStatus_Success);
        const auto* data = static_cast<const char*>(zArchive_FileData(archive.get(), index));
        ASSERT_NE(data, nullptr) << name;
        EXPECT_EQ(data[zArchive_FileSize(archive.get(), index)], 0) << name;
    }
}

TEST_F(Archive, hasNoDataForAnIndexThatNoFindHasAnswered) {
    ASSERT_EQ(load(write({.members = {stored("a", "first")}})), zStatus_Success);
    for (const std::int64_t other :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, INT64_MAX, INT64_MIN}) {
        EXPECT_EQ(zArchive_FileSize(archive.get(), other), 0u) << other;
        EXPECT_EQ(zArchive_FileData(archive.get(), other), nullptr) << other;
    }
}

// ---- Editing --------------------------------------------------------------------------------------------

TEST_F(Archive, addCopiesTheBytes) {
    std::string buffer = "content";
    ASSERT_EQ(add("a", buffer), zStatus_Success);
    buffer.assign(7, 'x');
    EXPECT_EQ(contentOf(archive.get(), "a"), "content");
}

TEST_F(Archive, addRefusesWhatIsNoMember) {
    const auto detailOf = [] { return std::string(failure::detailOf(zStatus_BadArgument)); };
    EXPECT_EQ(zArchive_AddData(archive.get(), "x", 1, "a", 1), zStatus_BadArgument);
    EXPECT_EQ(detailOf(), "options must be 0");
    EXPECT_EQ(zArchive_AddData(archive.get(), nullptr, 1, "a", 0), zStatus_BadArgument);
    EXPECT_EQ(detailOf(), "no data given");
    EXPECT_EQ(zArchive_AddLive(archive.get(), nullptr, "a"), zStatus_BadArgument);
    EXPECT_EQ(detailOf(), "no live content given");
    EXPECT_EQ(add("", "x"), zStatus_BadArgument);
    EXPECT_EQ(detailOf(), "a member's name must not be empty");
    EXPECT_EQ(add(std::string(65'536, 'n'), "x"), zStatus_BadArgument);
    EXPECT_EQ(detailOf(), "a member's name is longer than the archive allows");
    EXPECT_EQ(add("a", "x"), zStatus_Success);
    EXPECT_EQ(add("a", "y"), zStatus_BadArgument);
    EXPECT_EQ(detailOf(), "there is a member a already");
    EXPECT_EQ(contentOf(archive.get(), "a"), "x");

    ASSERT_EQ(load(write({.members = {stored("loaded", "")}})), zStatus_Success);
    EXPECT_EQ(add("loaded", "y"), zStatus_BadArgument);
    EXPECT_EQ(detail(zStatus_BadArgument), "there is a member loaded already");
}

TEST_F(Archive, addTakesNoBytesAndTheLongestName) {
    EXPECT_EQ(zArchive_AddData(archive.get(), nullptr, 0, "empty", 0), zStatus_Success);
    const std::string longest(65'535, 'n');
    EXPECT_EQ(add(longest, "x"), zStatus_Success);
    ASSERT_EQ(zArchive_Save(archive.get(), scratch.path("a.zip").c_str()), zStatus_Success);
    ASSERT_EQ(load(scratch.path("a.zip")), zStatus_Success);
    EXPECT_EQ(contentOf(archive.get(), "empty"), "");
    EXPECT_EQ(contentOf(archive.get(), longest), "x");
}

TEST_F(Archive, deleteOfAnAbsentMemberIsASuccess) {
    EXPECT_EQ(zArchive_DeleteFile(archive.get(), "vekPackages.xml"), zStatus_Success);
    EXPECT_EQ(zArchive_DeleteFile(archive.get(), ""), zStatus_Success);
    ASSERT_EQ(load(write({.members = {stored("a", "first")}})), zStatus_Success);
    EXPECT_EQ(zArchive_DeleteFile(archive.get(), "A"), zStatus_Success);
    EXPECT_EQ(zArchive_DeleteFile(archive.get(), "a"), zStatus_Success);
    EXPECT_EQ(find("a"), zStatus_NotFound);
    EXPECT_EQ(zArchive_DeleteFile(archive.get(), "a"), zStatus_Success);
}

// ---- Saving ---------------------------------------------------------------------------------------------

TEST_F(Archive, saveSaysWhyItCannotWrite) {
    EXPECT_EQ(zArchive_Save(archive.get(), scratch.path("absent/a.zip").c_str()), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound),
              scratch.path("absent/a.zip") + ": No such file or directory");
    EXPECT_EQ(zArchive_Save(archive.get(), scratch.path().c_str()), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), scratch.path() + ": Is a directory");
}

// ---- Memory ---------------------------------------------------------------------------------------------

bool exhausted = false;
int blocks = 0;

void* allocate(std::size_t size) {
    if (exhausted) return nullptr;
    ++blocks;
    void* block = std::malloc(size);
    // What comes fresh from the system is zero by itself.
    return block == nullptr ? nullptr : std::memset(block, '#', size);
}
void release(void* block) {
    if (block == nullptr) return;
    --blocks;
    std::free(block);
}
constexpr zAllocator counting{allocate, release};

TEST_F(Archive, dataEndsInAZeroByteWhateverTheMemoryHeld) {
    zHandle counted = nullptr;
    ASSERT_EQ(zArchive_Construct(&counted, &counting), zStatus_Success);
    const std::string path = write({.members = {stored("stored", "s"), deflated("deflated", "dd")}});
    ASSERT_EQ(zArchive_Load(counted, path.c_str()), zStatus_Success);
    ASSERT_EQ(zArchive_AddData(counted, "aaa", 3, "added", 0), zStatus_Success);
    for (const auto& [name, content] : {std::pair("stored", "s"), {"deflated", "dd"}, {"added", "aaa"}}) {
        ASSERT_EQ(zArchive_Find(counted, name, &index), zStatus_Success);
        EXPECT_STREQ(static_cast<const char*>(zArchive_FileData(counted, index)), content);
    }
    EXPECT_EQ(zObject_Destroy(counted), zStatus_Success);
}

TEST_F(Archive, keepsMembersInTheGivenAllocatorAndSurvivesItsEnd) {
    zHandle counted = nullptr;
    ASSERT_EQ(zArchive_Construct(&counted, &counting), zStatus_Success);
    ASSERT_EQ(zArchive_Load(counted, write({.members = {stored("a", "first")}}).c_str()), zStatus_Success);
    EXPECT_EQ(blocks, 0);
    EXPECT_EQ(contentOf(counted, "a"), "first");
    EXPECT_EQ(blocks, 1);
    ASSERT_EQ(zArchive_AddData(counted, "x", 1, "b", 0), zStatus_Success);
    exhausted = true;
    EXPECT_EQ(zArchive_AddData(counted, "y", 1, "c", 0), zStatus_NoMemory);
    EXPECT_EQ(zArchive_Find(counted, "a", &index), zStatus_NoMemory);
    EXPECT_EQ(failure::detailOf(zStatus_NoMemory), "");
    exhausted = false;
    EXPECT_EQ(contentOf(counted, "a"), "first");
    EXPECT_EQ(contentOf(counted, "b"), "x");
    EXPECT_EQ(zArchive_Find(counted, "c", &index), zStatus_NotFound);
    EXPECT_EQ(zObject_Destroy(counted), zStatus_Success);
    EXPECT_EQ(blocks, 0);
}

}  // namespace
