#include "platform/base/file.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "platform/base/failure.h"
#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ScratchDirectory;

std::string load(const std::string& path) {
    Ta::Buffer buffer;
    EXPECT_EQ(zFile_Load(path.c_str(), buffer.data(), buffer.size(), nullptr), zStatus_Success);
    return {static_cast<const char*>(buffer.bytes()), buffer.byteCount()};
}

std::string detail(zStatus status) {
    return std::string(failure::detailOf(status));
}

TEST(FileLoad, readsTheWholeFile) {
    const ScratchDirectory scratch;
    const std::string bytes("a\r\n\0\x1A\xFF", 6);
    EXPECT_EQ(load(scratch.write("a.bin", bytes)), bytes);
    EXPECT_EQ(load(scratch.write("empty", "")), "");
    const std::string large(1'000'003, 'x');
    EXPECT_EQ(load(scratch.write("large", large)), large);
    EXPECT_EQ(load(scratch.write("größe/日本", "utf8")), "utf8");
    EXPECT_EQ(load(scratch.path("größe\\日本")), "utf8");
}

TEST(FileLoad, putsAZeroBehindTheContent) {
    // What comes fresh from the system is zero by itself.
    const zAllocator soiled{[](std::size_t size) {
                                void* block = std::malloc(size);
                                return block == nullptr ? nullptr : std::memset(block, '#', size);
                            },
                            std::free};
    const ScratchDirectory scratch;
    void* data = nullptr;
    std::size_t size = 0;
    ASSERT_EQ(zFile_Load(scratch.write("a", "abc").c_str(), &data, &size, &soiled), zStatus_Success);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(std::string(static_cast<const char*>(data), 4), std::string("abc\0", 4));
    zAllocator_Release(&soiled, data);
}

TEST(FileLoad, takesTheBlockFromTheAllocatorGiven) {
    static int blocks = 0;
    const zAllocator counted{[](std::size_t size) {
                                 ++blocks;
                                 return std::malloc(size);
                             },
                             [](void* block) {
                                 if (block != nullptr) --blocks;
                                 std::free(block);
                             }};
    const ScratchDirectory scratch;
    void* data = nullptr;
    std::size_t size = 0;
    ASSERT_EQ(zFile_Load(scratch.write("a", "abc").c_str(), &data, &size, &counted), zStatus_Success);
    EXPECT_EQ(blocks, 1);
    zAllocator_Release(&counted, data);
    EXPECT_EQ(blocks, 0);
}

TEST(FileLoad, tellsWhyItCannot) {
    const ScratchDirectory scratch;
    int something = 0;
    void* data = &something;
    std::size_t size = 0;
    const std::string missing = scratch.path("missing");
    EXPECT_EQ(zFile_Load(missing.c_str(), &data, &size, nullptr), zStatus_NotFound);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(detail(zStatus_NotFound), missing + ": No such file or directory");
    EXPECT_EQ(zFile_Load(scratch.path().c_str(), &data, &size, nullptr), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), scratch.path() + ": Is a directory");
    EXPECT_EQ(zFile_Load("", &data, &size, nullptr), zStatus_NotFound);
}

TEST(FileLoad, endsInAStatusWhenMemoryIsExhausted) {
    const zAllocator refusing{[](std::size_t) -> void* { return nullptr; }, [](void*) {}};
    const ScratchDirectory scratch;
    void* data = nullptr;
    std::size_t size = 0;
    EXPECT_EQ(zFile_Load(scratch.write("a", "abc").c_str(), &data, &size, &refusing), zStatus_NoMemory);
    EXPECT_EQ(data, nullptr);
}

// Linux shows what a running program is as files: some tell no size, one opens and then refuses to be read.
class SystemFile : public testing::Test {
  protected:
    void SetUp() override {
        if (os::pathSeparator == '\\') GTEST_SKIP() << "no such files there";
    }
    const ScratchDirectory scratch;
};

TEST_F(SystemFile, isReadWholeThoughItTellsNoSize) {
    const std::string maps = load("/proc/self/maps");
    EXPECT_GT(maps.size(), 1000u);
    EXPECT_EQ(maps.back(), '\n');
}

TEST_F(SystemFile, thatCannotBeReadTellsSo) {
    Ta::Buffer buffer;
    EXPECT_EQ(zFile_Load("/proc/self/mem", buffer.data(), buffer.size(), nullptr), zStatus_IoError);
    EXPECT_EQ(buffer.bytes(), nullptr);
    EXPECT_EQ(detail(zStatus_IoError), "/proc/self/mem: Input/output error");
    const std::string target = scratch.write("target", "old");
    EXPECT_EQ(zFile_Copy("/proc/self/mem", target.c_str()), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), "/proc/self/mem: Input/output error");
    EXPECT_EQ(scratch.read("target"), "old");
    EXPECT_THAT(scratch.entries(), ElementsAre("target"));
}

