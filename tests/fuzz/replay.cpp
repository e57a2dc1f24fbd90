// Runs a fuzz target over every file below the directories named on the command line.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void replay(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int count, char** words) {
    int replayed = 0;
    for (int i = 1; i < count; ++i) {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(std::filesystem::absolute(words[i]))) {
            if (!entry.is_regular_file()) continue;
            replay(entry.path());
            ++replayed;
        }
    }
    std::printf("%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
