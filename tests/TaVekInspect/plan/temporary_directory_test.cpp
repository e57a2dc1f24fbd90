#include "TaVekInspect/plan/temporary_directory.h"

#include <gtest/gtest.h>

#include "platform/base/directory.h"
#include "platform/base/file.h"

namespace {

TEST(TemporaryDirectory, goesWithEverythingInIt) {
    std::string path;
    {
        const TemporaryDirectory directory;
        path = directory.path("");
        EXPECT_TRUE(zDirectory_Exists(path.c_str()));
        EXPECT_EQ(zFile_Save(directory.path("file").c_str(), "x", 1), zStatus_Success);
    }
    EXPECT_FALSE(zDirectory_Exists(path.c_str()));
}

TEST(TemporaryDirectory, isEachTimeAnother) {
    const TemporaryDirectory one, two;
    EXPECT_NE(one.path(""), two.path(""));
}

}  // namespace
