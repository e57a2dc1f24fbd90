// Version information of executables, by a reader of our own.

#include "platform/os/os.h"
#include "platform/os/pe_version.h"

namespace os {

bool fileVersion(const std::string& path, FileVersion& version) {
    InputFile file;
    return !file.open(path) && pe::readFileVersion(file, version);
}

}  // namespace os
