#pragma once

#include <cstddef>

#include "platform/base/allocator.h"

namespace testing {

/// Everything this program takes with `new`, and what documents take from the allocator below.
struct MemoryCount {
    std::size_t held = 0;  ///< Bytes asked for and not yet given back.
    std::size_t peak = 0;  ///< The most that was held at a time since `peak` was set.
};
MemoryCount& memoryCount();

/// From now on `count` allocations succeed and all others fail, until failNever.
void failAfter(std::size_t count);
void failNever();

/// Allocates like everything else that is counted.
extern const zAllocator countedAllocator;

}  // namespace testing
