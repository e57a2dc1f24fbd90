#include <unistd.h>

#include "platform/os/access.h"
#include "platform/os/posix_api.h"

namespace os {

bool mayReplace(const std::string& path) {
    const std::string name = posix::native(path);
    return ::access(posix::directoryOf(name).c_str(), W_OK | X_OK) == 0;
}

}  // namespace os
