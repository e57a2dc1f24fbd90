#pragma once

#include <cstddef>

namespace testing {

/// Of many like rounds of a test, one in this many is to run: every one, but fewer under Wine, where a file
/// is slow to open.
#ifdef TAVEK_SLOW_FILES
constexpr std::size_t oneIn = 19;
#else
constexpr std::size_t oneIn = 1;
#endif

}  // namespace testing
