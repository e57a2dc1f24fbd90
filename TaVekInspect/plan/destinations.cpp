#include "TaVekInspect/plan/destinations.h"

#include <algorithm>

#include "TaVekInspect/model/references.h"
#include "TaVekInspect/plan/spelling.h"
#include "TaVekUtil/edit/script_index.h"
#include "platform/base/letter_case.h"

namespace {

std::string subjectOf(const PlannedFile& file) {
    return "package " + file.package + ": ";
}

}  // namespace

Destinations::Destinations(const Upgrade& before, const std::vector<std::string>& removed) : before_(before) {
    for (const ScriptEntry& entry : before.entries) {
        if (!entry.source.starts_with(packageMemberPrefix)) hostEntries_.emplace(keyOf(entry.name), &entry);
    }
    for (const RecordedPackage& package : before.packages) {
        if (std::find(removed.begin(), removed.end(), package.name) != removed.end()) continue;
        for (const RecordedFile& file : package.files) {
            owners_.emplace(keyOf(destinationOf(file, before.platform())), package.name);
        }
    }
}

void Destinations::note(const PlannedFile& file, bool replacesFile, Findings& findings) {
    const auto [first, isNew] = noted_.emplace(keyOf(file.destination), file.package);
    if (isNew) {
        checkOwner(file, replacesFile, findings);
    } else {
        addWarning(findings, subjectOf(file) + file.destination + " replaces a file of package " +
                                 first->second + " of this run");
    }
    if (leavesDirectory(file.destination)) {
        addWarning(findings, subjectOf(file) + "Destination " + file.destination + " leaves its directory");
    }
    if (!before_.isInstallation()) checkMember(file, findings);
    files_.push_back(file);
}

void Destinations::checkSharing(const Upgrade& after, Findings& findings) const {
    const References references(after);
    std::set<std::string> told;
    for (const PlannedFile& file : files_) {
        if (!told.insert(file.member).second) continue;
        for (const ScriptEntry* entry : references.entriesOf(file.member)) {
            if (noted_.contains(keyOf(entry->name))) continue;
            addWarning(findings, subjectOf(file) + file.path + " shares member " + file.member +
                                     " with script entry " + entry->name);
        }
    }
}

/// What two spellings of one destination have in common: letter case never tells them apart.
std::string Destinations::keyOf(const std::string& destination) const {
    if (!before_.isInstallation()) return Ta::lowerCase(destination);
    return Ta::lowerCase(spellingOf(before_.path + '/' + destination));
}

void Destinations::checkOwner(const PlannedFile& file, bool replacesFile, Findings& findings) const {
    const std::string key = keyOf(file.destination);
    const std::string subject = subjectOf(file) + file.destination;
    const auto [firstOwner, lastOwner] = owners_.equal_range(key);
    for (auto owner = firstOwner; owner != lastOwner; ++owner) {
        if (owner->second == file.package) continue;
        addWarning(findings, subject + " replaces a file of package " + owner->second);
    }
    const auto [firstEntry, lastEntry] = hostEntries_.equal_range(key);
    for (auto entry = firstEntry; entry != lastEntry; ++entry) {
        addWarning(findings,
                   subject + " replaces an entry of the host software (" + entry->second->source + ')');
    }
    if (replacesFile && firstOwner == lastOwner) {
        addWarning(findings, subject + " replaces a file that no package has installed");
    }
}

void Destinations::checkMember(const PlannedFile& file, Findings& findings) {
    const auto [first, isNew] = members_.emplace(file.member, file.path);
    if (!isNew && first->second != file.path) {
        addWarning(findings,
                   subjectOf(file) + file.path + " shares member " + file.member + " with " + first->second);
    }
    constexpr std::size_t longest = ScriptIndex::removalNameCapacity - 1;
    if (file.destination.size() > longest || file.member.size() > longest) {
        addWarning(findings, subjectOf(file) + file.destination + ": a name of more than " +
                                 std::to_string(longest) + " characters can be installed, but not removed");
    }
}

bool leavesDirectory(const std::string& path) {
    std::size_t begin = 0;
    while (begin <= path.size()) {
        const std::size_t end = std::min(path.find_first_of("/\\", begin), path.size());
        if (path.substr(begin, end - begin) == "..") return true;
        begin = end + 1;
    }
    return false;
}
