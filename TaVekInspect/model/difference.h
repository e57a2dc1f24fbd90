#pragma once

#include <string>
#include <vector>

#include "TaVekInspect/model/text_diff.h"
#include "TaVekInspect/model/upgrade.h"

enum class Change { added, removed, changed };

/// Something that is in one of two upgrades, or in both and not the same. What is not there is empty.
template <typename Item>
struct Changed {
    Change kind;
    Item before;
    Item after;

    /// The side that is there, the newer one of both.
    const Item& present() const { return kind == Change::removed ? before : after; }
};

/// A value that both upgrades state.
struct Property {
    std::string name;
    std::string value;
};

struct ChangedMember : Changed<zMemberInfo> {
    bool contentDiffers = true;  ///< False when only its packing or its date has changed.
    bool isText = false;         ///< Both sides that are there are UTF-8 text of a size that one can read.
    std::vector<Hunk> hunks;     ///< Of a text whose content differs.
};

/// What tells two upgrades apart. Members are compared by size and checksum, everything else by value.
struct Difference {
    std::vector<Changed<Property>> properties;
    std::vector<Changed<RecordedPackage>> packages;
    std::vector<Changed<ScriptEntry>> entries;
    std::vector<ChangedMember> members;

    bool isEmpty() const {
        return properties.empty() && packages.empty() && entries.empty() && members.empty();
    }
};

/// How many of `changes` are of `kind`.
template <typename Item>
std::size_t countOf(const std::vector<Item>& changes, Change kind) {
    std::size_t count = 0;
    for (const Item& change : changes) count += change.kind == kind ? 1 : 0;
    return count;
}

/// What tells `before` and `after` apart. Items are paired by name, those of one name in their order.
Difference compare(const Upgrade& before, const Upgrade& after);
