#include "TaVekUtil/edit/script_index.h"

#include <algorithm>

#include "platform/base/letter_case.h"
#include "platform/base/text.h"

namespace {

bool isFile(zHandle document, zXmlItem item) {
    return zStrEquals(zXml_ItemName(document, item), "File");
}

using NameText = Ta::Text<ScriptIndex::injectionNameCapacity>;

/// Reads the name of a child as injection does; false when it cannot be read.
bool readName(zHandle document, zXmlItem item, NameText& name) {
    return zXml_AttrText(document, item, "name", name.data(), name.capacity()) == zStatus_Success;
}

bool readableForRemoval(const NameText& name) {
    return zStrLength(name.c_str()) < ScriptIndex::removalNameCapacity;
}

}  // namespace

ScriptIndex::ScriptIndex(zHandle document) : document_(document) {
    for (zXmlItem child = zXml_FirstChild(document, zXml_Root(document)); child != nullptr;
         child = zXml_NextSibling(document, child)) {
        added(child);
    }
}

zXmlItem ScriptIndex::firstFile() const {
    return files_.empty() ? nullptr : children_[files_.front()];
}

std::vector<zXmlItem> ScriptIndex::namedFromFirstFile(const char* name) const {
    std::vector<zXmlItem> found;
    const auto bearers = lowerNames_.find(Ta::lowerCase(name));
    if (bearers == lowerNames_.end() || files_.empty()) return found;
    for (const Position position : bearers->second) {
        if (position >= files_.front()) found.push_back(children_[position]);
    }
    return found;
}

zXmlItem ScriptIndex::fileSearchStop(const char* name) const {
    const zXmlItem unreadable = unreadableFiles_.empty() ? nullptr : children_[unreadableFiles_.front()];
    const auto bearers = lowerNames_.find(Ta::lowerCase(name));
    if (bearers == lowerNames_.end()) return unreadable;
    for (const Position position : bearers->second) {
        if (unreadable != nullptr && position > unreadableFiles_.front()) break;
        NameText exact;
        const zXmlItem child = children_[position];
        if (isFile(document_, child) && readName(document_, child, exact) &&
            zStrEquals(exact.c_str(), name)) {
            return child;
        }
    }
    return unreadable;
}

void ScriptIndex::added(zXmlItem item) {
    const Position position = children_.size();
    children_.push_back(item);
    positions_.emplace(item, position);

    NameText name;
    const bool readable = readName(document_, item, name);
    if (readable) lowerNames_[Ta::lowerCase(name.c_str())].push_back(position);
    if (!isFile(document_, item)) return;
    files_.push_back(position);
    if (!readable || !readableForRemoval(name)) unreadableFiles_.push_back(position);
}

void ScriptIndex::removed(zXmlItem item) {
    const auto found = positions_.find(item);
    const Position position = found->second;
    positions_.erase(found);
    children_[position] = nullptr;

    NameText name;
    if (readName(document_, item, name)) {
        Positions& bearers = lowerNames_[Ta::lowerCase(name.c_str())];
        bearers.erase(std::find(bearers.begin(), bearers.end(), position));
    }
    skipRemovedFiles();
}

void ScriptIndex::skipRemovedFiles() {
    const auto skip = [this](Positions& positions) {
        while (!positions.empty() && children_[positions.front()] == nullptr) positions.pop_front();
    };
    skip(files_);
    skip(unreadableFiles_);
}
