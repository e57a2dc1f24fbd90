#include "TaVekInspect/render/plan.h"

#include "TaVekInspect/render/findings.h"
#include "TaVekInspect/render/json_model.h"
#include "TaVekInspect/render/terminal.h"
#include "TaVekInspect/render/text.h"

namespace {

// ---- As text -------------------------------------------------------------------------------------------

void printStep(std::ostream& out, Colour colour, const char* step, const std::string& text) {
    out << "  " << painted(colour, step) << ' ' << printable(text) << '\n';
}

void printPackages(std::ostream& out, const Plan& plan) {
    for (const PlannedPackage& package : plan.packages) {
        const std::string name =
            package.name.empty() ? package.entry : package.name + " from " + package.entry;
        printStep(out, Colour::dim, "load  ", name + " (" + counted(package.fileCount, "file") + ')');
    }
}

std::string headOf(const PlannedArchive& archive) {
    if (archive.platform.empty()) return archive.path;
    const std::string version = archive.hostVersion.empty() ? "unknown" : archive.hostVersion;
    return archive.path + ": " + archive.platform + ", host version " + version;
}

void printOutcome(std::ostream& out, const PlannedArchive& archive) {
    using Outcome = PlannedArchive::Outcome;
    if (archive.outcome == Outcome::failed) printStep(out, Colour::red, "fail  ", "the run ends here");
    if (archive.outcome == Outcome::notReached) printStep(out, Colour::red, "miss  ", "the run ends before");
    if (archive.outcome == Outcome::unchanged) printStep(out, Colour::dim, "leave ", "as it is");
    if (archive.outcome == Outcome::written) printStep(out, Colour::cyan, "write ", "vekPackages.xml");
    if (archive.outcome == Outcome::saved) printStep(out, Colour::cyan, "save  ", archive.savedAs);
}

void printArchive(std::ostream& out, const PlannedArchive& archive) {
    out << '\n' << painted(Colour::bold, printable(headOf(archive))) << '\n';
    for (const PlannedRemoval& removal : archive.removed) {
        printStep(out, Colour::red, "remove", removal.package + ": " + joined(removal.destinations));
    }
    for (const PlannedFile& file : archive.added) {
        printStep(out, Colour::green, "add   ", file.package + ": " + file.destination + " <- " + file.path);
    }
    for (const PlannedSkip& skip : archive.skipped) {
        printStep(out, Colour::yellow, "skip  ", skip.subject + ": " + skip.reason);
    }
    printOutcome(out, archive);
}

std::string conclusionOf(const Plan& plan) {
    const std::size_t errors = plan.countOf(Finding::Severity::error);
    const std::size_t warnings = plan.countOf(Finding::Severity::warning);
    if (errors > 0)
        return "The run would fail: " + counted(errors, "error") + ", " + counted(warnings, "warning") + '.';
    if (warnings > 0) return "The run would succeed, with " + counted(warnings, "warning") + '.';
    return "The run would succeed.";
}

// ---- As JSON -------------------------------------------------------------------------------------------

const char* nameOf(PlannedArchive::Outcome outcome) {
    using Outcome = PlannedArchive::Outcome;
    switch (outcome) {
        case Outcome::saved:
            return "saved";
        case Outcome::written:
            return "written";
        case Outcome::unchanged:
            return "unchanged";
        case Outcome::failed:
            return "failed";
        case Outcome::notReached:
            return "notReached";
    }
    return "";
}

void writeSteps(JsonWriter& json, const PlannedArchive& archive) {
    json.array("removed");
    for (const PlannedRemoval& removal : archive.removed) {
        json.object().value("package", removal.package);
        writeTexts(json, "destinations", removal.destinations);
        json.end();
    }
    json.end().array("added");
    for (const PlannedFile& file : archive.added) {
        json.object().value("package", file.package).value("path", file.path);
        json.value("destination", file.destination).value("member", file.member).end();
    }
    json.end().array("skipped");
    for (const PlannedSkip& skip : archive.skipped) {
        json.object().value("subject", skip.subject).value("reason", skip.reason).end();
    }
    json.end();
}

void writeArchive(JsonWriter& json, const PlannedArchive& archive) {
    json.object().value("path", archive.path).value("platform", archive.platform);
    json.value("hostVersion", archive.hostVersion).value("outcome", nameOf(archive.outcome));
    json.value("savedAs", archive.savedAs);
    writeSteps(json, archive);
    writeFindings(json, "findings", archive.findings);
    json.end();
}

}  // namespace

void printPlan(std::ostream& out, const Plan& plan) {
    out << painted(Colour::bold, printable(plan.configuration)) << ", platform " << plan.platform << '\n';
    printPackages(out, plan);
    for (const PlannedArchive& archive : plan.archives) printArchive(out, archive);
    out << '\n';
    printFindings(out, plan.configuration, plan.findings);
    for (const PlannedArchive& archive : plan.archives) printFindings(out, archive.path, archive.findings);
    const Colour colour = !plan.succeeds()                               ? Colour::red
                          : plan.countOf(Finding::Severity::warning) > 0 ? Colour::yellow
                                                                         : Colour::green;
    out << painted(colour, conclusionOf(plan)) << '\n';
}

void writePlan(std::ostream& out, const Plan& plan) {
    JsonWriter json(out);
    beginDocument(json, "plan");
    json.value("configuration", plan.configuration).value("platform", plan.platform);
    json.value("succeeds", plan.succeeds()).array("packages");
    for (const PlannedPackage& package : plan.packages) {
        json.object().value("entry", package.entry).value("name", package.name);
        json.value("beVersion", package.beVersion).value("files", std::uint64_t{package.fileCount}).end();
    }
    json.end().array("archives");
    for (const PlannedArchive& archive : plan.archives) writeArchive(json, archive);
    json.end();
    writeFindings(json, "findings", plan.findings);
    json.end();
}
