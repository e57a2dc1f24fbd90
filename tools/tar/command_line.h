#pragma once

#include <span>
#include <string>

namespace tar {

/// What the words of the command line ask for.
struct Request {
    bool help = false;
    bool verbose = false;
    std::string directory = ".";
    std::string archive;
};

/// Reads the words behind the program's name. Throws Failure for what it does not know, and when nothing is
/// asked for that this program does.
Request readCommandLine(std::span<const std::string> words);

extern const char* const usage;

}  // namespace tar
