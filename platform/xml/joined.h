#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace xml {

/// The parts one behind the other, as the sentences of faults are put together.
inline std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) text += part;
    return text;
}

/// From `begin` up to, not including, `end`.
inline std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace xml
