#include "tests/platform/xml/counted_memory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace testing {
namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();
constexpr std::size_t headSize = alignof(std::max_align_t);

std::size_t allocationsLeft = unlimited;

/// A block with its size in front; null when none is to be had.
void* take(std::size_t size) noexcept {
    if (allocationsLeft == 0) return nullptr;
    if (allocationsLeft != unlimited) --allocationsLeft;
    auto* head = static_cast<std::byte*>(std::malloc(size + headSize));
    if (head == nullptr) return nullptr;
    *reinterpret_cast<std::size_t*>(head) = size;
    MemoryCount& count = memoryCount();
    count.held += size;
    if (count.held > count.peak) count.peak = count.held;
    return head + headSize;
}

void giveBack(void* block) noexcept {
    if (block == nullptr) return;
    std::byte* head = static_cast<std::byte*>(block) - headSize;
    memoryCount().held -= *reinterpret_cast<std::size_t*>(head);
    std::free(head);
}

}  // namespace

MemoryCount& memoryCount() {
    static MemoryCount count;
    return count;
}

void failAfter(std::size_t count) {
    allocationsLeft = count;
}

void failNever() {
    allocationsLeft = unlimited;
}

const zAllocator countedAllocator{take, giveBack};

}  // namespace testing

void* operator new(std::size_t size) {
    if (void* block = testing::take(size)) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return testing::take(size);
}
// What containers with a memory resource call; no alignment beyond malloc's is asked for.
void* operator new(std::size_t size, std::align_val_t) {
    return operator new(size);
}
void operator delete(void* block, std::align_val_t) noexcept {
    testing::giveBack(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    testing::giveBack(block);
}
void operator delete(void* block) noexcept {
    testing::giveBack(block);
}
void operator delete(void* block, std::size_t) noexcept {
    testing::giveBack(block);
}
