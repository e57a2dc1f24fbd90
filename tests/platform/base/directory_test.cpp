#include "platform/base/directory.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "platform/base/failure.h"
#include "platform/base/list.h"
#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ScratchDirectory;

TEST(DirectoryApplication, isThatOfTheSystemLayer) {
    std::string expected;
    ASSERT_FALSE(os::applicationDirectory(expected));
    char buffer[512] = "untouched";
    EXPECT_EQ(zDirectory_Application(buffer, sizeof buffer), zStatus_Success);
    EXPECT_EQ(buffer, expected);
    EXPECT_TRUE(zDirectory_Exists(buffer));
}

TEST(DirectoryApplication, leavesTheBufferEmptyWhenItDoesNotFit) {
    char buffer[2] = "x";
    EXPECT_EQ(zDirectory_Application(buffer, sizeof buffer), zStatus_DoesNotFit);
    EXPECT_STREQ(buffer, "");
}

TEST(DirectoryExists, isTrueForDirectoriesAlone) {
    const ScratchDirectory scratch;
    EXPECT_TRUE(zDirectory_Exists(scratch.path().c_str()));
    EXPECT_TRUE(zDirectory_Exists((scratch.path() + "\\").c_str()));
    EXPECT_FALSE(zDirectory_Exists(scratch.write("file", "").c_str()));
    EXPECT_FALSE(zDirectory_Exists(scratch.path("missing").c_str()));
    EXPECT_FALSE(zDirectory_Exists(""));
}

TEST(DirectoryFind, answersNotFoundForWhatIsNoDirectory) {
    const ScratchDirectory scratch;
    EXPECT_EQ(zDirectory_Find(scratch.path().c_str()), zStatus_Success);
    EXPECT_EQ(zDirectory_Find(scratch.write("file", "").c_str()), zStatus_NotFound);
    EXPECT_EQ(zDirectory_Find(scratch.path("missing").c_str()), zStatus_NotFound);
    EXPECT_EQ(zDirectory_Find(scratch.path(std::string(300, 'x')).c_str()), zStatus_NotFound);
}

TEST(DirectoryCreate, makesParentsAndTakesWhatIsThere) {
    const ScratchDirectory scratch;
    EXPECT_EQ(zDirectory_Create(scratch.path("a/b").c_str()), zStatus_Success);
    EXPECT_EQ(zDirectory_Create(scratch.path("a/b").c_str()), zStatus_Success);
    EXPECT_TRUE(fs::is_directory(scratch.path("a/b")));
}

TEST(DirectoryCreate, tellsWhyItCannot) {
    const ScratchDirectory scratch;
    const std::string file = scratch.write("file", "");
    EXPECT_EQ(zDirectory_Create(file.c_str()), zStatus_IoError);
    EXPECT_EQ(failure::detailOf(zStatus_IoError), file + ": File exists");
}

class DirectoryListFiles : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(zArrayList_Construct(list.out(), zItemType_String, 0, nullptr), zStatus_Success);
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (std::size_t i = 0; i < zArrayList_Count(list.get()); ++i) {
            all.emplace_back(zArrayList_String(list.get(), i));
        }
        return all;
    }

    const ScratchDirectory scratch;
    Ta::Object<zHandle> list;
};

TEST_F(DirectoryListFiles, sortsByByteValue) {
    for (const char* name : {"b", "ä", "A1", "a", "_", ".x"}) scratch.write(name, "");
    scratch.write("directory/inside", "");
    EXPECT_EQ(zDirectory_ListFiles(scratch.path().c_str(), list.get()), zStatus_Success);
    EXPECT_THAT(names(), ElementsAre(".x", "A1", "_", "a", "b", "ä"));
}

TEST_F(DirectoryListFiles, appends) {
    scratch.write("a", "");
    EXPECT_EQ(zArrayList_AddString(list.get(), "z"), zStatus_Success);
    EXPECT_EQ(zDirectory_ListFiles(scratch.path().c_str(), list.get()), zStatus_Success);
    EXPECT_THAT(names(), ElementsAre("z", "a"));
}

TEST_F(DirectoryListFiles, tellsWhyItCannot) {
    const std::string missing = scratch.path("missing");
    EXPECT_EQ(zDirectory_ListFiles(missing.c_str(), list.get()), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), missing + ": No such file or directory");
    scratch.write("a", "");
    EXPECT_EQ(zDirectory_ListFiles(scratch.path().c_str(), nullptr), zStatus_BadArgument);
    EXPECT_THAT(names(), ElementsAre());
}

}  // namespace
