#include <iostream>

#include "TaVekInspect/cli/command_line.h"
#include "TaVekInspect/commands/command.h"
#include "platform/archive/archive.h"
#include "platform/os/os.h"

int main(int count, char** words) {
    os::silenceAbnormalEnd();
    zHandle library = nullptr;
    Ta::Check(zTdLib_Construct(&library), "main");
    const int result = runCommandLine(os::commandLine(count, words));
    static_cast<void>(zObject_Destroy(library));
    std::cout.flush();
    // What could not be written must not pass for an answer.
    return std::cout.good() ? result : exitTrouble;
}
