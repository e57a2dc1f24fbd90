#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// A finding unless `condition` holds: ends the process, with the sentence `what` where the place alone would
/// not tell.
inline void require(bool condition, const char* what = "what must hold here does not") {
    if (condition) return;
    std::fprintf(stderr, "fuzz: %s\n", what);
    std::abort();
}

}  // namespace fuzz
