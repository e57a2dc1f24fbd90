#pragma once

#include <string>
#include <string_view>

#include "tools/tar/header.h"

namespace testing {

/// What a header says; what is not given is that of a plain file.
struct TarEntry {
    std::string name;
    std::string content{};
    char kind = '0';
    std::string link{};
    std::string mode = "0000644";
    std::string time = "00000000001";
    std::string size{};  ///< "" for that of the content
    std::string magic{
        "ustar\0"
        "00",
        8};
    std::string prefix{};
};

/// The header of `entry`, with the right checksum.
tar::Block tarHeader(const TarEntry& entry);
/// The header and the content, in whole blocks.
std::string tarMember(const TarEntry& entry);
/// An extended header for the next member (or 'g' for all) with one record.
std::string paxHeader(std::string_view keyword, std::string_view value, char kind = 'x');
/// A GNU header that gives the next member its long name ('L') or link ('K').
std::string longHeader(std::string_view text, char kind);
/// The two blocks of zeros at the end.
std::string tarEnd();

/// A gzip file with `content` in stored blocks.
std::string gzipped(std::string_view content);

}  // namespace testing
