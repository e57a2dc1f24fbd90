#pragma once

#include <string>
#include <string_view>

/// A member's name as messages show it: on one line, and not without end, whatever an archive says.
std::string shownName(std::string_view name);
