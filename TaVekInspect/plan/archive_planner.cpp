#include "TaVekInspect/plan/archive_planner.h"

#include <algorithm>
#include <iterator>

#include "TaVekInspect/model/verification.h"
#include "TaVekInspect/plan/spelling.h"
#include "TaVekUtil/archive/install_destination.h"
#include "TaVekUtil/archive/unified_manifest.h"
#include "TaVekUtil/batch/process_archives.h"
#include "TaVekUtil/batch/stock_packages.h"
#include "TaVekUtil/cli/controller_names.h"
#include "TaVekUtil/edit/add_packages.h"
#include "TaVekUtil/edit/remove_packages.h"
#include "platform/archive/archive.h"
#include "platform/base/letter_case.h"
#include "platform/base/path.h"

namespace {

constexpr const char* operation = "TaVekInspect";

/// Runs `step`; what it raises becomes an error with `subject` in front, and the answer is false.
template <typename Step>
bool attempt(Findings& findings, const std::string& subject, Step step) {
    try {
        step();
        return true;
    } catch (const Ta::Exception& exception) {
        addError(findings, subject + reasonOf(exception, ""));
        return false;
    }
}

bool hasErrors(const Findings& findings) {
    return countOf(findings, Finding::Severity::error) > 0;
}

/// The platform that the controllers of the script's entries tell alone; "" when they tell none.
std::string platformOfEntries(const Upgrade& upgrade) {
    const std::pair<const char*, const std::vector<std::string>*> platforms[] = {
        {"linux_arm7", &Arm7ControllerNames},
        {"ombix", &OmbixControllerNames},
        {"linux_arm64", &Arm64ControllerNames}};
    for (const auto& [platform, models] : platforms) {
        for (const ScriptEntry& entry : upgrade.entries) {
            for (const std::string& controller : entry.controllers) {
                if (std::find(models->begin(), models->end(), controller) != models->end()) return platform;
            }
        }
    }
    return {};
}

bool isStockArchive(const std::string& name) {
    try {
        return TaVekUtil_IsStockPackage(name);
    } catch (const Ta::Exception&) {
        // An extension that is too long for the tool to look at is not "dat".
        return false;
    }
}

/// Where `destination` of an installation directory is on disk; "" when that does not fit.
std::string targetOf(const ArchiveExtended& archive, const std::string& destination) {
    Ta::PathText path;
    static_cast<void>(zPath_Combine(archive.path.c_str(), destination.c_str(), path.data(), path.capacity()));
    return path.c_str();
}

const ScriptEntry* findEntry(const Upgrade& upgrade, const std::string& name) {
    for (const ScriptEntry& entry : upgrade.entries) {
        if (entry.name == name) return &entry;
    }
    return nullptr;
}

}  // namespace

PlannedArchive ArchivePlanner::plan(const std::string& path) {
    Quiet quiet;
    Work work;
    work.result.path = path;
    if (open(work, path, quiet)) {
        checkPlatform(work);
        remove(work);
        add(work);
        attempt(work.result.findings, "", [&] { finish(work); });
    }
    if (hasErrors(work.result.findings)) work.result.outcome = PlannedArchive::Outcome::failed;
    return std::move(work.result);
}

// ---- Opening -------------------------------------------------------------------------------------------

bool ArchivePlanner::open(Work& work, const std::string& path, Quiet& quiet) {
    ArchiveExtended& archive = work.archive;
    const auto earlier = results_.find(spellingOf(path));
    try {
        static_cast<void>(TaVekUtil_SplitPath(path.c_str()));
        if (earlier == results_.end()) {
            archive.Load(path.c_str());
        } else if (earlier->second.isInstallation()) {
            archive = earlier->second;
        } else {
            const std::string saved = scratch_.path("saved");
            Ta::Check(zArchive_Save(earlier->second.archive.get(), saved.c_str()), operation);
            archive.Load(saved.c_str());
            archive.path = path;
        }
    } catch (const Ta::Exception& exception) {
        const std::string entry = quiet.takeLogEntry();
        const std::string reason = reasonOf(exception, path);
        addError(work.result.findings, entry.empty() ? reason : reason + " (" + entry + ')');
        return false;
    }
    archive.files = &files_;
    work.before = readUpgrade(archive);
    work.destinations.emplace(work.before, config_.vekPkgsToRemove);
    work.result.platform = archive.platform;
    return readVersion(work);
}

