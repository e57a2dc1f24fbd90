#include <cstdio>
#include <exception>

#include "TaVekUtil/cli/command_line.h"
#include "platform/archive/archive.h"
#include "platform/base/log.h"
#include "platform/os/os.h"

namespace {

zStatus printLogEntry(void*, const zLogEntry* entry) {
    std::puts(entry->message);
    std::fflush(stdout);
    return zStatus_Success;
}

/// Scans the command line and runs a mode. Answers the exit status. Only a mode that ran takes the log
/// handler with it; elsewhere it stays, so that a leak is still reported when the library goes.
int dispatch(const std::vector<std::string>& words) {
    Flags flags;
    const Scan scan = words.size() < 2 ? Scan::failed : scanFlags(words, flags);
    if (scan != Scan::complete) {
        printUsage();
        return scan == Scan::help ? 0 : 1;
    }
    const Mode mode = chooseMode(flags);
    if (mode == Mode::none) return 1;
    const int result = runMode(mode, flags);
    static_cast<void>(zApiLib_RemoveLogHandler(printLogEntry, nullptr));
    return result;
}

}  // namespace

int main(int count, char** words) {
    os::silenceAbnormalEnd();
    zApiLib_EnableLeakLogging(1);
    Ta::Check(zApiLib_AddLogHandler(printLogEntry, nullptr), "main");
    zHandle library = nullptr;
    // Not caught: without the archive library there is nothing to report to, and the process ends abnormally.
    Ta::Check(zTdLib_Construct(&library), "main", 1351);

    const int result = dispatch(os::commandLine(count, words));
    static_cast<void>(zObject_Destroy(library));
    return result;
}
