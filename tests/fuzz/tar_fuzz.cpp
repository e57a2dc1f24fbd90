// Unpacks any bytes as an archive into a directory: nothing may appear beside it, no unfinished file may
// stay, and what is refused is refused with a word.

#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include "tests/testing/scratch_directory.h"
#include "tools/tar/failure.h"
#include "tools/tar/unpack.h"

namespace {

namespace fs = std::filesystem;

void require(bool condition) {
    if (!condition) std::abort();
}

/// Makes everything in the directory removable again.
void unlock(const std::string& path) {
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        if (!entry.is_symlink() && entry.is_directory()) fs::permissions(entry, fs::perms::owner_all);
    }
}

void checkTree(const testing::ScratchDirectory& scratch) {
    require(scratch.entries() == std::vector<std::string>{"archive", "canary", "in"});
    require(scratch.read("canary") == "alive");
    for (const auto& entry : fs::recursive_directory_iterator(scratch.path("in"))) {
        require(!entry.path().filename().string().starts_with(".tavek-"));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const testing::ScratchDirectory scratch;
    scratch.write("canary", "alive");
    const std::string archive = scratch.write("archive", {reinterpret_cast<const char*>(data), size});
    fs::create_directory(scratch.path("in"));
    try {
        tar::unpack(archive, scratch.path("in"), [](const std::string&) {});
    } catch (const tar::Failure& failure) {
        require(std::string(failure.what()).starts_with(archive + ": "));
    }
    unlock(scratch.path("in"));
    checkTree(scratch);
    fs::remove_all(scratch.path("in"));
    return 0;
}
