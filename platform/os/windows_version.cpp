// Version information of executables, by the system's own functions.

#include <windows.h>
#include <winver.h>

#include <vector>

#include "platform/os/os.h"
#include "platform/os/pe_version.h"
#include "platform/os/windows_api.h"

namespace os {
namespace {

/// Gives in `name` what the narrow functions call the file `path`. False when they cannot reach it: its name
/// is beyond the code page (older systems do not know the manifest's UTF-8), or the path is too long for
/// them.
bool inCodePage(const std::string& path, std::string& name) {
    const std::wstring whole = windows::nativePath(path);
    if (whole.size() >= MAX_PATH) return false;
    if (::GetACP() == CP_UTF8) {
        name = path;
        return true;
    }
    char text[MAX_PATH * 2];  // a character of a code page takes at most two bytes
    BOOL lost = FALSE;
    const int length = ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, whole.c_str(), -1, text,
                                             sizeof text, nullptr, &lost);
    if (length == 0 || lost) return false;
    name = text;
    return true;
}

bool versionByOwnReader(const std::string& path, FileVersion& version) {
    InputFile file;
    return !file.open(path) && pe::readFileVersion(file, version);
}

}  // namespace

bool fileVersion(const std::string& path, FileVersion& version) {
    // The system's functions follow a resource that leads outside the file, and end the process; the own
    // reader knows such files.
    FileVersion own{};
    if (!versionByOwnReader(path, own)) return false;
    std::string name;
    if (!inCodePage(path, name)) {
        version = own;
        return true;
    }
    const DWORD size = ::GetFileVersionInfoSizeA(name.c_str(), nullptr);
    if (size == 0) return false;
    std::vector<char> information(size);
    // A block that could not be read stays zero, and then has no root for the query.
    static_cast<void>(::GetFileVersionInfoA(name.c_str(), 0, size, information.data()));

    void* root = nullptr;
    UINT length = 0;
    if (!::VerQueryValueW(information.data(), L"\\", &root, &length)) return false;
    if (root == nullptr || length < sizeof(VS_FIXEDFILEINFO)) return false;
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(root);
    if (fixed.dwSignature != VS_FFI_SIGNATURE) return false;
    version = {HIWORD(fixed.dwFileVersionMS), LOWORD(fixed.dwFileVersionMS), HIWORD(fixed.dwFileVersionLS),
               LOWORD(fixed.dwFileVersionLS)};
    return true;
}

}  // namespace os
