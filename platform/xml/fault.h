#pragma once

#include <string>
#include <utility>

#include "platform/base/status.h"

namespace xml {

/// Why a document is refused. Thrown inside the reader only; the operations turn it into a status.
struct Fault {
    zStatus status;
    std::string detail;  ///< "12:5: </Path> closes <path>"
};

/// Where `place` lies in the UTF-8 text that begins at `begin`: "12:5", line and column, both from 1. A
/// column is a character; CR LF, LF and CR end lines. The text up to `place` must be valid.
std::string position(const char* begin, const char* place);

}  // namespace xml