bool ArchivePlanner::readVersion(Work& work) {
    try {
        work.result.hostVersion = work.archive.Version();
        return true;
    } catch (const Ta::Exception& exception) {
        // The run asks for it when there is a package to add.
        const bool isAsked = !packages_.packages().empty();
        const auto severity = isAsked ? Finding::Severity::error : Finding::Severity::warning;
        work.result.findings.push_back({severity, reasonOf(exception, "")});
        return !isAsked;
    }
}

void ArchivePlanner::checkPlatform(Work& work) {
    if (work.archive.isInstallation()) return;
    const std::string told = platformOfEntries(work.before);
    if (told == work.archive.platform) return;
    addWarning(work.result.findings, "script.xml: platform " + work.archive.platform +
                                         " is decided by a model name outside any entry" +
                                         (told.empty() ? "" : "; the entries tell " + told));
}

// ---- Removing ------------------------------------------------------------------------------------------

void ArchivePlanner::remove(Work& work) {
    std::set<std::string> done;
    for (const std::string& name : config_.vekPkgsToRemove) {
        if (done.insert(name).second) {
            removePackage(work, name);
        } else {
            addWarning(work.result.findings, "package " + name + " is to be removed twice");
        }
    }
    if (!done.empty()) work.isChanged = true;
}

void ArchivePlanner::removePackage(Work& work, const std::string& name) {
    bool isPossible = true;
    for (const RecordedPackage& package : work.before.packages) {
        if (package.name != name) continue;
        PlannedRemoval removal{name, {}};
        std::string type;  // a file without one has that of the file before it
        for (RecordedFile file : package.files) {
            type = file.type = file.type.empty() ? type : file.type;
            removal.destinations.push_back(destinationOf(file, work.archive.platform));
            isPossible = checkRemoval(work, package, file) && isPossible;
        }
        work.result.removed.push_back(std::move(removal));
    }
    if (!isPossible) return;
    // One name at a time, so that a name that is not there does not hide what comes after it; but as often as
    // it is listed, for a second removal takes second script entries.
    const auto& names = config_.vekPkgsToRemove;
    const auto times = static_cast<std::size_t>(std::count(names.begin(), names.end(), name));
    const std::vector<std::string> listed(times, name);
    attempt(work.result.findings, "", [&] { TaVekUtils_RemovePackages(work.archive, listed); });
}

bool ArchivePlanner::checkRemoval(Work& work, const RecordedPackage& package, const RecordedFile& file) {
    Findings& findings = work.result.findings;
    const std::string type = Ta::lowerCase(file.type);
    const std::string subject = "package " + package.name + ": ";
    if (type != "vekapp" && type != "resource") {
        addWarning(findings, subject + file.source + " is of type " + file.type + " and stays");
        return true;
    }
    RecordedFile searched = file;
    if (file.destination.empty()) searched.source = package.name;  // as the tool does
    const std::string destination = destinationOf(searched, work.archive.platform);
    if (destination.empty()) {
        addError(findings, subject + file.source + ": no Destination, and " + work.archive.platform +
                               " has no default, so it cannot be removed");
        return false;
    }
    if (work.archive.isInstallation()) {
        checkInstalledFile(work, subject, destination);
    } else if (findEntry(work.before, destination) == nullptr) {
        addWarning(findings,
                   subject + "no script entry " + destination + ", so nothing is removed for " + file.source);
    }
    return true;
}

void ArchivePlanner::checkInstalledFile(Work& work, const std::string& subject,
                                        const std::string& destination) {
    const std::string path = targetOf(work.archive, destination);
    if (!path.empty() && !files_.fileExists(path)) {
        addWarning(work.result.findings, subject + path + " is not there any more");
    }
    if (leavesDirectory(destination)) {
        addWarning(work.result.findings, subject + destination + " leaves the installation directory");
    }
}

