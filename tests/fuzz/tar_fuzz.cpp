// Unpacks any bytes as an archive into a directory: nothing may appear beside it, no unfinished file may
// stay, and what is refused is refused with a word.

#include <cstdint>
#include <filesystem>

#include "tests/fuzz/require.h"
#include "tests/testing/scratch_directory.h"
#include "tools/tar/failure.h"
#include "tools/tar/unpack.h"

namespace {

namespace fs = std::filesystem;
using fuzz::require;

/// Makes everything in the directory removable again.
void unlock(const std::string& path) {
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        if (!entry.is_symlink() && entry.is_directory()) fs::permissions(entry, fs::perms::owner_all);
    }
}

/// `members` holds the names that the archive gave: one of them may well look like that of an unfinished
/// file.
void checkTree(const testing::ScratchDirectory& scratch, const std::string& members) {
    require(scratch.entries() == std::vector<std::string>{"archive", "canary", "in"});
    require(scratch.read("canary") == "alive");
    for (const auto& entry : fs::recursive_directory_iterator(scratch.path("in"))) {
        const std::string name = entry.path().filename().string();
        require(!name.starts_with(".tavek-") || members.find(name) != std::string::npos);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const testing::ScratchDirectory scratch;
    scratch.write("canary", "alive");
    const std::string archive = scratch.write("archive", {reinterpret_cast<const char*>(data), size});
    fs::create_directory(scratch.path("in"));
    std::string members;
    try {
        tar::unpack(archive, scratch.path("in"), [&](const std::string& name) { members += name; });
    } catch (const tar::Failure& failure) {
        require(std::string(failure.what()).starts_with(archive + ": "));
    }
    unlock(scratch.path("in"));
    checkTree(scratch, members);
    fs::remove_all(scratch.path("in"));
    return 0;
}
