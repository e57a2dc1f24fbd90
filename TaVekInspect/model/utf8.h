#pragma once

#include <string>
#include <string_view>

/// Length of the well-formed UTF-8 character that `text` begins with; 0 when it begins with none.
std::size_t characterLength(std::string_view text);

/// `text` with each byte that belongs to no well-formed character replaced by U+FFFD.
std::string validUtf8(std::string_view text);

/// True when all of `text` is well-formed.
bool isUtf8(std::string_view text);
