#include "TaVekInspect/render/plan.h"

#include <filesystem>
#include <iostream>

#include "TaVekInspect/commands/command.h"
#include "TaVekInspect/render/terminal.h"

namespace {

Plan plan(const Request& request) {
    ProgressLine line(request.operands.front());
    return makePlan(request.operands.front(), request.platform,
                    [&line](std::size_t done, std::size_t count) { line.show(done, count); });
}

int run(const Request& request) {
    try {
        const Plan planned = plan(request);
        request.json ? writePlan(std::cout, planned) : printPlan(std::cout, planned);
        const bool isSurprising = planned.countOf(Finding::Severity::warning) > 0;
        return planned.succeeds() && !isSurprising ? exitFine : exitNegative;
    } catch (const std::filesystem::filesystem_error& error) {
        std::cerr << "TaVekInspect: no temporary directory: " << error.code().message() << '\n';
        return exitTrouble;
    }
}

}  // namespace

const Command planCommand{
    .name = "plan",
    .operands = "CONFIG",
    .fewest = 1,
    .most = 1,
    .summary = "What a batch run would do, and everything it would stumble over",
    .help =
        "Goes the road of \"TaVekUtil --config CONFIG\" in memory and saves nothing: tells for each archive\n"
        "what would be removed, added, skipped and saved; then every failure, not just the first, and\n"
        "everything that may surprise. A relative CONFIG is looked up beside the program, as the tool\n"
        "does. KEY is linux_arm7, linux_arm64, ombix, win or all (the default). Tar files are unpacked\n"
        "into a temporary directory. It cannot foretell a disk that fills up.\n"
        "\n"
        "Exit status: 0 when the run would succeed and nothing surprises, 1 otherwise, 2 when there is no\n"
        "room for temporary files.\n",
    .takesPlatform = true,
    .run = run,
};
