#include "TaVekInspect/render/html_report.h"

#include <algorithm>
#include <iostream>

#include "TaVekInspect/commands/command.h"
#include "TaVekInspect/commands/comparison.h"
#include "TaVekInspect/plan/spelling.h"
#include "TaVekInspect/render/diff.h"
#include "TaVekInspect/render/text.h"
#include "TaVekUtil/archive/host_version.h"
#include "TaVekUtil/archive/unified_manifest.h"
#include "platform/base/file.h"

namespace {

/// True when `file` is the archive `operand`, or what makes it an installation directory.
bool isPartOf(const std::string& operand, const std::string& file) {
    const std::string spelling = spellingOf(file);
    return zFile_IsSame(operand.c_str(), file.c_str()) || spelling == spellingOf(operand + hostExecutable) ||
           spelling == spellingOf(installedManifestPath(operand));
}

bool isOperand(const Request& request) {
    return std::any_of(request.operands.begin(), request.operands.end(),
                       [&](const std::string& operand) { return isPartOf(operand, request.html); });
}

int run(const Request& request) {
    // A program that looks must not put its page in an archive's place.
    if (isOperand(request)) {
        std::cerr << "TaVekInspect: " << printable(request.html) << ": that is one of the archives\n";
        return exitTrouble;
    }
    const Comparison comparison = compareOperands(request);
    const std::string page = htmlReport(comparison.before, comparison.after, comparison.difference);
    if (request.json) writeDifference(std::cout, comparison.before, comparison.after, comparison.difference);
    const zStatus saved = zFile_Save(request.html.c_str(), page.data(), page.size());
    if (saved == zStatus_Success) return comparison.isComplete() ? exitFine : exitTrouble;
    std::cerr << "TaVekInspect: " << printable(request.html) << ": "
              << printable(reasonOf(saved, request.html)) << '\n';
    return exitTrouble;
}

}  // namespace

const Command reportCommand{
    .name = "report",
    .operands = "OLD NEW",
    .fewest = 2,
    .most = 2,
    .summary = "The same as one HTML page for a release review",
    .help =
        "Writes what \"diff\" tells into FILE as one HTML page that needs nothing else: summary, packages,\n"
        "script entries side by side, members with size bars, texts. With --json it prints the document of\n"
        "\"diff\" as well.\n"
        "\n"
        "Exit status: 0 when FILE was written, 2 when an archive cannot be read or FILE not be written.\n",
    .takesHtml = true,
    .run = run,
};
