#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "platform/archive/archive.h"

/// A block of memory from an allocator, one zero byte longer than it says.
class Block {
  public:
    Block() = default;
    /// Throws std::bad_alloc when there is no such block.
    Block(const zAllocator* allocator, std::uint64_t size);
    ~Block() { zAllocator_Release(allocator_, bytes_); }
    Block(Block&& other) noexcept
        : allocator_(other.allocator_), bytes_(std::exchange(other.bytes_, nullptr)), size_(other.size_) {}
    Block& operator=(Block&& other) noexcept {
        std::swap(allocator_, other.allocator_);
        std::swap(bytes_, other.bytes_);
        std::swap(size_, other.size_);
        return *this;
    }

    std::uint8_t* bytes() const { return static_cast<std::uint8_t*>(bytes_); }
    std::size_t size() const { return size_; }

  private:
    const zAllocator* allocator_ = nullptr;
    void* bytes_ = nullptr;
    std::size_t size_ = 0;
};

/// The bytes of a member that is in memory.
struct Content {
    Block block;                        ///< Of a plain member.
    std::shared_ptr<LiveContent> live;  ///< Of a live one, whose bytes as last asked for are in `text`.
    std::string text;
    std::uint32_t crc = 0;  ///< Of the bytes, while they are being saved.

    const void* data() const { return live ? static_cast<const void*>(text.c_str()) : block.bytes(); }
    std::size_t size() const { return live ? text.size() : block.size(); }
};
