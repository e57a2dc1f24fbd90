#pragma once

#include <cstddef>
#include <cstdlib>

namespace testing {

/// Of many like rounds of a test, one in this many is to run: every one, but fewer under valgrind (see
/// scripts/test.sh), which takes thirty times as long.
inline std::size_t oneIn() {
    static const bool isWatched = std::getenv("TAVEK_VALGRIND") != nullptr;
    return isWatched ? 19 : 1;
}

}  // namespace testing
