#include "tests/testing/scratch_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace testing {
namespace fs = std::filesystem;

namespace {

fs::path native(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string portable(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

}  // namespace

ScratchDirectory::ScratchDirectory() {
    static std::atomic<unsigned> serial{0};
    std::random_device random;
    const std::string name =
        "tavek-test-" + std::to_string(random()) + '-' + std::to_string(serial.fetch_add(1));
    path_ = portable(fs::temp_directory_path() / name);
    fs::create_directories(native(path_));
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    fs::remove_all(native(path_), ignored);
}

std::string ScratchDirectory::path(std::string_view name) const {
    return name.empty() ? path_ : path_ + '/' + std::string(name);
}

std::string ScratchDirectory::write(std::string_view name, std::string_view content) const {
    const fs::path file = native(path(name));
    fs::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    EXPECT_TRUE(stream) << "cannot write " << path(name);
    return path(name);
}

std::string ScratchDirectory::read(std::string_view name) const {
    return readFile(path(name));
}

bool ScratchDirectory::exists(std::string_view name) const {
    return fs::exists(native(path(name)));
}

std::vector<std::string> ScratchDirectory::entries() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(native(path_))) {
        names.push_back(portable(entry.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string readFile(const std::string& path) {
    std::ifstream stream(native(path), std::ios::binary);
    EXPECT_TRUE(stream) << "cannot read " << path;
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

}  // namespace testing
