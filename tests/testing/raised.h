#pragma once

#include <gmock/gmock.h>

#include "platform/base/exception.h"

namespace testing {

/// The Ta::Exception that `action` ends with; fails the test when there is none.
template <typename Action>
Ta::Exception raised(Action action) {
    try {
        action();
    } catch (const Ta::Exception& exception) {
        return exception;
    }
    ADD_FAILURE() << "nothing was raised";
    return Ta::Exception("nothing was raised");
}

inline void PrintTo(const Ta::Exception& exception, std::ostream* stream) {
    *stream << exception.what() << " [" << exception.operation() << ", status "
            << static_cast<int>(exception.status()) << ", line " << exception.line() << ']';
}

/// Located in `operation`, with that status; the line is not looked at.
MATCHER_P2(IsLocated, operation, status, "") {
    *result_listener << arg.what();
    return arg.operation() == operation && arg.status() == status && arg.line() > 0;
}

/// Located in `operation`, with that status and line.
MATCHER_P3(IsLocatedAt, operation, status, line, "") {
    *result_listener << arg.what();
    return arg.operation() == operation && arg.status() == status && arg.line() == line;
}

/// A finding of the tool's own: status and message, no place.
MATCHER_P2(IsFinding, status, message, "") {
    *result_listener << arg.what();
    return arg.status() == status && std::string(arg.what()) == message && arg.operation().empty() &&
           arg.line() == 0;
}

}  // namespace testing
