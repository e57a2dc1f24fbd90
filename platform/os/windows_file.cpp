// What paths name, reading and removing on Windows.

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/os/os.h"
#include "platform/os/windows_api.h"

namespace os {

using windows::errorOf;
using windows::Handle;
using windows::lastError;
using windows::nativePath;

namespace {

bool isSeparator(char character) {
    return character == '/' || character == '\\';
}

bool isLetter(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool hasDrive(std::string_view path) {
    return path.size() >= 2 && isLetter(path[0]) && path[1] == ':';
}

/// Length of "\\server\share\" at the start of `path`, or of as much of it as there is.
std::size_t networkRootLength(std::string_view path) {
    std::size_t end = 2;
    for (int component = 0; component < 2; ++component) {
        end = path.find_first_of("/\\", end);
        if (end == std::string_view::npos) return path.size();
        ++end;
    }
    return end;
}

/// What tells a file from every other one on this computer and on the network.
struct Identity {
    std::uint64_t volume = 0;
    std::array<std::uint8_t, 16> file{};

    bool operator==(const Identity&) const = default;
};

bool identify(HANDLE file, Identity& identity) {
    FILE_ID_INFO wide{};
    if (::GetFileInformationByHandleEx(file, FileIdInfo, &wide, sizeof wide)) {
        identity.volume = wide.VolumeSerialNumber;
        std::memcpy(identity.file.data(), &wide.FileId, identity.file.size());
        return true;
    }
    // File systems that have no wide numbers have narrow ones.
    BY_HANDLE_FILE_INFORMATION info{};
    if (!::GetFileInformationByHandle(file, &info)) return false;
    identity.volume = info.dwVolumeSerialNumber;
    std::memcpy(identity.file.data(), &info.nFileIndexHigh, sizeof info.nFileIndexHigh);
    std::memcpy(identity.file.data() + sizeof info.nFileIndexHigh, &info.nFileIndexLow,
                sizeof info.nFileIndexLow);
    return true;
}

/// Finds out what is behind an open handle, and its size when it is a regular file.
std::error_code inspect(HANDLE file, FileType& type, std::uint64_t& size) {
    type = FileType::other;
    size = 0;
    if (::GetFileType(file) != FILE_TYPE_DISK) return {};
    BY_HANDLE_FILE_INFORMATION info{};
    if (!::GetFileInformationByHandle(file, &info)) return lastError();
    if ((info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        type = FileType::directory;
    } else {
        type = FileType::regular;
        size = (std::uint64_t{info.nFileSizeHigh} << 32) | info.nFileSizeLow;
    }
    return {};
}

}  // namespace

// ---- Paths ---------------------------------------------------------------------------------------------

const char pathSeparator = '\\';

std::size_t rootLength(std::string_view path) {
    if (hasDrive(path)) return path.size() > 2 && isSeparator(path[2]) ? 3 : 2;
    if (path.empty() || !isSeparator(path[0])) return 0;
    return path.size() > 1 && isSeparator(path[1]) ? networkRootLength(path) : 1;
}

bool isAbsolute(std::string_view path) {
    return hasDrive(path) || (!path.empty() && isSeparator(path[0]));
}

std::error_code fileType(const std::string& path, FileType& type) {
    const std::wstring name = nativePath(path);
    if (windows::isDevice(name)) {
        // Opening a pipe to look at it would take a connection away from whoever waits for one.
        type = FileType::other;
        return {};
    }
    const Handle opened = windows::openExisting(name, FILE_READ_ATTRIBUTES);
    if (!opened.valid()) {
        const std::error_code error = lastError();
        if (error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory)
            return error;
        type = FileType::absent;
        return {};
    }
    std::uint64_t size = 0;
    return inspect(opened.get(), type, size);
}

// ---- Reading -------------------------------------------------------------------------------------------

struct InputFile::State {
    Handle file;
    FileType type = FileType::other;
    std::uint64_t size = 0;
    std::uint64_t next = 0;  // where readNext goes on in a regular file
};

InputFile::InputFile() = default;
InputFile::~InputFile() = default;
InputFile::InputFile(InputFile&&) noexcept = default;
InputFile& InputFile::operator=(InputFile&&) noexcept = default;

std::error_code InputFile::open(const std::string& path) {
    auto opened = std::make_unique<State>();
    const std::wstring name = nativePath(path);
    opened->file = windows::openExisting(name, GENERIC_READ);
    if (!opened->file.valid()) return windows::lastErrorOn(name);
    if (std::error_code error = inspect(opened->file.get(), opened->type, opened->size)) return error;
    if (opened->type == FileType::directory) return errorOf(windows::directoryNotSupported);
    state = std::move(opened);
    return {};
}

void InputFile::close() {
    state.reset();
}

bool InputFile::isOpen() const {
    return state != nullptr;
}

std::uint64_t InputFile::size() const {
    return state->size;
}

bool InputFile::isRegular() const {
    return state->type == FileType::regular;
}

namespace {

/// One call of the system, which takes sizes of 32 bits. `place` is null where there are no offsets.
std::error_code readOnce(HANDLE file, OVERLAPPED* place, void* buffer, std::size_t capacity,
                         std::size_t& count) {
    constexpr std::size_t largestRead = std::size_t{1} << 30;
    DWORD got = 0;
    if (!::ReadFile(file, buffer, static_cast<DWORD>(std::min(capacity, largestRead)), &got, place)) {
        const DWORD error = ::GetLastError();
        if (error != ERROR_HANDLE_EOF && error != ERROR_BROKEN_PIPE) return errorOf(error);
        got = 0;
    }
    count = got;
    return {};
}

}  // namespace

std::error_code InputFile::read(std::uint64_t offset, void* buffer, std::size_t capacity,
                                std::size_t& count) const {
    std::size_t done = 0;
    while (done < capacity) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset + done);
        place.OffsetHigh = static_cast<DWORD>((offset + done) >> 32);
        std::size_t got = 0;
        if (std::error_code error = readOnce(state->file.get(), &place, static_cast<char*>(buffer) + done,
                                             capacity - done, got)) {
            return error;
        }
        if (got == 0) break;
        done += got;
    }
    count = done;
    return {};
}

std::error_code InputFile::readNext(void* buffer, std::size_t capacity, std::size_t& count) {
    if (!isRegular()) return readOnce(state->file.get(), nullptr, buffer, capacity, count);
    if (std::error_code error = read(state->next, buffer, capacity, count)) return error;
    state->next += count;
    return {};
}

bool InputFile::isSameFileAs(const std::string& path) const {
    const std::wstring name = nativePath(path);
    if (windows::isDevice(name)) return false;
    const Handle other = windows::openExisting(name, FILE_READ_ATTRIBUTES);
    Identity here;
    Identity there;
    return other.valid() && identify(state->file.get(), here) && identify(other.get(), there) &&
           here == there;
}

std::error_code removeFile(const std::string& path) {
    const std::wstring name = nativePath(path);
    if (::DeleteFileW(name.c_str())) return {};
    const DWORD error = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return windows::lastErrorOn(name);
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return errorOf(windows::directoryNotSupported);
    const bool readOnly = error == ERROR_ACCESS_DENIED && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    return errorOf(readOnly ? ERROR_FILE_READ_ONLY : error);
}

}  // namespace os
