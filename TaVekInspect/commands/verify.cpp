#include "TaVekInspect/model/verification.h"

#include <algorithm>
#include <iostream>

#include "TaVekInspect/commands/command.h"
#include "TaVekInspect/render/findings.h"
#include "TaVekInspect/render/json_model.h"
#include "TaVekInspect/render/terminal.h"
#include "TaVekInspect/render/text.h"

namespace {

/// What was found out about one upgrade.
struct Verdict {
    std::string path;
    std::size_t members = 0;
    Findings findings;
};

bool holds(const Findings& findings, const std::string& text) {
    return std::any_of(findings.begin(), findings.end(),
                       [&](const Finding& finding) { return finding.text == text; });
}

Verdict verify(const std::string& path) {
    const Upgrade upgrade = readUpgrade(path);
    Verdict verdict{path, upgrade.members.size(), {}};
    if (upgrade.isOpen) {
        ProgressLine line(path);
        verdict.findings =
            verifyMembers(upgrade, [&line](std::size_t done, std::size_t count) { line.show(done, count); });
    }
    // A damaged script or manifest is met twice.
    for (Finding& finding : verifyConsistency(upgrade)) {
        if (!holds(verdict.findings, finding.text)) verdict.findings.push_back(std::move(finding));
    }
    return verdict;
}

void print(const Verdict& verdict) {
    if (verdict.findings.empty() && outputIsTerminal()) {
        std::cout << printable(verdict.path) << ": " << painted(Colour::green, "sound") << " ("
                  << counted(verdict.members, "member") << ")\n";
    }
    printFindings(std::cout, verdict.path, verdict.findings);
    std::cout.flush();
}

void write(const std::vector<Verdict>& verdicts) {
    JsonWriter json(std::cout);
    beginDocument(json, "verify");
    json.array("upgrades");
    for (const Verdict& verdict : verdicts) {
        json.object().value("path", verdict.path).value("members", std::uint64_t{verdict.members});
        writeFindings(json, "findings", verdict.findings);
        json.end();
    }
    json.end().end();
}

int run(const Request& request) {
    std::vector<Verdict> verdicts;
    std::size_t errors = 0;
    for (const std::string& path : request.operands) {
        verdicts.push_back(verify(path));
        errors += countOf(verdicts.back().findings, Finding::Severity::error);
        if (!request.json) print(verdicts.back());
    }
    if (request.json) write(verdicts);
    return errors == 0 ? exitFine : exitNegative;
}

}  // namespace

const Command verifyCommand{
    .name = "verify",
    .operands = "ARCHIVE|DIR...",
    .fewest = 1,
    .most = anyNumber,
    .summary = "Whether archives are sound and consistent",
    .help =
        "Decodes every member and checks its checksum; then checks that script, members and manifest are\n"
        "in step. Prints one finding a line, \"PATH: error: ...\" or \"PATH: warning: ...\", and nothing\n"
        "when all is well.\n"
        "\n"
        "Exit status: 0 without errors (there may be warnings), 1 with errors.\n",
    .run = run,
};
