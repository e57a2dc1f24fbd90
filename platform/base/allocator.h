#pragma once

#include <cstddef>
#include <utility>

/// Where byte buffers that an operation hands out come from and go back to. Wherever an operation takes an
/// allocator, null means the application allocator.
struct zAllocator {
    void* (*allocate)(std::size_t size);  ///< At least `size` bytes, or null.
    void (*release)(void* block);         ///< Takes back what `allocate` gave; null is allowed.
};

/// The default allocator. Never null; lives as long as the process.
const zAllocator* zAllocator_Application();

/// A block of `size` bytes from `allocator` (null: the application allocator), or null when there is none.
void* zAllocator_Allocate(const zAllocator* allocator, std::size_t size);

/// Gives `block` back to the `allocator` it came from. Null is allowed.
void zAllocator_Release(const zAllocator* allocator, void* block);

namespace Ta {

/// Owns a byte buffer that an operation handed out and gives it back to the application allocator.
class Buffer {
  public:
    Buffer() = default;
    ~Buffer() { zAllocator_Release(nullptr, data_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    /// Where an operation is to put the block and its size; what was held so far is released, so that a
    /// failed operation leaves the buffer empty.
    void** data() {
        zAllocator_Release(nullptr, std::exchange(data_, nullptr));
        size_ = 0;
        return &data_;
    }
    std::size_t* size() { return &size_; }

    const void* bytes() const { return data_; }
    std::size_t byteCount() const { return size_; }

  private:
    void* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace Ta
