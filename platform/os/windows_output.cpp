// Writing on Windows: a temporary file beside the target that takes its place.

#include <windows.h>
// After windows.h, whose types they use.
#include <aclapi.h>
#include <ntdef.h>
#include <winioctl.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/os/os.h"
#include "platform/os/windows_api.h"

namespace os {

using windows::errorOf;
using windows::Handle;
using windows::lastError;
using windows::nativePath;

namespace {

/// What the new file takes over from the one it replaces.
struct Replaced {
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    PACL accessList = nullptr;  // lies in `descriptor`
    std::unique_ptr<void, HLOCAL (*)(HLOCAL)> descriptor{nullptr, ::LocalFree};
    bool inherits = true;
};

std::error_code readPermissions(HANDLE file, Replaced& replaced) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = ::GetSecurityInfo(file, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                          &replaced.accessList, nullptr, &descriptor);
    // Some file systems keep no permissions.
    if (error != ERROR_SUCCESS) return error == ERROR_NOT_SUPPORTED ? std::error_code{} : errorOf(error);
    replaced.descriptor.reset(descriptor);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (!::GetSecurityDescriptorControl(descriptor, &control, &revision)) return lastError();
    replaced.inherits = (control & SE_DACL_PROTECTED) == 0;
    return {};
}

std::error_code givePermissions(HANDLE file, const Replaced& replaced) {
    if (!replaced.descriptor) return {};
    const DWORD inheritance =
        replaced.inherits ? UNPROTECTED_DACL_SECURITY_INFORMATION : PROTECTED_DACL_SECURITY_INFORMATION;
    const DWORD error = ::SetSecurityInfo(file, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | inheritance,
                                          nullptr, nullptr, replaced.accessList, nullptr);
    return error == ERROR_SUCCESS ? std::error_code{} : errorOf(error);
}

std::error_code giveAttributes(HANDLE file, DWORD attributes) {
    constexpr DWORD settable = FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                               FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    FILE_BASIC_INFO info{};  // times of zero stay what they are
    info.FileAttributes = (attributes & settable) != 0 ? attributes & settable : FILE_ATTRIBUTE_NORMAL;
    return ::SetFileInformationByHandle(file, FileBasicInfo, &info, sizeof info) ? std::error_code{}
                                                                                 : lastError();
}

/// Looks at what is at `target` now. A directory and a read-only file are refused.
std::error_code lookAt(const std::wstring& target, bool& exists, Replaced& replaced) {
    const Handle present = windows::openExisting(target, FILE_READ_ATTRIBUTES | READ_CONTROL);
    exists = present.valid();
    if (!exists) {
        return ::GetLastError() == ERROR_FILE_NOT_FOUND ? std::error_code{} : windows::lastErrorOn(target);
    }
    BY_HANDLE_FILE_INFORMATION info{};
    if (!::GetFileInformationByHandle(present.get(), &info)) return lastError();
    replaced.attributes = info.dwFileAttributes;
    if ((replaced.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return errorOf(windows::directoryNotSupported);
    if ((replaced.attributes & FILE_ATTRIBUTE_READONLY) != 0) return errorOf(ERROR_FILE_READ_ONLY);
    return readPermissions(present.get(), replaced);
}

/// Creates a hidden file of a name that is nobody else's in the directory of `target`.
std::error_code createTemporary(const std::wstring& target, Handle& file, std::wstring& name) {
    static std::atomic<unsigned> serial{0};
    const std::wstring directory = target.substr(0, windows::lastComponent(target));
    for (;;) {
        std::wstring candidate =
            nativePath(directory + L".tavek-" + std::to_wstring(::GetCurrentProcessId()) + L'-' +
                       std::to_wstring(serial++) + L".tmp");
        file.reset(::CreateFileW(candidate.c_str(), GENERIC_WRITE | DELETE | READ_CONTROL | WRITE_DAC,
                                 FILE_SHARE_READ, nullptr, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN, nullptr));
        if (file.valid()) {
            name = std::move(candidate);
            return {};
        }
        if (::GetLastError() != ERROR_FILE_EXISTS) return lastError();
    }
}

/// Opens the pipe or device `target` itself.
std::error_code openDirectly(const std::wstring& target, Handle& file) {
    file.reset(::CreateFileW(target.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, 0, nullptr));
    return file.valid() ? std::error_code{} : lastError();
}

// ---- Symbolic links --------------------------------------------------------------------------------------

/// The place that the content of the symbolic link `link` names; false when it is no such link.
bool readLink(const std::wstring& link, std::wstring& destination) {
    const Handle file(::CreateFileW(
        nativePath(link).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!file.valid()) return false;
    alignas(REPARSE_DATA_BUFFER) char block[MAXIMUM_REPARSE_DATA_BUFFER_SIZE];
    DWORD size = 0;
    if (!::DeviceIoControl(file.get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, block, sizeof block, &size,
                           nullptr)) {
        return false;
    }
    const auto& data = *reinterpret_cast<const REPARSE_DATA_BUFFER*>(block);
    if (data.ReparseTag != IO_REPARSE_TAG_SYMLINK) return false;
    const auto& content = data.SymbolicLinkReparseBuffer;
    destination.assign(content.PathBuffer + content.SubstituteNameOffset / sizeof(wchar_t),
                       content.SubstituteNameLength / sizeof(wchar_t));
    if ((content.Flags & SYMLINK_FLAG_RELATIVE) != 0) {
        destination.insert(0, link.substr(0, windows::lastComponent(link)));
        return true;
    }
    // Links hold absolute places in the kernel's writing: \??\C:\... and \??\UNC\server\...
    constexpr std::wstring_view kernelPrefix = LR"(\??\)";
    constexpr std::wstring_view unlimitedPrefix = LR"(\\?\)";
    if (destination.starts_with(kernelPrefix)) {
        destination.replace(0, kernelPrefix.size(), unlimitedPrefix);
    }
    return true;
}

/// Follows `target` to the place it stands for, which may be one where nothing is yet.
std::error_code followLinks(std::wstring& target) {
    constexpr int maximumLinks = 40;
    for (int links = 0; links < maximumLinks; ++links) {
        const DWORD attributes = ::GetFileAttributesW(nativePath(target).c_str());
        const bool mayBeLink =
            attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        std::wstring destination;
        if (!mayBeLink || !readLink(target, destination)) return {};
        target = std::move(destination);
    }
    return errorOf(ERROR_CANT_RESOLVE_FILENAME);
}

// ---- Taking the target's place ---------------------------------------------------------------------------

/// Renames the open file over `target` so that whoever has the old file open keeps it. Only newer versions of
/// Windows and their own file system can.
bool renameOpenFile(HANDLE file, const std::wstring& target) {
    constexpr auto renameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);  // headers may hide its name
    constexpr DWORD replaceIfExists = 1;
    constexpr DWORD posixSemantics = 2;
    const std::size_t nameSize = target.size() * sizeof(wchar_t);
    std::vector<char> block(sizeof(FILE_RENAME_INFO) + nameSize);
    auto* info = reinterpret_cast<FILE_RENAME_INFO*>(block.data());
    const DWORD flags = replaceIfExists | posixSemantics;
    std::memcpy(info, &flags, sizeof flags);  // the first field; older headers know it as a single byte
    info->FileNameLength = static_cast<DWORD>(nameSize);
    std::memcpy(info->FileName, target.data(), nameSize);
    return ::SetFileInformationByHandle(file, renameInfoEx, info, static_cast<DWORD>(block.size())) != 0;
}

bool moveFile(const std::wstring& from, const std::wstring& to) {
    return ::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

/// True when `target` is a file whose users, if there are any, all allow its removal, as our own readers do.
bool mayBeMovedAside(const std::wstring& target) {
    const Handle probe = windows::openExisting(target, DELETE);
    BY_HANDLE_FILE_INFORMATION info{};
    return probe.valid() && ::GetFileInformationByHandle(probe.get(), &info) &&
           (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

/// Moves the closed file `temporary` over `target`, on systems and file systems that cannot rename an open
/// file. There a file that is open for reading cannot be moved over, but it can be moved aside: then, for a
/// moment, the target's name is nobody's. Should moving it back fail, too, it stays under that other name.
bool moveClosedFile(const std::wstring& temporary, const std::wstring& target) {
    if (moveFile(temporary, target)) return true;
    const DWORD error = ::GetLastError();
    const std::wstring aside = temporary + L".old";
    if (mayBeMovedAside(target) && moveFile(target, aside)) {
        if (moveFile(temporary, target)) {
            ::DeleteFileW(aside.c_str());
            return true;
        }
        moveFile(aside, target);
    }
    ::SetLastError(error);
    return false;
}

/// Why `target` could not be replaced: the rename itself tells no more than that access is denied.
std::error_code reasonAgainst(const std::wstring& target, DWORD error) {
    if (error != ERROR_ACCESS_DENIED) return errorOf(error);
    const Handle probe = windows::openExisting(target, DELETE);
    return !probe.valid() && ::GetLastError() == ERROR_SHARING_VIOLATION ? errorOf(ERROR_SHARING_VIOLATION)
                                                                         : errorOf(error);
}

}  // namespace

struct OutputFile::State {
    Handle file;
    std::wstring target;     // where the content belongs, symbolic links resolved
    std::wstring temporary;  // "" when the target is written directly
    bool replaces = false;
    Replaced replaced;

    ~State() {
        file.reset();
        if (!temporary.empty()) ::DeleteFileW(temporary.c_str());
    }
};

OutputFile::OutputFile() = default;
OutputFile::~OutputFile() = default;
OutputFile::OutputFile(OutputFile&&) noexcept = default;
OutputFile& OutputFile::operator=(OutputFile&&) noexcept = default;

std::error_code OutputFile::open(const std::string& target) {
    // New files get what their directory hands down; Windows has no bits to take from a model.
    return openLike(target, "");
}

std::error_code OutputFile::openLike(const std::string& target, const std::string&) {
    auto opened = std::make_unique<State>();
    opened->target = windows::wide(target);
    if (target.empty()) return errorOf(ERROR_PATH_NOT_FOUND);
    if (std::error_code error = followLinks(opened->target)) return error;
    opened->target = nativePath(std::move(opened->target));

    std::error_code error;
    if (windows::isDevice(opened->target)) {
        error = openDirectly(opened->target, opened->file);
    } else {
        error = lookAt(opened->target, opened->replaces, opened->replaced);
        if (!error) error = createTemporary(opened->target, opened->file, opened->temporary);
    }
    if (!error) state = std::move(opened);
    return error;
}

std::error_code OutputFile::write(const void* bytes, std::size_t size) {
    constexpr std::size_t largestWrite = std::size_t{1} << 30;
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        DWORD written = 0;
        if (!::WriteFile(state->file.get(), next, static_cast<DWORD>(std::min(size, largestWrite)), &written,
                         nullptr)) {
            return lastError();
        }
        next += written;
        size -= written;
    }
    return {};
}

std::error_code OutputFile::commit() {
    const std::unique_ptr<State> finished = std::move(state);
    if (finished->temporary.empty()) return {};

    HANDLE file = finished->file.get();
    if (std::error_code error = giveAttributes(file, finished->replaced.attributes)) return error;
    if (finished->replaces) {
        if (std::error_code error = givePermissions(file, finished->replaced)) return error;
    }
    if (!::FlushFileBuffers(file)) return lastError();
    if (renameOpenFile(file, finished->target)) {
        finished->temporary.clear();
        return {};
    }
    finished->file.reset();
    if (!moveClosedFile(finished->temporary, finished->target)) {
        return reasonAgainst(finished->target, ::GetLastError());
    }
    finished->temporary.clear();
    return {};
}

}  // namespace os
