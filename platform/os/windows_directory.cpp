// Directories on Windows.

#include "platform/os/os.h"
#include "platform/os/windows_api.h"

namespace os {

using windows::errorOf;
using windows::lastError;
using windows::nativePath;

namespace {

/// Owns a search through a directory.
class Search {
  public:
    explicit Search(const std::wstring& pattern)
        : handle_(::FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry_, FindExSearchNameMatch,
                                     nullptr, FIND_FIRST_EX_LARGE_FETCH)) {}
    ~Search() {
        if (started()) ::FindClose(handle_);
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    bool started() const { return handle_ != INVALID_HANDLE_VALUE; }
    const WIN32_FIND_DATAW& entry() const { return entry_; }
    bool next() { return ::FindNextFileW(handle_, &entry_) != 0; }

  private:
    WIN32_FIND_DATAW entry_{};
    HANDLE handle_;
};

/// Finds out whether an entry is a plain file or a link to one. Where that cannot be told it is an error, for
/// a file must not be passed over in silence.
std::error_code isPlainFile(const std::string& directory, const WIN32_FIND_DATAW& entry,
                            const std::string& name, bool& plain) {
    const bool mayBeLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    plain = !mayBeLink && (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    if (!mayBeLink) return {};
    FileType type{};
    const std::error_code error = fileType(directory + '\\' + name, type);
    plain = !error && type == FileType::regular;
    // Links in a circle lead nowhere.
    return error == std::errc::too_many_symbolic_link_levels ? std::error_code{} : error;
}

/// What the `error` that a search of `directory` ended with at once means.
std::error_code whyNotSearched(const std::string& directory, DWORD error) {
    // What an empty drive answers, which has not even the entry ".".
    if (error == ERROR_FILE_NOT_FOUND) return {};
    FileType type{};
    if (!fileType(directory, type) && type == FileType::regular) return errorOf(ERROR_DIRECTORY);
    return errorOf(error);
}

/// The directory that `path` lies in, "" when it names a root or is relative to the working directory.
std::string parentOf(const std::string& path) {
    const std::size_t root = rootLength(path);
    const std::size_t end = path.find_last_not_of("/\\");
    if (end == std::string::npos || end < root) return "";
    const std::size_t separator = path.find_last_of("/\\", end);
    return separator == std::string::npos ? "" : path.substr(0, std::max(separator, root));
}

}  // namespace

std::error_code createDirectories(const std::string& path) {
    FileType type{};
    if (std::error_code error = fileType(path, type)) return error;
    if (type == FileType::directory) return {};
    if (type != FileType::absent) return errorOf(ERROR_ALREADY_EXISTS);

    const std::string parent = parentOf(path);
    if (!parent.empty() && parent.size() < path.size()) {
        const std::error_code error = createDirectories(parent);
        if (error) return error == std::errc::file_exists ? errorOf(ERROR_DIRECTORY) : error;
    }
    if (::CreateDirectoryW(nativePath(path).c_str(), nullptr)) return {};
    const DWORD error = ::GetLastError();
    // Somebody else may have made it meanwhile.
    return error == ERROR_ALREADY_EXISTS ? std::error_code{} : errorOf(error);
}

std::error_code listFiles(const std::string& directory, std::vector<std::string>& names) {
    // Without this the empty text would mean the root of the drive.
    if (directory.empty()) return errorOf(ERROR_PATH_NOT_FOUND);
    Search search(nativePath(directory + R"(\*)"));
    if (!search.started()) return whyNotSearched(directory, ::GetLastError());
    std::vector<std::string> found;
    do {
        std::string name = windows::narrow(search.entry().cFileName);
        bool plain = false;
        if (std::error_code error = isPlainFile(directory, search.entry(), name, plain)) return error;
        if (plain) found.push_back(std::move(name));
    } while (search.next());
    if (::GetLastError() != ERROR_NO_MORE_FILES) return lastError();
    names.insert(names.end(), found.begin(), found.end());
    return {};
}

std::error_code applicationDirectory(std::string& directory) {
    std::wstring program(MAX_PATH, L'\0');
    for (;;) {
        const DWORD capacity = static_cast<DWORD>(program.size());
        const DWORD length = ::GetModuleFileNameW(nullptr, program.data(), capacity);
        if (length == 0) return lastError();
        if (length < capacity) {
            program.resize(length);
            break;
        }
        program.resize(program.size() * 2);
    }
    directory = parentOf(windows::narrow(program));
    return {};
}

}  // namespace os
