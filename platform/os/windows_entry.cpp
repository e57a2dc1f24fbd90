// Names, links and times on Windows.

#include <algorithm>
#include <array>
#include <limits>

#include "platform/os/os.h"
#include "platform/os/windows_api.h"

namespace os {

using windows::errorOf;
using windows::Handle;
using windows::lastError;
using windows::nativePath;

namespace {

/// `name` up to its first dot, without spaces at the end, in capitals: devices hide behind any extension.
std::string stemOf(std::string_view name) {
    std::string stem(name.substr(0, name.find('.')));
    stem.erase(stem.find_last_not_of(' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return stem;
}

bool isDeviceName(std::string_view name) {
    constexpr std::array<std::string_view, 6> plain{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    const std::string stem = stemOf(name);
    if (std::find(plain.begin(), plain.end(), stem) != plain.end()) return true;
    if (!stem.starts_with("COM") && !stem.starts_with("LPT")) return false;
    const std::string_view number = std::string_view(stem).substr(3);
    // Superscript digits count as digits.
    return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') || number == "\u00B9" ||
           number == "\u00B2" || number == "\u00B3";
}

bool isUtf8(std::string_view text) {
    return ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), static_cast<int>(text.size()),
                                 nullptr, 0) > 0;
}

DWORD attributesOf(const std::string& path) {
    return ::GetFileAttributesW(nativePath(path).c_str());
}

/// True when the link's `destination`, seen from the directory of `path`, is a directory now.
bool leadsToDirectory(const std::string& destination, const std::string& path) {
    FileType type{};
    const std::size_t end = path.find_last_of("/\\");
    const bool isWhole = isAbsolute(destination) || end == std::string::npos;
    const std::string place = isWhole ? destination : path.substr(0, end + 1) + destination;
    return !fileType(place, type) && type == FileType::directory;
}

}  // namespace

bool isFileName(std::string_view name) {
    if (name.empty() || name.ends_with('.') || name.ends_with(' ')) return false;
    const bool hasOddCharacter = std::any_of(name.begin(), name.end(), [](char c) {
        constexpr std::string_view reserved = R"(<>:"/\|?*)";
        return (c >= 0 && c < ' ') || reserved.find(c) != std::string_view::npos;
    });
    return !hasOddCharacter && !isDeviceName(name) && isUtf8(name);
}

std::error_code isLink(const std::string& path, bool& link) {
    const DWORD attributes = attributesOf(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const std::error_code error = lastError();
        if (error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory)
            return error;
        link = false;
        return {};
    }
    link = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return {};
}

std::error_code createSymbolicLink(const std::string& destination, const std::string& path) {
    constexpr DWORD directoryFlag = 1;     // SYMBOLIC_LINK_FLAG_DIRECTORY
    constexpr DWORD unprivilegedFlag = 2;  // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE
    std::wstring content = windows::wide(destination);
    std::replace(content.begin(), content.end(), L'/', L'\\');
    const DWORD kind = leadsToDirectory(destination, path) ? directoryFlag : 0;
    if (!::CreateSymbolicLinkW(nativePath(path).c_str(), content.c_str(), kind | unprivilegedFlag)) {
        return lastError();
    }
    // Some systems that know no links claim to have made one.
    return attributesOf(path) == INVALID_FILE_ATTRIBUTES ? errorOf(ERROR_NOT_SUPPORTED) : std::error_code{};
}

std::error_code createHardLink(const std::string& existing, const std::string& path) {
    return ::CreateHardLinkW(nativePath(path).c_str(), nativePath(existing).c_str(), nullptr)
               ? std::error_code{}
               : lastError();
}

std::error_code setModificationTime(const std::string& path, Time time) {
    constexpr std::int64_t unitsPerSecond = 10'000'000;  // of 100 ns, counted from 1601
    constexpr std::int64_t secondsTo1970 = 11'644'473'600;
    constexpr std::int64_t latest = std::numeric_limits<std::int64_t>::max() / unitsPerSecond - 1;
    if (time.seconds < -secondsTo1970 || time.seconds > latest - secondsTo1970) {
        return errorOf(ERROR_INVALID_PARAMETER);
    }
    const auto units =
        static_cast<std::uint64_t>((time.seconds + secondsTo1970) * unitsPerSecond + time.nanoseconds / 100);
    const FILETIME value{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
    const Handle opened(::CreateFileW(nativePath(path).c_str(), FILE_WRITE_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!opened.valid() || !::SetFileTime(opened.get(), nullptr, nullptr, &value)) return lastError();
    return {};
}

std::error_code setPermissions(const std::string&, unsigned) {
    return {};
}

}  // namespace os
