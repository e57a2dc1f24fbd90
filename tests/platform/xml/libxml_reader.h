#pragma once

#include <string>
#include <string_view>

namespace testing {

/// What libxml2 reads in `bytes`, in the form of describeTree; libxmlRefuses when it finds them malformed.
std::string libxmlTree(std::string_view bytes);
constexpr const char* libxmlRefuses = "refused";

/// Why libxml2 may judge the document `bytes` otherwise than this project, whose judgement is `fault`
/// ("accepted" or a sentence); null when nothing is known that would explain it.
const char* reasonToDisagree(std::string_view bytes, std::string_view fault);

}  // namespace testing
