#pragma once

#include <cstddef>

#include "platform/base/status.h"

/// Operations on zero-terminated 8-bit texts in buffers of the caller. A capacity counts characters, the
/// terminator included; a buffer without room for a terminator (capacity 0, null) is refused with
/// zStatus_BadArgument. Ignoring letter case means ASCII letters.

/// Copies `source`; what does not fit is cut to `capacity` - 1 characters, which is a success.
zStatus zStrCopy(char* destination, std::size_t capacity, const char* source);

bool zStrEquals(const char* a, const char* b);

/// 0 when equal, else negative or positive as `a` stands before or behind `b` by byte value.
int zStrCompare(const char* a, const char* b);
/// As zStrCompare, ignoring letter case.
int zStrCompareLower(const char* a, const char* b);
/// As zStrCompare over at most the first `count` characters.
int zStrCompareN(const char* a, const char* b, std::size_t count);

/// Number of characters before the terminator.
std::size_t zStrLength(const char* text);

/// Formats as printf does. A result that does not fit answers zStatus_DoesNotFit and leaves the buffer empty.
zStatus zStrPrintf(char* destination, std::size_t capacity, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

namespace Ta {

/// A zero-terminated text in a buffer of `Capacity` characters, terminator included; empty at birth.
template <std::size_t Capacity>
class Text {
  public:
    char* data() { return characters_; }
    static constexpr std::size_t capacity() { return Capacity; }
    const char* c_str() const { return characters_; }
    bool empty() const { return characters_[0] == '\0'; }

  private:
    char characters_[Capacity] = {};
};

/// The two sizes most texts of the tool have: versions, types and platform keys; paths and names.
using ShortText = Text<32>;
using PathText = Text<512>;

}  // namespace Ta
