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
