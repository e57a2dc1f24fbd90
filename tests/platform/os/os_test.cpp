#include "platform/os/os.h"

#include <gtest/gtest.h>

#include "tests/testing/scratch_directory.h"

namespace {

using testing::ScratchDirectory;

TEST(OutputFile, leavesNothingBehindWithoutCommit) {
    const ScratchDirectory scratch;
    {
        os::OutputFile file;
        ASSERT_FALSE(file.open(scratch.path("a.txt")));
        ASSERT_FALSE(file.write("abc", 3));
        EXPECT_EQ(scratch.entries().size(), 1u) << "the temporary file";
    }
    EXPECT_TRUE(scratch.entries().empty());
}

TEST(OutputFile, replacesTheTargetOnCommit) {
    const ScratchDirectory scratch;
    scratch.write("a.txt", "old");
    os::OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    ASSERT_FALSE(file.write("new", 3));
    EXPECT_EQ(scratch.read("a.txt"), "old");
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(scratch.read("a.txt"), "new");
    EXPECT_EQ(scratch.entries(), std::vector<std::string>{"a.txt"});
}

}  // namespace
