#include "TaVekInspect/render/info.h"

#include <map>

#include "TaVekInspect/render/json_model.h"
#include "TaVekInspect/render/terminal.h"
#include "TaVekInspect/render/text.h"

namespace {

/// Figures of a container as a whole.
struct Totals {
    std::uint64_t size = 0;
    std::uint64_t packedSize = 0;
    std::map<std::string, std::size_t> methods;
};

Totals totalsOf(const Upgrade& upgrade) {
    Totals totals;
    for (const zMemberInfo& member : upgrade.members) {
        totals.size += member.size;
        totals.packedSize += member.packedSize;
        ++totals.methods[methodText(member)];
    }
    return totals;
}

void printLine(std::ostream& out, const char* label, const std::string& text) {
    out << "  " << painted(Colour::dim, label) << printable(text.empty() ? "unknown" : text) << '\n';
}

void printHead(std::ostream& out, const Upgrade& upgrade) {
    out << painted(Colour::bold, printable(upgrade.path)) << '\n';
    printLine(out,
              "Kind:          ", upgrade.isInstallation() ? "installation directory" : "upgrade archive");
    printLine(out, "Platform:      ", upgrade.platform());
    printLine(out, "Host version:  ", upgrade.hostVersion);
    if (!upgrade.hasManifest) printLine(out, "Manifest:      ", "none, the first change makes one");
    if (upgrade.isInstallation()) return;
    const Totals totals = totalsOf(upgrade);
    std::vector<std::string> methods;
    for (const auto& [method, count] : totals.methods)
        methods.push_back(std::to_string(count) + ' ' + method);
    const std::string members = counted(upgrade.members.size(), "member");
    printLine(out, "Container:     ",
              methods.empty() ? members
                              : members + " (" + joined(methods) + "), " + sizeText(totals.size) + " in " +
                                    sizeText(totals.packedSize));
}

void printPackages(std::ostream& out, const Upgrade& upgrade) {
    out << '\n' << painted(Colour::bold, "Packages: " + std::to_string(upgrade.packages.size())) << '\n';
    for (const RecordedPackage& package : upgrade.packages) {
        out << "  " << painted(Colour::cyan, printable(package.name)) << '\n';
        for (const RecordedFile& file : package.files) {
            const std::string destination = destinationOf(file, upgrade.platform());
            out << "    " << printable(file.type) << ": " << printable(file.source) << " -> "
                << printable(destination.empty() ? "nowhere" : destination)
                << (file.destination.empty() && !destination.empty() ? " (default)" : "") << '\n';
        }
    }
}

using EntryGroup = std::vector<const ScriptEntry*>;

/// Entries for the same controllers stand together, in the order of their first.
std::vector<EntryGroup> groupsOf(const std::vector<ScriptEntry>& entries) {
    std::vector<EntryGroup> groups;
    std::map<std::vector<std::string>, std::size_t> places;
    for (const ScriptEntry& entry : entries) {
        const auto [place, isNew] = places.emplace(entry.controllers, groups.size());
        if (isNew) groups.emplace_back();
        groups[place->second].push_back(&entry);
    }
    return groups;
}

void printEntries(std::ostream& out, const Upgrade& upgrade) {
    if (upgrade.isInstallation()) return;
    out << '\n' << painted(Colour::bold, "Script entries: " + std::to_string(upgrade.entries.size())) << '\n';
    for (const EntryGroup& group : groupsOf(upgrade.entries)) {
        const std::vector<std::string>& controllers = group.front()->controllers;
        const std::string heading = controllers.empty() ? "no controller named" : joined(controllers);
        out << "  " << painted(Colour::cyan, printable(heading)) << '\n';
        for (const ScriptEntry* entry : group) {
            out << "    " << printable(entry->name) << " <- " << printable(entry->source) << '\n';
        }
    }
}

}  // namespace

void printInfo(std::ostream& out, const Upgrade& upgrade) {
    printHead(out, upgrade);
    printPackages(out, upgrade);
    printEntries(out, upgrade);
}

void writeInfo(std::ostream& out, const Upgrade& upgrade) {
    JsonWriter json(out);
    beginDocument(json, "info");
    json.value("path", upgrade.path).value("installation", upgrade.isInstallation());
    json.value("platform", upgrade.platform()).value("hostVersion", upgrade.hostVersion);
    json.object("manifest").value("present", upgrade.hasManifest);
    json.value("beVersion", upgrade.manifestVersion).value("platform", upgrade.manifestPlatform).end();
    const Totals totals = totalsOf(upgrade);
    json.object("container").value("members", std::uint64_t{upgrade.members.size()});
    json.value("size", totals.size).value("packedSize", totals.packedSize).end();
    json.array("packages");
    for (const RecordedPackage& package : upgrade.packages) {
        json.object();
        writePackage(json, package, upgrade.platform());
        json.end();
    }
    json.end().array("scriptEntries");
    for (const ScriptEntry& entry : upgrade.entries) {
        json.object();
        writeEntry(json, entry);
        json.end();
    }
    json.end();
    writeFindings(json, "problems", upgrade.problems);
    json.end();
}
