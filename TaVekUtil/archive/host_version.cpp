#include "TaVekUtil/archive/host_version.h"

#include "platform/base/exception.h"
#include "platform/os/os.h"

std::string TaVekUtils_GetHostVersion(std::string path) {
    os::FileVersion version{};
    if (!os::fileVersion(path + hostExecutable, version)) {
        throw Ta::Exception(zStatus_NotFound, "TaQor version could not be established");
    }
    return std::to_string(version[0]) + '.' + std::to_string(version[1]) + '.' + std::to_string(version[2]) +
           '.' + std::to_string(version[3]);
}
