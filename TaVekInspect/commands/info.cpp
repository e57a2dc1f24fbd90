#include "TaVekInspect/render/info.h"

#include <iostream>

#include "TaVekInspect/commands/command.h"
#include "TaVekInspect/render/findings.h"

namespace {

int run(const Request& request) {
    const Upgrade upgrade = readUpgrade(request.operands.front());
    if (request.json) {
        writeInfo(std::cout, upgrade);
    } else {
        if (upgrade.isOpen) printInfo(std::cout, upgrade);
        std::cout.flush();
        printFindings(std::cerr, upgrade.path, upgrade.problems);
    }
    return countOf(upgrade.problems, Finding::Severity::error) == 0 ? exitFine : exitNegative;
}

}  // namespace

const Command infoCommand{
    .name = "info",
    .operands = "ARCHIVE|DIR",
    .fewest = 1,
    .most = 1,
    .summary = "What an archive is and holds: platform, packages, script entries",
    .help =
        "Tells the platform and the host version of an upgrade archive or of a host installation\n"
        "directory, the packages it carries with their files, the entries of its start-up script by\n"
        "controller, and the figures of the container. What cannot be read is named on standard error.\n"
        "\n"
        "Exit status: 0 when all of it could be read, 1 when not.\n",
    .run = run,
};
