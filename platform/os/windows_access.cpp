#include <windows.h>

#include "platform/os/access.h"
#include "platform/os/windows_api.h"

namespace os {

bool mayReplace(const std::string& path) {
    const DWORD attributes = ::GetFileAttributesW(windows::nativePath(path).c_str());
    return attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0;
}

}  // namespace os
