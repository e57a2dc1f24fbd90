// The reader of version resources takes any bytes: it answers, or finds nothing, and touches nothing else.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "platform/os/pe_version.h"

namespace {

/// A file of this process's own that holds one input after the other.
class InputOnDisk {
  public:
    InputOnDisk()
        : path_(std::filesystem::temp_directory_path() /
                ("tavek-pe-fuzz-" + std::to_string(std::random_device()()))) {}
    ~InputOnDisk() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    InputOnDisk(const InputOnDisk&) = delete;
    InputOnDisk& operator=(const InputOnDisk&) = delete;

    std::string write(const std::uint8_t* data, std::size_t size) const {
        std::ofstream stream(path_, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        return path_.string();
    }

  private:
    std::filesystem::path path_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const InputOnDisk input;
    os::InputFile file;
    if (file.open(input.write(data, size))) std::abort();

    constexpr os::FileVersion untouched{1, 2, 3, 4};
    os::FileVersion version = untouched;
    const bool found = os::pe::readFileVersion(file, version);
    if (!found && version != untouched) std::abort();

    // The same file gives the same answer.
    os::FileVersion again = untouched;
    if (os::pe::readFileVersion(file, again) != found || again != version) std::abort();
    return 0;
}
