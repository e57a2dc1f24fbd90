#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/os/os.h"

namespace testing {

/// Saves `content` as the whole of the file `target`; answers the first error.
inline std::error_code save(const std::string& target, std::string_view content) {
    os::OutputFile file;
    std::error_code error = file.open(target);
    if (!error) error = file.write(content.data(), content.size());
    if (!error) error = file.commit();
    return error;
}

/// What `path` names; a failed test when that cannot be told.
inline os::FileType typeOf(const std::string& path) {
    os::FileType type{};
    const std::error_code error = os::fileType(path, type);
    EXPECT_FALSE(error) << path << ": " << error.message();
    return type;
}

}  // namespace testing
