#include <cstdio>
#include <exception>
#include <vector>

#include "platform/archive/shown_name.h"
#include "platform/os/os.h"
#include "tools/tar/command_line.h"
#include "tools/tar/failure.h"
#include "tools/tar/unpack.h"

namespace {

void run(const std::vector<std::string>& words) {
    const tar::Request request = tar::readCommandLine(std::span(words).subspan(words.empty() ? 0 : 1));
    if (request.help) {
        std::fputs(tar::usage, stdout);
        return;
    }
    tar::unpack(request.archive, request.directory, [&](const std::string& name) {
        if (request.verbose) std::printf("%s\n", shownName(name).c_str());
    });
}

}  // namespace

int main(int count, char** words) {
    constexpr int failed = 2;
    os::silenceAbnormalEnd();
    try {
        run(os::commandLine(count, words));
        return 0;
    } catch (const std::exception& error) {
        std::fflush(stdout);
        std::fprintf(stderr, "tar: %s\n", error.what());
        return failed;
    }
}
