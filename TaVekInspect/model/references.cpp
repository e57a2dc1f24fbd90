#include "TaVekInspect/model/references.h"

References::References(const Upgrade& upgrade) {
    for (const ScriptEntry& entry : upgrade.entries) {
        if (entry.isComplete) entries_[entry.source].push_back(&entry);
    }
    for (const RecordedPackage& package : upgrade.packages) {
        for (const RecordedFile& file : package.files) {
            auto& owners = packages_[destinationOf(file, upgrade.platform())];
            if (owners.empty() || owners.back() != &package) owners.push_back(&package);
        }
    }
}

const std::vector<const ScriptEntry*>& References::entriesOf(const std::string& name) const {
    static const std::vector<const ScriptEntry*> none;
    const auto found = entries_.find(name);
    return found == entries_.end() ? none : found->second;
}

const std::vector<const RecordedPackage*>& References::packagesOf(const std::string& destination) const {
    static const std::vector<const RecordedPackage*> none;
    const auto found = packages_.find(destination);
    return found == packages_.end() ? none : found->second;
}
