#include "platform/base/allocator.h"

#include <cstdlib>

namespace {

const zAllocator application{std::malloc, std::free};

const zAllocator& chosen(const zAllocator* allocator) {
    return allocator == nullptr ? application : *allocator;
}

}  // namespace

const zAllocator* zAllocator_Application() {
    return &application;
}

void* zAllocator_Allocate(const zAllocator* allocator, std::size_t size) {
    // A block of no bytes must still be told from a refusal.
    return chosen(allocator).allocate(size == 0 ? 1 : size);
}

void zAllocator_Release(const zAllocator* allocator, void* block) {
    chosen(allocator).release(block);
}