// ---- Adding --------------------------------------------------------------------------------------------

void ArchivePlanner::add(Work& work) {
    for (const AddonPackage& package : packages_.packages()) {
        attempt(work.result.findings, std::string("package ") + package.name.c_str() + ": ",
                [&] { addPackage(work, package); });
    }
}

void ArchivePlanner::addPackage(Work& work, const AddonPackage& package) {
    if (!TaVekUtils_FitsVersion(work.archive, package)) {
        const std::string reason = std::string("built for ") + package.beVersion.c_str() +
                                   ", the archive is " + work.archive.Version();
        work.result.skipped.push_back({std::string("package ") + package.name.c_str(), reason});
        addWarning(work.result.findings,
                   std::string("package ") + package.name.c_str() + " is skipped: " + reason);
        return;
    }
    for (const PackageFile& file : package.files) addFile(work, package, file);
    merge(work, package);
}

void ArchivePlanner::addFile(Work& work, const AddonPackage& package, const PackageFile& file) {
    const std::size_t copies = files_.copies();
    const bool replacesFile =
        work.archive.isInstallation() && files_.fileExists(targetOf(work.archive, file.destination.c_str()));
    try {
        if (!TaVekUtils_InstallFile(work.archive, packages_.present(file))) {
            noteOtherPlatform(work, package, file);
            return;
        }
    } catch (const Ta::Exception& exception) {
        const bool lacksDestination =
            file.destination.empty() && exception.status() != zStatus_NotFound &&
            (zStrEquals(file.platform.c_str(), "ombix") || work.archive.isInstallation());
        const std::string reason = lacksDestination
                                       ? "no Destination, and " + work.archive.platform + " has no default"
                                       : packages_.asInRun(reasonOf(exception, work.archive.path));
        addError(work.result.findings,
                 std::string("package ") + package.name.c_str() + ": " + file.source.c_str() + ": " + reason);
        work.isChanged = true;  // or would be, were it not for the failure
        return;
    }
    work.isChanged = true;
    const bool isSkipped = work.archive.isInstallation() && files_.copies() == copies;
    noteFile(work, package, file, isSkipped, replacesFile);
}

/// A platform that only begins with the archive's is none, which nobody says in the run.
void ArchivePlanner::noteOtherPlatform(Work& work, const AddonPackage& package, const PackageFile& file) {
    const std::string platform = file.platform.c_str();
    if (!platform.starts_with(work.archive.platform)) return;
    skip(work, package, file, "there is no platform " + platform);
}

void ArchivePlanner::skip(Work& work, const AddonPackage& package, const PackageFile& file,
                          const std::string& reason) {
    work.result.skipped.push_back({file.path.c_str(), reason});
    addWarning(work.result.findings, std::string("package ") + package.name.c_str() + ": " +
                                         file.path.c_str() + " is skipped: " + reason);
}

void ArchivePlanner::noteFile(Work& work, const AddonPackage& package, const PackageFile& file,
                              bool isSkipped, bool replacesFile) {
    const Installation installation = TaVekUtils_PlanInstallation(file);
    PlannedFile planned{package.name.c_str(), file.path.c_str(), installation.destination.c_str(),
                        installation.member.c_str()};
    if (work.archive.isInstallation()) planned.member.clear();
    if (isSkipped) {
        skip(work, package, file, "the directory of " + planned.destination + " is missing");
        return;
    }
    installed_.insert(planned.package);
    work.destinations->note(planned, replacesFile, work.result.findings);
    work.result.added.push_back(std::move(planned));
}

