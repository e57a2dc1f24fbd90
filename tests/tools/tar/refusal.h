#pragma once

#include <string>

#include "tools/tar/failure.h"

namespace testing {

/// The message of the tar::Failure that `action` throws; "" when it throws none.
template <typename Action>
std::string refusalOf(Action action) {
    try {
        action();
        return "";
    } catch (const tar::Failure& failure) {
        return failure.what();
    }
}

}  // namespace testing
