#include "TaVekInspect/render/list.h"

#include <algorithm>

#include "TaVekInspect/model/references.h"
#include "TaVekInspect/render/json_model.h"
#include "TaVekInspect/render/table.h"
#include "TaVekInspect/render/text.h"

namespace {

/// Who refers to one member.
struct Referrers {
    std::vector<std::string> entries;
    std::vector<std::string> packages;
};

Referrers referrersOf(const References& references, const std::string& member) {
    Referrers referrers;
    for (const ScriptEntry* entry : references.entriesOf(member)) {
        referrers.entries.push_back(entry->name);
        for (const RecordedPackage* package : references.packagesOf(entry->name)) {
            auto& names = referrers.packages;
            if (std::find(names.begin(), names.end(), package->name) == names.end())
                names.push_back(package->name);
        }
    }
    return referrers;
}

}  // namespace

void printList(std::ostream& out, const Upgrade& upgrade) {
    using Align = Table::Align;
    Table table({{"Size", Align::right},
                 {"Packed", Align::right},
                 {"Method"},
                 {"CRC-32"},
                 {"Date"},
                 {"Name"},
                 {"Script entries"},
                 {"Packages"}});
    const References references(upgrade);
    for (const zMemberInfo& member : upgrade.members) {
        const Referrers referrers = referrersOf(references, member.name);
        table.add({std::to_string(member.size), std::to_string(member.packedSize), methodText(member),
                   crcText(member.crc), timeText(member.time), member.name, joined(referrers.entries),
                   joined(referrers.packages)});
    }
    table.print(out);
}

void writeList(std::ostream& out, const Upgrade& upgrade) {
    JsonWriter json(out);
    beginDocument(json, "list");
    json.value("path", upgrade.path).array("members");
    const References references(upgrade);
    for (const zMemberInfo& member : upgrade.members) {
        const Referrers referrers = referrersOf(references, member.name);
        json.object();
        writeMember(json, member);
        writeTexts(json, "scriptEntries", referrers.entries);
        writeTexts(json, "packages", referrers.packages);
        json.end();
    }
    json.end();
    writeFindings(json, "problems", upgrade.problems);
    json.end();
}
