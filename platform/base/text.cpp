#include "platform/base/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/base/failure.h"

namespace {

bool hasRoom(const char* destination, std::size_t capacity) {
    return destination != nullptr && capacity > 0;
}

zStatus refuseBuffer() {
    return failure::record(zStatus_BadArgument, "the buffer has no room for a text");
}

int lower(char character) {
    return static_cast<unsigned char>(character >= 'A' && character <= 'Z' ? character + ('a' - 'A')
                                                                           : character);
}

}  // namespace

zStatus zStrCopy(char* destination, std::size_t capacity, const char* source) {
    if (!hasRoom(destination, capacity)) return refuseBuffer();
    const std::size_t length = ::strnlen(source, capacity - 1);
    std::memmove(destination, source, length);
    destination[length] = '\0';
    return zStatus_Success;
}

bool zStrEquals(const char* a, const char* b) {
    return zStrCompare(a, b) == 0;
}

int zStrCompare(const char* a, const char* b) {
    return std::strcmp(a, b);
}

int zStrCompareLower(const char* a, const char* b) {
    while (*a != '\0' && lower(*a) == lower(*b)) ++a, ++b;
    return lower(*a) - lower(*b);
}

int zStrCompareN(const char* a, const char* b, std::size_t count) {
    return std::strncmp(a, b, count);
}

std::size_t zStrLength(const char* text) {
    return std::strlen(text);
}

zStatus zStrPrintf(char* destination, std::size_t capacity, const char* format, ...) {
    if (!hasRoom(destination, capacity)) return refuseBuffer();
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(destination, capacity, format, arguments);
    va_end(arguments);
    if (length >= 0 && static_cast<std::size_t>(length) < capacity) return zStatus_Success;

    destination[0] = '\0';
    return failure::guarded([&] {
        return failure::record(zStatus_DoesNotFit, "the text needs " + std::to_string(length) +
                                                       " characters, " + std::to_string(capacity - 1) +
                                                       " are allowed");
    });
}
