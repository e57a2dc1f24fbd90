#pragma once

#include <string>

namespace Ta {

/// `text` with its ASCII letters in lower case: two texts become the same when zStrCompareLower finds them
/// equal.
std::string lowerCase(std::string text);

}  // namespace Ta
