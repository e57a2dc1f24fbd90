// A tar program for the Windows build of the tests, which finds none on the machines where they run under
// Wine: unpacks plain tar files, as `tar.exe --force-local -C DIRECTORY -xvf ARCHIVE` does.

#include <windows.h>
// Behind windows.h, which it needs.
#include <shellapi.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t blockSize = 512;
using Block = std::array<char, blockSize>;

std::string field(const Block& block, std::size_t offset, std::size_t size) {
    const std::string text(block.data() + offset, size);
    return text.substr(0, text.find('\0'));
}

std::string readContent(std::ifstream& archive, std::size_t size) {
    std::string content((size + blockSize - 1) / blockSize * blockSize, '\0');
    if (!archive.read(content.data(), static_cast<std::streamsize>(content.size())))
        throw std::runtime_error("unexpected end of the archive");
    content.resize(size);
    return content;
}

fs::path utf8Path(const std::string& name) {
    return fs::path(std::u8string(name.begin(), name.end()));
}

void writeFile(const fs::path& path, const std::string& content) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    if (!file.write(content.data(), static_cast<std::streamsize>(content.size())))
        throw std::runtime_error("cannot write " + path.string());
}

void unpack(std::ifstream& archive, const fs::path& directory) {
    Block header;
    std::string longName;
    while (archive.read(header.data(), header.size()) && header[0] != '\0') {
        if (field(header, 257, 5) != "ustar")
            throw std::runtime_error("this does not look like a tar archive");
        const std::string content =
            readContent(archive, std::strtoul(field(header, 124, 12).c_str(), nullptr, 8));
        const std::string prefix = field(header, 257 + 6, 2) == "00" ? field(header, 345, 155) : "";
        const std::string name =
            prefix.empty() ? field(header, 0, 100) : prefix + '/' + field(header, 0, 100);
        const char type = header[156];
        if (type == 'L') {
            longName = content.substr(0, content.find('\0'));
            continue;
        }
        const fs::path path = directory / utf8Path(longName.empty() ? name : longName);
        longName.clear();
        std::printf("%s\n", name.c_str());
        if (type == '5') fs::create_directories(path);
        if (type == '0' || type == '\0') writeFile(path, content);
    }
}

/// The words of the command line; a program started by the system has them as UTF-16 alone.
std::vector<std::wstring> words() {
    int count = 0;
    wchar_t** list = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> result(list, list + count);
    LocalFree(list);
    return result;
}

}  // namespace

int main() {
    try {
        const std::vector<std::wstring> arguments = words();
        if (arguments.size() != 6 || arguments[1] != L"--force-local" || arguments[2] != L"-C" ||
            arguments[4] != L"-xvf")
            throw std::runtime_error("unexpected arguments");
        std::ifstream archive(fs::path(arguments[5]), std::ios::binary);
        if (!archive) throw std::runtime_error("cannot open the archive");
        unpack(archive, arguments[3]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tar: %s\n", error.what());
        return 2;
    }
}
