#include "platform/xml/fault.h"

namespace xml {

std::string position(const char* begin, const char* place) {
    std::size_t line = 1;
    std::size_t column = 1;
    for (const char* at = begin; at != place; ++at) {
        const bool endsLine = *at == '\n' || (*at == '\r' && (at + 1 == place || at[1] != '\n'));
        if (endsLine) {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(*at) & 0xC0) != 0x80) {
            ++column;
        }
    }
    return std::to_string(line) + ':' + std::to_string(column);
}

}  // namespace xml
