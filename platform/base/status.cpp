#include "platform/base/status.h"

const char* zStatus_Phrase(zStatus status) {
    switch (status) {
        case zStatus_Success:
            return "success";
        case zStatus_Failure:
            return "failure";
        case zStatus_NotFound:
            return "not found";
        case zStatus_Unestablished:
            return "cannot be established";
        case zStatus_IoError:
            return "input/output error";
        case zStatus_NoMemory:
            return "out of memory";
        case zStatus_BadArgument:
            return "invalid argument";
        case zStatus_Malformed:
            return "malformed input";
        case zStatus_DoesNotFit:
            return "does not fit";
        case zStatus_Unsupported:
            return "not supported";
    }
    return "unknown status";
}
