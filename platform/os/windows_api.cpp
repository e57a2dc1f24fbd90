#include "platform/os/windows_api.h"

#include <algorithm>
#include <array>

namespace os::windows {
namespace {

/// What a Win32 error means on every system. The sentence is the one that POSIX systems print, except where
/// Windows alone knows the case.
struct Meaning {
    DWORD code;
    std::errc condition;
    const char* sentence;
};

constexpr const char* noSuchFile = "No such file or directory";
constexpr const char* permissionDenied = "Permission denied";
constexpr const char* inUse = "The file is in use by another program";
constexpr const char* noSpace = "No space left on device";
constexpr const char* ioError = "Input/output error";
constexpr const char* notSupported = "Operation not supported";

constexpr Meaning meanings[] = {
    {ERROR_FILE_NOT_FOUND, std::errc::no_such_file_or_directory, noSuchFile},
    {ERROR_PATH_NOT_FOUND, std::errc::no_such_file_or_directory, noSuchFile},
    {ERROR_INVALID_DRIVE, std::errc::no_such_file_or_directory, noSuchFile},
    {ERROR_BAD_PATHNAME, std::errc::no_such_file_or_directory, noSuchFile},
    {ERROR_BAD_NETPATH, std::errc::no_such_file_or_directory, noSuchFile},
    {ERROR_BAD_NET_NAME, std::errc::no_such_file_or_directory, noSuchFile},
    {ERROR_INVALID_NAME, std::errc::no_such_file_or_directory, "Windows allows no such file name"},
    {ERROR_DIRECTORY, std::errc::not_a_directory, "Not a directory"},
    {directoryNotSupported, std::errc::is_a_directory, "Is a directory"},
    {ERROR_FILE_EXISTS, std::errc::file_exists, "File exists"},
    {ERROR_ALREADY_EXISTS, std::errc::file_exists, "File exists"},
    {ERROR_ACCESS_DENIED, std::errc::permission_denied, permissionDenied},
    {ERROR_PRIVILEGE_NOT_HELD, std::errc::permission_denied, permissionDenied},
    {ERROR_NETWORK_ACCESS_DENIED, std::errc::permission_denied, permissionDenied},
    {ERROR_FILE_READ_ONLY, std::errc::permission_denied, "The file is read-only"},
    {ERROR_SHARING_VIOLATION, std::errc::device_or_resource_busy, inUse},
    {ERROR_LOCK_VIOLATION, std::errc::device_or_resource_busy, inUse},
    {ERROR_USER_MAPPED_FILE, std::errc::device_or_resource_busy, inUse},
    {ERROR_BUSY, std::errc::device_or_resource_busy, "Device or resource busy"},
    {ERROR_PIPE_BUSY, std::errc::device_or_resource_busy, "Device or resource busy"},
    {ERROR_WRITE_PROTECT, std::errc::read_only_file_system, "Read-only file system"},
    {ERROR_DISK_FULL, std::errc::no_space_on_device, noSpace},
    {ERROR_HANDLE_DISK_FULL, std::errc::no_space_on_device, noSpace},
    {diskQuotaExceeded, std::errc::no_space_on_device, noSpace},
    {ERROR_FILE_TOO_LARGE, std::errc::file_too_large, "File too large"},
    {ERROR_FILENAME_EXCED_RANGE, std::errc::filename_too_long, "File name too long"},
    {ERROR_CANT_RESOLVE_FILENAME, std::errc::too_many_symbolic_link_levels,
     "Too many levels of symbolic links"},
    {ERROR_TOO_MANY_OPEN_FILES, std::errc::too_many_files_open, "Too many open files"},
    {ERROR_NOT_ENOUGH_MEMORY, std::errc::not_enough_memory, "Cannot allocate memory"},
    {ERROR_OUTOFMEMORY, std::errc::not_enough_memory, "Cannot allocate memory"},
    {ERROR_BROKEN_PIPE, std::errc::broken_pipe, "Broken pipe"},
    {ERROR_NO_DATA, std::errc::broken_pipe, "Broken pipe"},
    {ERROR_INVALID_HANDLE, std::errc::bad_file_descriptor, "Bad file descriptor"},
    {ERROR_INVALID_PARAMETER, std::errc::invalid_argument, "Invalid argument"},
    {ERROR_NOT_SUPPORTED, std::errc::operation_not_supported, notSupported},
    {ERROR_INVALID_FUNCTION, std::errc::operation_not_supported, notSupported},
    {ERROR_NOT_SAME_DEVICE, std::errc::cross_device_link, "Invalid cross-device link"},
    {ERROR_NOT_READY, std::errc::no_such_device_or_address, "No such device or address"},
    {ERROR_CRC, std::errc::io_error, ioError},
    {ERROR_SEEK, std::errc::io_error, ioError},
    {ERROR_SECTOR_NOT_FOUND, std::errc::io_error, ioError},
    {ERROR_READ_FAULT, std::errc::io_error, ioError},
    {ERROR_WRITE_FAULT, std::errc::io_error, ioError},
    {ERROR_GEN_FAILURE, std::errc::io_error, ioError},
    {ERROR_IO_DEVICE, std::errc::io_error, ioError},
    {ERROR_FILE_CORRUPT, std::errc::io_error, ioError},
    {ERROR_DISK_CORRUPT, std::errc::io_error, ioError},
    {ERROR_NETNAME_DELETED, std::errc::io_error, ioError},
};

const Meaning* meaningOf(int code) {
    const auto* found = std::find_if(std::begin(meanings), std::end(meanings), [&](const Meaning& meaning) {
        return meaning.code == static_cast<DWORD>(code);
    });
    return found == std::end(meanings) ? nullptr : found;
}

/// The system's own words for `code`, in the user's language, without the line end they come with.
std::string systemMessage(DWORD code) {
    std::array<wchar_t, 512> text{};
    DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                                    0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) --length;
    return length == 0 ? "Windows error " + std::to_string(code) : narrow({text.data(), length});
}

class Category : public std::error_category {
  public:
    const char* name() const noexcept override { return "windows"; }

