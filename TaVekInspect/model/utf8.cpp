#include "TaVekInspect/model/utf8.h"

namespace {

unsigned byteAt(std::string_view text, std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0;
}

bool isBetween(unsigned byte, unsigned first, unsigned last) {
    return byte >= first && byte <= last;
}

}  // namespace

std::size_t characterLength(std::string_view text) {
    const unsigned lead = byteAt(text, 0), second = byteAt(text, 1);
    const bool hasThird = isBetween(byteAt(text, 2), 0x80, 0xBF);
    if (text.empty()) return 0;
    if (lead < 0x80) return 1;
    if (isBetween(lead, 0xC2, 0xDF)) return isBetween(second, 0x80, 0xBF) ? 2 : 0;
    // The second byte's range shuts out overlong forms, surrogates and what lies beyond U+10FFFF.
    if (isBetween(lead, 0xE0, 0xEF)) {
        const unsigned first = lead == 0xE0 ? 0xA0 : 0x80, last = lead == 0xED ? 0x9F : 0xBF;
        return isBetween(second, first, last) && hasThird ? 3 : 0;
    }
    if (isBetween(lead, 0xF0, 0xF4)) {
        const unsigned first = lead == 0xF0 ? 0x90 : 0x80, last = lead == 0xF4 ? 0x8F : 0xBF;
        return isBetween(second, first, last) && hasThird && isBetween(byteAt(text, 3), 0x80, 0xBF) ? 4 : 0;
    }
    return 0;
}

std::string validUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        valid += length == 0 ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return valid;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}
