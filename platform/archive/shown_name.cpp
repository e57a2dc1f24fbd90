#include "platform/archive/shown_name.h"

#include <algorithm>

std::string shownName(std::string_view name) {
    constexpr std::size_t longest = 512;
    std::string shown(name.substr(0, longest));
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    std::replace_if(shown.begin(), shown.end(), isControl, '?');
    if (name.size() > longest) shown += "...";
    return shown;
}
