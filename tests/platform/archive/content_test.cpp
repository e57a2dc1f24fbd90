#include "platform/archive/content.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

int blocks = 0;
std::size_t lastSize = 0;
bool exhausted = false;

void* allocate(std::size_t size) {
    if (exhausted) return nullptr;
    lastSize = size;
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

class BlockTest : public testing::Test {
  protected:
    void TearDown() override {
        exhausted = false;
        EXPECT_EQ(blocks, 0);
    }
};

TEST_F(BlockTest, isOneZeroByteLonger) {
    const Block block(&counting, 3);
    EXPECT_EQ(block.size(), 3u);
    EXPECT_EQ(lastSize, 4u);
    EXPECT_EQ(block.bytes()[3], 0);
    const Block empty(&counting, 0);
    ASSERT_NE(empty.bytes(), nullptr);
    EXPECT_EQ(empty.bytes()[0], 0);
}

TEST_F(BlockTest, movesItsBytes) {
    Block one(&counting, 1);
    std::uint8_t* bytes = one.bytes();
    Block two(std::move(one));
    EXPECT_EQ(two.bytes(), bytes);
    Block three;
    three = std::move(two);
    EXPECT_EQ(three.bytes(), bytes);
    EXPECT_EQ(three.size(), 1u);
    EXPECT_EQ(blocks, 1);
}

TEST_F(BlockTest, throwsWhenThereIsNoSuchBlock) {
    EXPECT_THROW(Block(&counting, std::numeric_limits<std::uint64_t>::max()), std::bad_alloc);
    exhausted = true;
    EXPECT_THROW(Block(&counting, 1), std::bad_alloc);
}

}  // namespace
