#include "platform/os/pe_version.h"

namespace os::pe {

bool readFileVersion(const InputFile&, FileVersion&) {
    return false;
}

}  // namespace os::pe
