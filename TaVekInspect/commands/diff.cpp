#include "TaVekInspect/render/diff.h"

#include <iostream>

#include "TaVekInspect/commands/command.h"
#include "TaVekInspect/commands/comparison.h"

namespace {

int run(const Request& request) {
    const Comparison comparison = compareOperands(request);
    if (request.json) {
        writeDifference(std::cout, comparison.before, comparison.after, comparison.difference);
    } else {
        printDifference(std::cout, comparison.before, comparison.after, comparison.difference);
    }
    return comparison.exitStatus();
}

}  // namespace

const Command diffCommand{
    .name = "diff",
    .operands = "OLD NEW",
    .fewest = 2,
    .most = 2,
    .summary = "What a run changed: packages, script entries, members, texts",
    .help =
        "Tells what was added, removed and changed between two upgrade archives, or two states of an\n"
        "installation directory: packages, script entries, members; members that are text as a unified\n"
        "diff. Members are compared by size and checksum; \"verify\" checks that these are true.\n"
        "\n"
        "Exit status: 0 when they are equal, 1 when not, 2 when one cannot be read.\n",
    .run = run,
};
