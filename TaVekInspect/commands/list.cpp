#include "TaVekInspect/render/list.h"

#include <iostream>

#include "TaVekInspect/commands/command.h"
#include "TaVekInspect/render/findings.h"

namespace {

int run(const Request& request) {
    Upgrade upgrade = readUpgrade(request.operands.front());
    if (upgrade.isInstallation()) addError(upgrade.problems, "an installation directory has no members");
    if (request.json) {
        writeList(std::cout, upgrade);
    } else {
        printList(std::cout, upgrade);
        std::cout.flush();
        printFindings(std::cerr, upgrade.path, upgrade.problems);
    }
    return countOf(upgrade.problems, Finding::Severity::error) == 0 ? exitFine : exitNegative;
}

}  // namespace

const Command listCommand{
    .name = "list",
    .operands = "ARCHIVE",
    .fewest = 1,
    .most = 1,
    .summary = "The members of an archive, and who refers to each",
    .help =
        "Lists the members of an upgrade archive: size, packed size, method, CRC-32, date, name, the\n"
        "script entries that install it, and the packages that these belong to. In a pipe the columns\n"
        "are separated by tabs, without headings.\n"
        "\n"
        "Exit status: 0 when all of it could be read, 1 when not.\n",
    .run = run,
};