    std::string message(int code) const override {
        const Meaning* meaning = meaningOf(code);
        return meaning != nullptr ? meaning->sentence : systemMessage(static_cast<DWORD>(code));
    }

    std::error_condition default_error_condition(int code) const noexcept override {
        const Meaning* meaning = meaningOf(code);
        return meaning != nullptr ? std::make_error_condition(meaning->condition)
                                  : std::error_condition(code, *this);
    }
};

const Category category;

constexpr std::wstring_view unlimitedPrefix = LR"(\\?\)";
constexpr std::wstring_view unlimitedNetworkPrefix = LR"(\\?\UNC\)";
constexpr std::wstring_view devicePrefix = LR"(\\.\)";
constexpr std::wstring_view networkPrefix = LR"(\\)";

/// `path` without `.` and `..`, beginning at its root; as it is when the system cannot tell.
std::wstring wholePath(const std::wstring& path) {
    const DWORD capacity = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring whole(capacity, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), capacity, whole.data(), nullptr);
    if (length == 0 || length >= capacity) return path;
    whole.resize(length);
    return whole;
}

}  // namespace

std::error_code errorOf(DWORD code) {
    return {static_cast<int>(code), category};
}

std::error_code lastError() {
    return errorOf(::GetLastError());
}

std::wstring wide(std::string_view utf8) {
    if (utf8.empty()) return {};
    const int bytes = static_cast<int>(utf8.size());
    const int count = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), bytes, nullptr, 0);
    if (count == 0) return L"*";
    std::wstring text(static_cast<std::size_t>(count), L'\0');
    ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), bytes, text.data(), count);
    return text;
}

std::string narrow(std::wstring_view utf16) {
    if (utf16.empty()) return {};
    const int units = static_cast<int>(utf16.size());
    const int count = ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), units, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(count), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), units, text.data(), count, nullptr, nullptr);
    return text;
}

std::wstring nativePath(std::wstring path) {
    // A directory must leave room for a short file name in it, hence less than MAX_PATH.
    constexpr std::size_t longestPlainPath = MAX_PATH - 13;
    if (path.empty()) return path;
    std::replace(path.begin(), path.end(), L'/', L'\\');
    if (path.starts_with(unlimitedPrefix)) return path;

    std::wstring whole = wholePath(path);
    if (whole.size() <= longestPlainPath || isDevice(whole)) return whole;
    if (!whole.starts_with(networkPrefix)) return std::wstring(unlimitedPrefix) + whole;
    return std::wstring(unlimitedNetworkPrefix) + whole.substr(networkPrefix.size());
}

std::wstring nativePath(std::string_view utf8) {
    return nativePath(wide(utf8));
}

bool isDevice(std::wstring_view path) {
    return path.starts_with(devicePrefix);
}

std::size_t lastComponent(std::wstring_view path) {
    return path.find_last_of(L"\\/:") + 1;
}

Handle openExisting(const std::wstring& path, DWORD access) {
    return Handle(::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

std::error_code lastErrorOn(const std::wstring& path) {
    const std::error_code error = lastError();
    if (error != std::errc::no_such_file_or_directory) return error;
    std::wstring parent = path;
    for (;;) {
        const std::size_t separator = parent.rfind(L'\\');
        if (separator == std::wstring::npos) return error;
        parent.resize(separator);
        const DWORD attributes = ::GetFileAttributesW(parent.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) continue;
        return (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ? errorOf(ERROR_DIRECTORY) : error;
    }
}

}  // namespace os::windows
