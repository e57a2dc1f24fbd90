#include "platform/archive/content.h"

#include <limits>
#include <new>

Block::Block(const zAllocator* allocator, std::uint64_t size) : allocator_(allocator) {
    if (size >= std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
    size_ = static_cast<std::size_t>(size);
    bytes_ = zAllocator_Allocate(allocator, size_ + 1);
    if (bytes_ == nullptr) throw std::bad_alloc();
    bytes()[size_] = 0;
}
