#include "platform/base/allocator.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

int blocks = 0;

void* countedAllocate(std::size_t size) {
    ++blocks;
    return std::malloc(size);
}

void countedRelease(void* block) {
    if (block != nullptr) --blocks;
    std::free(block);
}

TEST(Allocator, ofTheApplicationIsTheDefault) {
    ASSERT_NE(zAllocator_Application(), nullptr);
    void* block = zAllocator_Allocate(nullptr, 10);
    ASSERT_NE(block, nullptr);
    zAllocator_Release(zAllocator_Application(), block);
}

TEST(Allocator, givenIsTheOneAsked) {
    const zAllocator counted{countedAllocate, countedRelease};
    void* block = zAllocator_Allocate(&counted, 10);
    EXPECT_EQ(blocks, 1);
    zAllocator_Release(&counted, block);
    EXPECT_EQ(blocks, 0);
}

TEST(Allocator, tellsABlockOfNoBytesFromARefusal) {
    const zAllocator refusing{
        [](std::size_t size) -> void* { return size == 0 ? nullptr : std::malloc(size); }, std::free};
    void* block = zAllocator_Allocate(&refusing, 0);
    EXPECT_NE(block, nullptr);
    zAllocator_Release(&refusing, block);
}

TEST(Allocator, takesNullBack) {
    zAllocator_Release(nullptr, nullptr);
    zAllocator_Release(zAllocator_Application(), nullptr);
}

TEST(Buffer, ownsWhatIsPutIntoIt) {
    Ta::Buffer buffer;
    EXPECT_EQ(buffer.bytes(), nullptr);
    EXPECT_EQ(buffer.byteCount(), 0u);
    *buffer.data() = zAllocator_Allocate(nullptr, 3);
    *buffer.size() = 3;
    EXPECT_NE(buffer.bytes(), nullptr);
    EXPECT_EQ(buffer.byteCount(), 3u);
    EXPECT_EQ(*buffer.data(), nullptr) << "asking for the place releases what was there";
    EXPECT_EQ(buffer.byteCount(), 0u);
}

}  // namespace
