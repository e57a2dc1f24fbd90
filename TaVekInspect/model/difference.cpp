#include "TaVekInspect/model/difference.h"

#include <deque>
#include <functional>
#include <unordered_map>

#include "TaVekInspect/model/utf8.h"
#include "TaVekUtil/archive/unified_manifest.h"
#include "platform/archive/archive.h"
#include "platform/base/allocator.h"
#include "platform/xml/xml.h"

namespace {

/// Pairs the items of two lists by name, those of one name in their order; calls `differ` for each that has
/// no partner (null) or an unequal one: first in the order of `before`, then of what is only in `after`.
template <typename Item, typename Equal, typename Differ>
void pairUp(const std::vector<Item>& before, const std::vector<Item>& after, Equal equal, Differ differ) {
    std::unordered_map<std::string, std::deque<const Item*>> waiting;
    for (const Item& item : after) waiting[item.name].push_back(&item);
    for (const Item& item : before) {
        auto& partners = waiting[item.name];
        const Item* partner = partners.empty() ? nullptr : partners.front();
        if (partner != nullptr) partners.pop_front();
        if (partner == nullptr || !equal(item, *partner)) differ(&item, partner);
    }
    for (const Item& item : after) {
        const auto& left = waiting[item.name];
        // What is left of a name are its last items.
        if (!left.empty() && &item >= left.front()) differ(static_cast<const Item*>(nullptr), &item);
    }
}

template <typename Item>
Changed<Item> changedOf(const Item* before, const Item* after) {
    if (before == nullptr) return {Change::added, {}, *after};
    if (after == nullptr) return {Change::removed, *before, {}};
    return {Change::changed, *before, *after};
}

template <typename Item>
std::vector<Changed<Item>> changesOf(const std::vector<Item>& before, const std::vector<Item>& after) {
    std::vector<Changed<Item>> changes;
    pairUp(before, after, std::equal_to<Item>(),
           [&](const Item* from, const Item* to) { changes.push_back(changedOf(from, to)); });
    return changes;
}

std::vector<Changed<Property>> propertyChanges(const Upgrade& before, const Upgrade& after) {
    std::vector<Changed<Property>> changes;
    const auto compareValues = [&](const char* name, const std::string& from, const std::string& to) {
        if (from != to) changes.push_back({Change::changed, {name, from}, {name, to}});
    };
    compareValues("platform", before.platform(), after.platform());
    compareValues("hostVersion", before.hostVersion, after.hostVersion);
    if (before.hasManifest && after.hasManifest) {
        compareValues("beVersion", before.manifestVersion, after.manifestVersion);
        compareValues("manifestPlatform", before.manifestPlatform, after.manifestPlatform);
    }
    return changes;
}

// ---- Members and their texts ---------------------------------------------------------------------------

constexpr std::uint64_t longestText = 16 << 20;

/// Puts the bytes of a member into `text` when they are text; a member that is not there is an empty one.
bool readText(const Upgrade& upgrade, const zMemberInfo* member, std::string& text) {
    if (member == nullptr) return true;
    zHandle archive = upgrade.handles.archive.get();
    std::int64_t index = 0;
    if (member->size > longestText) return false;
    if (zArchive_Find(archive, member->name.c_str(), &index) != zStatus_Success) return false;
    text.assign(static_cast<const char*>(zArchive_FileData(archive, index)),
                static_cast<std::size_t>(zArchive_FileSize(archive, index)));
    return text.find('\0') == std::string::npos && isUtf8(text);
}

bool sameContent(const zMemberInfo& a, const zMemberInfo& b) {
    return a.size == b.size && a.crc == b.crc;
}

ChangedMember memberChange(const Upgrade& before, const zMemberInfo* from, const Upgrade& after,
                           const zMemberInfo* to) {
    ChangedMember change{changedOf(from, to), true, false, {}};
    change.contentDiffers = change.kind != Change::changed || !sameContent(*from, *to);
    std::string oldText, newText;
    if (!change.contentDiffers || !readText(before, from, oldText) || !readText(after, to, newText)) {
        return change;
    }
    change.isText = true;
    change.hunks = diffTexts(oldText, newText);
    return change;
}

/// The manifest of an installation directory, as if it were a member.
std::string manifestText(const Upgrade& upgrade) {
    Ta::Buffer bytes;
    if (!upgrade.hasManifest || upgrade.handles.manifest.get() == nullptr ||
        zXml_SaveBytes(upgrade.handles.manifest.get(), bytes.data(), bytes.size(), nullptr) !=
            zStatus_Success) {
        return {};
    }
    return {static_cast<const char*>(bytes.bytes()), bytes.byteCount()};
}

void compareInstalledManifests(const Upgrade& before, const Upgrade& after, Difference& difference) {
    const std::string oldText = manifestText(before), newText = manifestText(after);
    if (oldText == newText) return;
    ChangedMember change;
    change.kind = !before.hasManifest  ? Change::added
                  : !after.hasManifest ? Change::removed
                                       : Change::changed;
    if (before.hasManifest) change.before.name = manifestFileName;
    if (after.hasManifest) change.after.name = manifestFileName;
    change.before.size = change.before.packedSize = oldText.size();
    change.after.size = change.after.packedSize = newText.size();
    change.isText = isUtf8(oldText) && isUtf8(newText);
    if (change.isText) change.hunks = diffTexts(oldText, newText);
    difference.members.push_back(std::move(change));
}

}  // namespace

Difference compare(const Upgrade& before, const Upgrade& after) {
    Difference difference;
    difference.properties = propertyChanges(before, after);
    difference.packages = changesOf(before.packages, after.packages);
    difference.entries = changesOf(before.entries, after.entries);
    pairUp(before.members, after.members, std::equal_to<zMemberInfo>(),
           [&](const zMemberInfo* from, const zMemberInfo* to) {
               difference.members.push_back(memberChange(before, from, after, to));
           });
    if (before.isInstallation() && after.isInstallation()) {
        compareInstalledManifests(before, after, difference);
    }
    return difference;
}
