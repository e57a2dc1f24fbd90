// Prints what the system's answer and our own reader's are for each file named on the command line:
// "system <TAB> own <TAB> path", a version as 1.2.3.4 or "none". scripts/compare_file_versions.py compares.

#include <cstdio>
#include <string>

#include "platform/os/os.h"
#include "platform/os/pe_version.h"

namespace {

std::string text(bool found, const os::FileVersion& version) {
    if (!found) return "none";
    std::string joined = std::to_string(version[0]);
    for (int i = 1; i < 4; ++i) joined += '.' + std::to_string(version[static_cast<std::size_t>(i)]);
    return joined;
}

}  // namespace

int main(int count, char** words) {
    const std::vector<std::string> line = os::commandLine(count, words);
    for (std::size_t i = 1; i < line.size(); ++i) {
        os::FileVersion system{};
        os::FileVersion own{};
        os::InputFile file;
        const bool inSystem = os::fileVersion(line[i], system);
        const bool inOwn = !file.open(line[i]) && os::pe::readFileVersion(file, own);
        std::printf("%s\t%s\t%s\n", text(inSystem, system).c_str(), text(inOwn, own).c_str(),
                    line[i].c_str());
    }
    return 0;
}
