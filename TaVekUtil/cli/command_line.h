#pragma once

#include <string>
#include <vector>

#include "platform/base/text.h"

/// The values of the command line's flags, cut to what their buffers hold; empty for a flag that is not
/// given.
struct Flags {
    Ta::ShortText platform;
    Ta::PathText archive;
    Ta::PathText manifest;
    Ta::PathText config;
    Ta::PathText file;
};

/// Prints the usage text to standard output.
void printUsage();

/// What scanning the command line has come to.
enum class Scan {
    complete,  ///< The flags are filled.
    help,      ///< Help was asked for; nothing else counts.
    failed,    ///< A flag has no value, which has been reported on standard error.
};

/// Scans `words`, the program's name first, into `flags`. Unknown flags and stray words are skipped; of a
/// flag given twice the later value wins.
Scan scanFlags(const std::vector<std::string>& words, Flags& flags);

/// What the program is to do.
enum class Mode { none, batch, extraction, injection };

/// The mode that `flags` choose: batch with a configuration, else manifest extraction, else injection. The
/// platform key of a batch is completed to "all" and checked. Mode::none after reporting on standard error
/// that the flags choose none, or a platform that there is not.
Mode chooseMode(Flags& flags);

/// Runs `mode`, which is not none; answers its result.
int runMode(Mode mode, const Flags& flags);
