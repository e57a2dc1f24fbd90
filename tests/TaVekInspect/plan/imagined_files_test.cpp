#include "TaVekInspect/plan/imagined_files.h"

#include <gmock/gmock.h>

#include "platform/base/failure.h"
#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::ElementsAre;
using testing::ScratchDirectory;

TEST(ImaginedFiles, areThereAfterCopyingAndTheDiskIsAsItWas) {
    const ScratchDirectory scratch;
    ImaginedFiles files;
    const std::string source = scratch.write("source", "x");
    const std::string directory = scratch.path("new/deep"), target = directory + "\\file";
    EXPECT_EQ(files.copyFile(source.c_str(), target.c_str()), zStatus_NotFound);
    EXPECT_EQ(files.createDirectory(directory.c_str()), zStatus_Success);
    EXPECT_EQ(files.findDirectory(scratch.path("new").c_str()), zStatus_Success);
    EXPECT_EQ(files.copyFile(source.c_str(), target.c_str()), zStatus_Success);
    EXPECT_TRUE(files.fileExists(scratch.path("new/deep/file")));
    EXPECT_EQ(files.copies(), 1u);
    EXPECT_EQ(files.deleteFile(target.c_str()), zStatus_Success);
    EXPECT_EQ(files.deleteFile(target.c_str()), zStatus_NotFound);
    EXPECT_THAT(scratch.entries(), ElementsAre("source"));
}

TEST(ImaginedFiles, areGoneAfterDeleting) {
    const ScratchDirectory scratch;
    ImaginedFiles files;
    const std::string path = scratch.write("file", "x");
    EXPECT_EQ(files.deleteFile(path.c_str()), zStatus_Success);
    EXPECT_FALSE(files.fileExists(path));
    EXPECT_EQ(files.deleteFile(path.c_str()), zStatus_NotFound);
    EXPECT_TRUE(scratch.exists("file"));
}

TEST(ImaginedFiles, failAsTheDiskWould) {
    const ScratchDirectory scratch;
    ImaginedFiles files;
    const std::string file = scratch.write("dir/file", "x"), directory = scratch.path("dir");
    EXPECT_EQ(files.copyFile(scratch.path("none").c_str(), file.c_str()), zStatus_NotFound);
    EXPECT_EQ(files.copyFile(file.c_str(), directory.c_str()), zStatus_IoError);
    EXPECT_EQ(files.deleteFile(directory.c_str()), zStatus_IoError);
    EXPECT_NE(files.createDirectory(file.c_str()), zStatus_Success);
    EXPECT_NE(files.createDirectory((file + "/below").c_str()), zStatus_Success);
    EXPECT_EQ(files.copies(), 0u);
}

TEST(ImaginedFiles, failWhereTheSystemTakesNoSuchName) {
    if (os::pathSeparator == '\\') GTEST_SKIP() << "other names are refused there";
    const ScratchDirectory scratch;
    ImaginedFiles files;
    const std::string source = scratch.write("source", "x"), tooLong = scratch.path(std::string(300, 'n'));
    const std::string reason = tooLong + ": File name too long";
    const auto expectRefused = [&](zStatus status) {
        EXPECT_EQ(status, zStatus_IoError);
        EXPECT_EQ(failure::detailOf(status), reason);
    };
    expectRefused(checkTarget(tooLong));
    expectRefused(files.copyFile(source.c_str(), tooLong.c_str()));
    expectRefused(files.deleteFile(tooLong.c_str()));
    expectRefused(files.createDirectory(tooLong.c_str()));
}

}  // namespace
