#include "TaVekInspect/render/diff.h"

#include "TaVekInspect/render/json_model.h"
#include "TaVekInspect/render/terminal.h"
#include "TaVekInspect/render/text.h"

namespace {

// ---- As text -------------------------------------------------------------------------------------------

Colour colourOf(Change kind) {
    return kind == Change::added ? Colour::green : kind == Change::removed ? Colour::red : Colour::yellow;
}

void printChange(std::ostream& out, Change kind, const std::string& text) {
    const char* mark = kind == Change::added ? "+ " : kind == Change::removed ? "- " : "~ ";
    out << "  " << painted(colourOf(kind), mark + printable(text)) << '\n';
}

void printHeading(std::ostream& out, const char* heading) {
    out << painted(Colour::bold, heading) << '\n';
}

std::string entryText(const ScriptEntry& entry) {
    return entry.name + " <- " + entry.source +
           (entry.controllers.empty() ? "" : " (" + joined(entry.controllers) + ")");
}

void printPackages(std::ostream& out, const std::vector<Changed<RecordedPackage>>& packages) {
    if (packages.empty()) return;
    printHeading(out, "Packages");
    for (const auto& change : packages) {
        printChange(out, change.kind,
                    change.present().name + " (" + counted(change.present().files.size(), "file") + ")");
    }
}

void printEntries(std::ostream& out, const std::vector<Changed<ScriptEntry>>& entries) {
    if (entries.empty()) return;
    printHeading(out, "Script entries");
    for (const auto& change : entries) {
        if (change.kind == Change::changed) {
            printChange(out, Change::removed, entryText(change.before));
            printChange(out, Change::added, entryText(change.after));
        } else {
            printChange(out, change.kind, entryText(change.present()));
        }
    }
}

std::string memberText(const ChangedMember& change) {
    std::string text = change.present().name + ", ";
    if (change.kind != Change::changed) return text + sizeText(change.present().size);
    if (!change.contentDiffers) return text + "same content, packed or dated anew";
    return text + sizeText(change.before.size) + " -> " + sizeText(change.after.size);
}

void printMembers(std::ostream& out, const std::vector<ChangedMember>& members) {
    if (members.empty()) return;
    printHeading(out, "Members");
    for (const ChangedMember& change : members) printChange(out, change.kind, memberText(change));
}

void printHunk(std::ostream& out, const Hunk& hunk) {
    out << painted(Colour::cyan, headingOf(hunk)) << '\n';
    for (const DiffLine& line : hunk.lines) {
        const Colour colour = line.mark == '+'   ? Colour::green
                              : line.mark == '-' ? Colour::red
                                                 : Colour::none;
        out << painted(colour, line.mark + printable(line.text, "\t")) << '\n';
        if (!line.endsLine) out << "\\ No newline at end of file\n";
    }
}

void printTexts(std::ostream& out, const Upgrade& before, const Upgrade& after,
                const std::vector<ChangedMember>& members) {
    for (const ChangedMember& change : members) {
        if (change.hunks.empty()) continue;
        const std::string name = "/" + change.present().name;
        const bool isNew = change.kind == Change::added, isGone = change.kind == Change::removed;
        out << '\n'
            << painted(Colour::bold, "--- " + printable(isNew ? "/dev/null" : before.path + name)) << '\n'
            << painted(Colour::bold, "+++ " + printable(isGone ? "/dev/null" : after.path + name)) << '\n';
        for (const Hunk& hunk : change.hunks) printHunk(out, hunk);
    }
}

// ---- As JSON -------------------------------------------------------------------------------------------

const char* nameOf(Change kind) {
    return kind == Change::added ? "added" : kind == Change::removed ? "removed" : "changed";
}

/// One array of changes: each with its kind, name, and the sides that are there.
template <typename Item, typename WriteSide, typename WriteMore>
void writeChanges(JsonWriter& json, const char* key, const std::vector<Item>& changes, WriteSide writeSide,
                  WriteMore writeMore) {
    json.array(key);
    for (const auto& change : changes) {
        json.object().value("change", nameOf(change.kind)).value("name", change.present().name);
        if (change.kind != Change::added) {
            json.object("before");
            writeSide(change.before, true);
            json.end();
        }
        if (change.kind != Change::removed) {
            json.object("after");
            writeSide(change.after, false);
            json.end();
        }
        writeMore(change);
        json.end();
    }
    json.end();
}

void writeHunks(JsonWriter& json, const std::vector<Hunk>& hunks) {
    json.array("hunks");
    for (const Hunk& hunk : hunks) {
        json.object().value("heading", headingOf(hunk)).array("lines");
        for (const DiffLine& line : hunk.lines) json.item(line.mark + line.text);
        json.end().end();
    }
    json.end();
}

void writeSide(JsonWriter& json, const char* key, const Upgrade& upgrade) {
    json.object(key).value("path", upgrade.path).value("platform", upgrade.platform());
    writeFindings(json, "problems", upgrade.problems);
    json.end();
}

}  // namespace

void printDifference(std::ostream& out, const Upgrade& before, const Upgrade& after,
                     const Difference& difference) {
    if (difference.isEmpty()) return;
    out << painted(Colour::bold, "--- " + printable(before.path)) << '\n'
        << painted(Colour::bold, "+++ " + printable(after.path)) << '\n';
    for (const auto& change : difference.properties) {
        printChange(
            out, change.kind,
            change.before.name + ": \"" + change.before.value + "\" -> \"" + change.after.value + '"');
    }
    printPackages(out, difference.packages);
    printEntries(out, difference.entries);
    printMembers(out, difference.members);
    printTexts(out, before, after, difference.members);
}

void writeDifference(std::ostream& out, const Upgrade& before, const Upgrade& after,
                     const Difference& difference) {
    JsonWriter json(out);
    beginDocument(json, "diff");
    writeSide(json, "old", before);
    writeSide(json, "new", after);
    json.value("equal", before.isOpen && after.isOpen && difference.isEmpty());
    const auto nothingMore = [](const auto&) {};
    writeChanges(
        json, "properties", difference.properties,
        [&](const Property& property, bool) { json.value("value", property.value); }, nothingMore);
    writeChanges(
        json, "packages", difference.packages,
        [&](const RecordedPackage& package, bool isOld) {
            writePackage(json, package, isOld ? before.platform() : after.platform());
        },
        nothingMore);
    writeChanges(
        json, "scriptEntries", difference.entries,
        [&](const ScriptEntry& entry, bool) { writeEntry(json, entry); }, nothingMore);
    writeChanges(
        json, "members", difference.members,
        [&](const zMemberInfo& member, bool) { writeMember(json, member); },
        [&](const ChangedMember& change) {
            json.value("contentDiffers", change.contentDiffers).value("text", change.isText);
            writeHunks(json, change.hunks);
        });
    json.end();
}
