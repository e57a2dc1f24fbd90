#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <system_error>
#include <utility>

/// What the Windows sources of os.h share: errors, texts and handles. All calls are those for wide
/// characters, so nothing depends on the code page.
namespace os::windows {

// Codes that the headers of MinGW-w64 do not name.
constexpr DWORD directoryNotSupported = 336;
constexpr DWORD diskQuotaExceeded = 1295;

/// The Win32 error `code`. It compares with std::errc as on every system, and its message is the sentence
/// that other systems have for the same condition, so far as there is one.
std::error_code errorOf(DWORD code);
std::error_code lastError();

/// UTF-16 of UTF-8. A text that is no UTF-8 gives a name that no file can bear, which the system then
/// refuses.
std::wstring wide(std::string_view utf8);
/// UTF-8 of UTF-16; half a surrogate pair becomes U+FFFD.
std::string narrow(std::wstring_view utf16);

/// `path` as the system's calls take it: whole, with `\` alone and, where it is too long for the old limit of
/// 260 characters, in the form `\\?\C:\...` or `\\?\UNC\server\...` that has none. Empty stays empty.
std::wstring nativePath(std::wstring path);
std::wstring nativePath(std::string_view utf8);

/// True when the native `path` names a device or a pipe, not a place in a file system.
bool isDevice(std::wstring_view path);

/// Where the last component of `path` begins.
std::size_t lastComponent(std::wstring_view path);

/// Why the last call on the native `path` failed. A path that leads through a file is told apart from one
/// that names nothing, as on other systems; Windows itself does not.
std::error_code lastErrorOn(const std::wstring& path);

/// Owns a kernel object's handle.
class Handle {
  public:
    explicit Handle(HANDLE handle = INVALID_HANDLE_VALUE) : handle_(handle) {}
    ~Handle() { reset(); }
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    Handle& operator=(Handle&& other) noexcept {
        reset(std::exchange(other.handle_, INVALID_HANDLE_VALUE));
        return *this;
    }

    HANDLE get() const { return handle_; }
    bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }
    void reset(HANDLE handle = INVALID_HANDLE_VALUE) {
        if (valid()) ::CloseHandle(handle_);
        handle_ = handle;
    }

  private:
    HANDLE handle_;
};

/// Opens what is at the native `path`, a directory too, without hindering anybody else.
Handle openExisting(const std::wstring& path, DWORD access);

}  // namespace os::windows
