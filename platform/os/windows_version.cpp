// Version information of executables, by the system's own functions.

#include <windows.h>
#include <winver.h>

#include <vector>

#include "platform/os/os.h"

namespace os {

bool fileVersion(const std::string& path, FileVersion& version) {
    const DWORD size = ::GetFileVersionInfoSizeA(path.c_str(), nullptr);
    if (size == 0) return false;
    std::vector<char> information(size);
    // A block that could not be read stays zero, and then has no root for the query.
    static_cast<void>(::GetFileVersionInfoA(path.c_str(), 0, size, information.data()));

    void* root = nullptr;
    UINT length = 0;
    if (!::VerQueryValueW(information.data(), L"\\", &root, &length)) return false;
    if (root == nullptr || length < sizeof(VS_FIXEDFILEINFO)) return false;
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(root);
    version = {HIWORD(fixed.dwFileVersionMS), LOWORD(fixed.dwFileVersionMS), HIWORD(fixed.dwFileVersionLS),
               LOWORD(fixed.dwFileVersionLS)};
    return true;
}

}  // namespace os
