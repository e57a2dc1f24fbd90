#include "TaVekInspect/render/text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

template <typename... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, values...);
    return buffer.data();
}

/// Bytes of the control character that `text`, which is not empty, begins with; 0 when it begins with none.
/// U+0080 to U+009F take two in UTF-8, and terminals obey them as well. U+202A to U+202E and U+2066 to U+2069
/// turn the order of what follows round, so that a name reads like another.
std::size_t controlLength(std::string_view text) {
    const auto byteAt = [text](std::size_t at) {
        return static_cast<unsigned char>(at < text.size() ? text[at] : '\0');
    };
    const unsigned char first = byteAt(0), second = byteAt(1), third = byteAt(2);
    if (first < ' ' || first == 0x7F) return 1;
    if (first == 0xC2) return second >= 0x80 && second <= 0x9F ? 2 : 0;
    if (first != 0xE2) return 0;
    const bool turnsOrder = (second == 0x80 && third >= 0xAA && third <= 0xAE) ||
                            (second == 0x81 && third >= 0xA6 && third <= 0xA9);
    return turnsOrder ? 3 : 0;
}

}  // namespace

std::string printable(const std::string& text, std::string_view kept) {
    std::string shown;
    shown.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = controlLength(std::string_view(text).substr(i));
        const bool stays = length == 0 || kept.find(text[i]) != std::string_view::npos;
        shown += stays ? text[i] : '?';
        i += std::max<std::size_t>(length, 1);
    }
    return shown;
}

std::size_t widthOf(const std::string& text) {
    const auto beginsCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), beginsCharacter));
}

std::string sizeText(std::uint64_t size) {
    if (size < 1024) return counted(static_cast<std::size_t>(size), "byte");
    constexpr std::array units{"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    auto value = static_cast<double>(size) / 1024;
    std::size_t unit = 0;
    while (value >= 1023.95 && unit + 1 < units.size()) {
        value /= 1024;
        ++unit;
    }
    return formatted("%.1f %s", value, units[unit]);
}

std::string counted(std::size_t count, const std::string& noun) {
    const bool endsInY = noun.ends_with('y');
    const std::string plural = endsInY ? noun.substr(0, noun.size() - 1) + "ies" : noun + "s";
    return std::to_string(count) + ' ' + (count == 1 ? noun : plural);
}

std::string methodText(const zMemberInfo& member) {
    const std::string method = member.method == 0   ? "stored"
                               : member.method == 8 ? "deflated"
                                                    : "method " + std::to_string(member.method);
    return member.encrypted ? method + ", encrypted" : method;
}

std::string timeText(const zMemberTime& time) {
    return formatted("%04u-%02u-%02u %02u:%02u:%02u", time.year, time.month, time.day, time.hour, time.minute,
                     time.second);
}

std::string crcText(std::uint32_t crc) {
    return formatted("%08x", static_cast<unsigned>(crc));
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all;
}
