#include "TaVekInspect/plan/temporary_directory.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <random>

namespace fs = std::filesystem;

namespace {

fs::path native(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string randomName() {
    std::random_device random;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "tavek-%08x", random());
    return name.data();
}

/// Gives this user the right to remove what is below `directory`: tar makes directories read-only where its
/// archive says so.
void makeRemovable(const fs::path& directory) {
    std::error_code error;
    for (fs::recursive_directory_iterator at(directory, error), end; !error && at != end;
         at.increment(error)) {
        std::error_code ignored;
        if (at->symlink_status(ignored).type() != fs::file_type::directory) continue;
        fs::permissions(at->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
    const fs::path parent = fs::temp_directory_path();
    fs::path path;
    // A directory that is there already may be anybody's.
    do path = parent / randomName();
    while (!fs::create_directory(path));
    fs::permissions(path, fs::perms::owner_all);
    const std::u8string text = path.generic_u8string();
    path_.assign(text.begin(), text.end());
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    makeRemovable(native(path_));
    fs::remove_all(native(path_), ignored);
}
