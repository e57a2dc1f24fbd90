#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/tar/header.h"

namespace tar {

/// What an extended header says instead of the plain one. Records of other keywords are passed over, but
/// those of files with holes are refused.
struct Overrides {
    /// A value; nothing where none was said, and a nothing within where what was said is taken back.
    template <typename Value>
    using Said = std::optional<std::optional<Value>>;

    Said<std::string> name;
    Said<std::string> link;
    Said<std::uint64_t> size;
    Said<os::Time> time;

    /// Takes in the records ("LENGTH KEYWORD=VALUE" and a line feed each) of an extended header; a value of
    /// nothing takes back what was said before, here or globally. Throws Failure when they are malformed.
    void read(std::string_view records);

    /// Puts what `stronger` says in place of what is said here.
    void overlay(const Overrides& stronger);

    /// Puts what is said here in place of what the plain header says.
    void apply(Member& member) const;
};

}  // namespace tar