void ArchivePlanner::merge(Work& work, const AddonPackage& package) {
    const std::vector<RecordedPackage> before = readPackages(work.archive.manifest.get());
    Ta::Check(TaVekUtils_MergeVekApp(package.manifest.get(), work.archive.manifest.get(),
                                     work.archive.platform.c_str()),
              operation);
    work.merged.emplace_back(package.name.c_str());
    const std::vector<RecordedPackage> after = readPackages(work.archive.manifest.get());
    for (const RecordedPackage& recorded : before) {
        const auto isSame = [&](const RecordedPackage& other) { return other.name == recorded.name; };
        if (std::any_of(after.begin(), after.end(), isSame)) continue;
        addWarning(work.result.findings, std::string("package ") + package.name.c_str() +
                                             " drops the record of package " + recorded.name +
                                             ", with whose name its own begins; the files stay");
    }
}

// ---- Saving --------------------------------------------------------------------------------------------

void ArchivePlanner::finish(Work& work) {
    PlannedArchive& result = work.result;
    if (!work.isChanged) {
        result.outcome = PlannedArchive::Outcome::unchanged;
        for (const std::string& name : work.merged) {
            addWarning(result.findings, "package " + name + " has no file for " + work.archive.platform +
                                            "; as nothing else changes, it is not recorded");
        }
        return;
    }
    if (work.archive.isInstallation()) {
        Ta::Check(checkTarget(installedManifestPath(work.archive.path)), operation);
        if (hasErrors(result.findings)) return;
        result.outcome = PlannedArchive::Outcome::written;
        results_[spellingOf(result.path)] = work.archive;
        return;
    }
    save(work);
}

void ArchivePlanner::save(Work& work) {
    PlannedArchive& result = work.result;
    TaVekUtil_StoreManifest(work.archive);
    const std::string output =
        TaVekUtil_OutputPath(TaVekUtil_SplitPath(result.path.c_str()), config_).c_str();
    checkMembers(work);
    attempt(result.findings, "", [&] {
        Ta::Check(work.archive.CheckOutput(output.c_str()), operation);
        Ta::Check(checkTarget(output), operation);
    });
    checkOutput(work, output);
    // What a failure has left half done tells nothing of the result.
    if (hasErrors(result.findings)) return;
    result.savedAs = output;
    result.outcome = PlannedArchive::Outcome::saved;
    checkResult(work);
    results_[spellingOf(output)] = work.archive;
}

/// Every member that saving would carry, and not only the first that would end it.
void ArchivePlanner::checkMembers(Work& work) {
    const zStatus status = zArchive_TrySave(work.archive.archive.get());
    if (status == zStatus_Success) return;
    Findings& findings = work.result.findings;
    const std::string reason = reasonOf(status, work.archive.path);
    const Findings damaged = verifyMembers(readUpgrade(work.archive), [](std::size_t, std::size_t) {});
    if (!hasErrors(damaged)) addError(findings, reason);
    std::copy_if(damaged.begin(), damaged.end(), std::back_inserter(findings),
                 [](const Finding& finding) { return finding.severity == Finding::Severity::error; });
}

void ArchivePlanner::checkOutput(Work& work, const std::string& output) {
    Findings& findings = work.result.findings;
    if (isStockArchive(fileNameOf(output))) {
        addWarning(findings, output + " has the name of a stock archive: a later run may take it for one");
    }
    if (results_.contains(spellingOf(output))) addWarning(findings, output + " is saved twice");
    const auto isOutput = [&](const std::string& path) { return spellingOf(path) == spellingOf(output); };
    if (std::any_of(config_.stockPackages.begin(), config_.stockPackages.end(), isOutput)) {
        addWarning(findings, output + " is itself an archive of this run");
    }
}

/// What is wrong with the archive as it would be saved and was not wrong before.
void ArchivePlanner::checkResult(Work& work) {
    const Upgrade after = readUpgrade(work.archive);
    work.destinations->checkSharing(after, work.result.findings);
    const Findings before = verifyConsistency(work.before);
    for (const Finding& finding : verifyConsistency(after)) {
        const auto isSame = [&](const Finding& other) { return other.text == finding.text; };
        if (finding.severity != Finding::Severity::error || std::any_of(before.begin(), before.end(), isSame))
            continue;
        addWarning(work.result.findings, work.result.savedAs + " would not be consistent: " + finding.text);
    }
}
