#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/tar/header.h"

namespace tar {

/// What an extended header says instead of the plain one. Records of other keywords are passed over, but
/// those of files with holes are refused.
struct Overrides {
    std::optional<std::string> name;
    std::optional<std::string> link;
    std::optional<std::uint64_t> size;
    std::optional<os::Time> time;

    /// Takes in the records ("LENGTH KEYWORD=VALUE" and a line feed each) of an extended header; a value of
    /// nothing takes back what an earlier record said that was read into this object. Throws Failure when
    /// they are malformed.
    void read(std::string_view records);

    /// Puts what is said here in place of what the plain header says.
    void apply(Member& member) const;
};

}  // namespace tar
