#pragma once

#include <cstddef>
#include <cstdlib>

namespace testing {

/// Of many like rounds of a test, one in this many is to run: every one, but fewer under valgrind (see
/// scripts/test.sh), which takes thirty times as long, and under Wine, where a file is as slow to open.
inline std::size_t oneIn() {
#ifdef TAVEK_SLOW_FILES
    return 19;
#else
    static const bool isWatched = std::getenv("TAVEK_VALGRIND") != nullptr;
    return isWatched ? 19 : 1;
#endif
}

}  // namespace testing
