#include "TaVekInspect/model/verification.h"

#include <unordered_set>

#include "TaVekInspect/model/references.h"
#include "platform/archive/archive.h"
#include "platform/base/letter_case.h"
#include "platform/base/path.h"
#include "platform/base/text.h"
#include "platform/os/os.h"

namespace {

using Names = std::unordered_set<std::string>;

/// Each entry is whole, there once, and names a member.
void verifyEntries(const Upgrade& upgrade, Findings& findings) {
    Names members, names, lowerNames;
    for (const zMemberInfo& member : upgrade.members) members.insert(member.name);
    for (const ScriptEntry& entry : upgrade.entries) {
        if (!entry.isComplete) {
            addWarning(findings, "script.xml: File \"" + entry.name + "\" lacks its name or its source");
            continue;
        }
        if (!members.contains(entry.source)) {
            addError(findings,
                     "script entry " + entry.name + ": its source " + entry.source + " is no member");
        }
        if (!names.insert(entry.name).second) {
            addError(findings, "script entry " + entry.name + " occurs twice");
        } else if (!lowerNames.insert(Ta::lowerCase(entry.name)).second) {
            addWarning(findings, "script entry " + entry.name + " differs from another in letter case only");
        }
    }
}

/// Each member of a package has its entry, and each entry of one a package that records it.
void verifyPackageMembers(const Upgrade& upgrade, const References& references, Findings& findings) {
    // What single-library mode adds goes into no manifest.
    const std::string singleLibrary = std::string(packageMemberPrefix) + "vekapp";
    for (const zMemberInfo& member : upgrade.members) {
        if (!member.name.starts_with(packageMemberPrefix)) continue;
        const auto& entries = references.entriesOf(member.name);
        if (entries.empty()) addError(findings, "member " + member.name + ": no script entry installs it");
        if (member.name.starts_with(singleLibrary)) continue;
        for (const ScriptEntry* entry : entries) {
            if (references.packagesOf(entry->name).empty()) {
                addWarning(findings, "script entry " + entry->name + ": no package records it");
            }
        }
    }
}

/// What the manifest says of the whole is what the script or the host executable says.
void verifyHead(const Upgrade& upgrade, Findings& findings) {
    const std::string authority = upgrade.isInstallation() ? "the host executable" : "the script";
    if (!upgrade.hostVersion.empty() && upgrade.manifestVersion != upgrade.hostVersion) {
        addError(findings, "vekPackages.xml: BeVersion is \"" + upgrade.manifestVersion + "\", " + authority +
                               " says \"" + upgrade.hostVersion + "\"");
    }
    if (!upgrade.platform().empty() && upgrade.manifestPlatform != upgrade.platform()) {
        addError(findings, "vekPackages.xml: Platform is \"" + upgrade.manifestPlatform + "\", found is \"" +
                               upgrade.platform() + "\"");
    }
}

bool isOnDisk(const std::string& directory, const std::string& destination) {
    Ta::PathText path;
    os::FileType type{};
    return zPath_Combine(directory.c_str(), destination.c_str(), path.data(), path.capacity()) ==
               zStatus_Success &&
           !os::fileType(path.c_str(), type) && type == os::FileType::regular;
}

/// Each file of each package is where its package says.
void verifyFile(const Upgrade& upgrade, const Names& entries, const RecordedPackage& package,
                const RecordedFile& file, Findings& findings) {
    const std::string destination = destinationOf(file, upgrade.platform());
    const std::string subject = "package " + package.name + ": ";
    if (destination.empty()) {
        addError(findings, subject + "file " + file.source + " has no destination");
    } else if (upgrade.isInstallation()) {
        if (!isOnDisk(upgrade.path, destination))
            addError(findings, subject + destination + " is not on disk");
    } else if (!entries.contains(destination)) {
        addError(findings, subject + destination + " has no script entry");
    }
}

void verifyPackages(const Upgrade& upgrade, Findings& findings) {
    Names entries, names;
    for (const ScriptEntry& entry : upgrade.entries) entries.insert(entry.name);
    for (const RecordedPackage& package : upgrade.packages) {
        if (!names.insert(package.name).second) {
            addError(findings, "vekPackages.xml: package " + package.name + " is recorded twice");
        }
        for (const RecordedFile& file : package.files) verifyFile(upgrade, entries, package, file, findings);
    }
}

}  // namespace

Findings verifyMembers(const Upgrade& upgrade, const Progress& progress) {
    Findings findings;
    zHandle archive = upgrade.handles.archive.get();
    std::size_t done = 0;
    for (const zMemberInfo& member : upgrade.members) {
        progress(done++, upgrade.members.size());
        const zStatus status = zArchive_VerifyMember(archive, member.name.c_str());
        if (status == zStatus_Success) continue;
        const std::string reason = reasonOf(status, upgrade.path);
        if (status == zStatus_Unsupported) {
            addWarning(findings, reason + ", so it cannot be checked");
        } else {
            addError(findings, reason);
        }
    }
    progress(done, upgrade.members.size());
    return findings;
}

Findings verifyConsistency(const Upgrade& upgrade) {
    Findings findings = upgrade.problems;
    if (!upgrade.isOpen) return findings;
    if (upgrade.hasScript) {
        verifyEntries(upgrade, findings);
        verifyPackageMembers(upgrade, References(upgrade), findings);
    }
    if (upgrade.hasManifest && upgrade.handles.manifest.get() != nullptr) {
        verifyHead(upgrade, findings);
        if (upgrade.hasScript || upgrade.isInstallation()) verifyPackages(upgrade, findings);
    }
    return findings;
}
