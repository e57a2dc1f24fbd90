#pragma once

#include <cstdint>

/// The outcome of an operation: a signed 32-bit number, of which exactly 1 means success. Callers pass values
/// they do not know on unchanged.
enum [[nodiscard]] zStatus : std::int32_t{
    zStatus_Success = 1,
    zStatus_Failure = 0,           ///< General failure, e.g. of an external command.
    zStatus_NotFound = -999,       ///< A file, path, member or value does not exist.
    zStatus_Unestablished = -984,  ///< A value cannot be established, or a request is not supported.
    zStatus_IoError = -5,          ///< The operating system refused to read, write or look something up.
    zStatus_NoMemory = -12,        ///< Memory is exhausted, or a size is beyond what memory can hold.
    zStatus_BadArgument = -22,     ///< A null or foreign handle, or a text that cannot be stored as asked.
    zStatus_Malformed = -74,       ///< Input that breaks the rules of its format.
    zStatus_DoesNotFit = -75,      ///< A text is longer than the buffer it was to go into.
    zStatus_Unsupported = -95,     ///< Input in a form this program does not read.
};

/// The English phrase for `status` ("not found"); "unknown status" for a value that has none. Never null.
const char* zStatus_Phrase(zStatus status);
