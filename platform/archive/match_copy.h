#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace inflation {

inline constexpr std::size_t copyStep = 16;

/// Most bytes that copyMatch writes beyond the end of a match: it begins with two steps, however short that
/// is.
inline constexpr std::size_t copyOverrun = 2 * copyStep;

template <std::size_t step>
inline void copyBy(std::uint8_t* to, const std::uint8_t* from, const std::uint8_t* end) {
    do {
        std::memcpy(to, from, step);
        to += step;
        from += step;
    } while (to < end);
}

/// Copies the `length` bytes that stand `distance` before `to`. The two may overlap: a match repeats what it
/// writes itself.
inline void copyMatch(std::uint8_t* to, std::size_t distance, std::size_t length) {
    const std::uint8_t* from = to - distance;
    if (distance >= copyStep) [[likely]] {
        // Most matches end here, without a branch on their length.
        std::memcpy(to, from, copyStep);
        std::memcpy(to + copyStep, from + copyStep, copyStep);
        constexpr std::size_t done = 2 * copyStep;
        if (length > done) copyBy<copyStep>(to + done, from + done, to + length);
        return;
    }
    if (distance >= 8) return copyBy<8>(to, from, to + length);
    if (distance == 1) {
        std::memset(to, *from, length);
        return;
    }
    // A short period: lay down 8 bytes, then copy from a multiple of the period that is at least that far.
    for (std::size_t i = 0; i < 8; ++i) to[i] = from[i];
    if (length > 8) {
        const std::size_t far = (7 / distance + 1) * distance;
        copyBy<8>(to + 8, to + 8 - far, to + length);
    }
}

}  // namespace inflation