TEST(FileSave, writesAndReplaces) {
    const ScratchDirectory scratch;
    const std::string path = scratch.path("a.txt");
    EXPECT_EQ(zFile_Save(path.c_str(), "a\n", 2), zStatus_Success);
    EXPECT_EQ(scratch.read("a.txt"), "a\n");
    EXPECT_EQ(zFile_Save(path.c_str(), nullptr, 0), zStatus_Success);
    EXPECT_EQ(scratch.read("a.txt"), "");
    EXPECT_THAT(scratch.entries(), ElementsAre("a.txt"));
}

TEST(FileSave, tellsWhyItCannot) {
    const ScratchDirectory scratch;
    const std::string path = scratch.path("no/such/a.txt");
    EXPECT_EQ(zFile_Save(path.c_str(), "a", 1), zStatus_NotFound);
    EXPECT_EQ(detail(zStatus_NotFound), path + ": No such file or directory");
    EXPECT_EQ(zFile_Save(scratch.path().c_str(), "a", 1), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), scratch.path() + ": Is a directory");
    EXPECT_TRUE(scratch.entries().empty());
}

TEST(FileCopy, copiesAndReplaces) {
    const ScratchDirectory scratch;
    const std::string large(1'000'003, 'x');
    const std::string source = scratch.write("source", large);
    const std::string target = scratch.path("target");
    EXPECT_EQ(zFile_Copy(source.c_str(), target.c_str()), zStatus_Success);
    EXPECT_EQ(scratch.read("target"), large);
    EXPECT_EQ(zFile_Copy(scratch.write("source", "new").c_str(), target.c_str()), zStatus_Success);
    EXPECT_EQ(scratch.read("target"), "new");
    EXPECT_EQ(scratch.read("source"), "new");
    EXPECT_THAT(scratch.entries(), ElementsAre("source", "target"));
}

TEST(FileCopy, ontoItselfChangesNothing) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a", "content");
    EXPECT_EQ(zFile_Copy(path.c_str(), path.c_str()), zStatus_Success);
    EXPECT_EQ(scratch.read("a"), "content");
}

TEST(FileCopy, tellsWhyItCannotAndLosesNothing) {
    const ScratchDirectory scratch;
    const std::string target = scratch.write("target", "old");
    const std::string missing = scratch.path("missing");
    EXPECT_EQ(zFile_Copy(missing.c_str(), target.c_str()), zStatus_NotFound);
    EXPECT_EQ(detail(zStatus_NotFound), missing + ": No such file or directory");
    EXPECT_EQ(zFile_Copy(scratch.path().c_str(), target.c_str()), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), scratch.path() + ": Is a directory");
    EXPECT_EQ(scratch.read("target"), "old");

    const std::string nowhere = scratch.path("no/such");
    EXPECT_EQ(zFile_Copy(target.c_str(), nowhere.c_str()), zStatus_NotFound);
    EXPECT_EQ(detail(zStatus_NotFound), nowhere + ": No such file or directory");
    EXPECT_EQ(zFile_Copy(target.c_str(), scratch.path().c_str()), zStatus_IoError);
    EXPECT_THAT(scratch.entries(), ElementsAre("target"));
}

TEST(FileDelete, removesAFile) {
    const ScratchDirectory scratch;
    EXPECT_EQ(zFile_Delete(scratch.write("a", "").c_str()), zStatus_Success);
    EXPECT_TRUE(scratch.entries().empty());
}

TEST(FileDelete, tellsWhyItCannot) {
    const ScratchDirectory scratch;
    const std::string missing = scratch.path("a");
    EXPECT_EQ(zFile_Delete(missing.c_str()), zStatus_NotFound);
    EXPECT_EQ(detail(zStatus_NotFound), missing + ": No such file or directory");
    EXPECT_EQ(zFile_Delete(scratch.path().c_str()), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), scratch.path() + ": Is a directory");
    EXPECT_TRUE(fs::is_directory(scratch.path()));
}

TEST(FileIsSame, tellsByTheFileAndNotByItsName) {
    const ScratchDirectory scratch;
    const std::string one = scratch.write("dir/one", "x"), other = scratch.write("dir/other", "x");
    EXPECT_TRUE(zFile_IsSame(one.c_str(), one.c_str()));
    EXPECT_TRUE(zFile_IsSame(one.c_str(), scratch.path("dir\\..\\dir/one").c_str()));
    EXPECT_FALSE(zFile_IsSame(one.c_str(), other.c_str()));
    EXPECT_FALSE(zFile_IsSame(one.c_str(), scratch.path("none").c_str()));
    EXPECT_FALSE(zFile_IsSame(scratch.path("none").c_str(), scratch.path("none").c_str()));
    EXPECT_FALSE(zFile_IsSame(scratch.path("dir").c_str(), scratch.path("dir").c_str()));
}

}  // namespace
