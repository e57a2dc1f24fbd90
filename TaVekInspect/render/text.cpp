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

}  // namespace

std::string printable(const std::string& text) {
    std::string shown = text;
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    std::replace_if(shown.begin(), shown.end(), isControl, '?');
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
