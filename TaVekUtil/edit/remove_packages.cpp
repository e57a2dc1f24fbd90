#include "TaVekUtil/edit/remove_packages.h"

#include <algorithm>
#include <iostream>

#include "TaVekUtil/edit/file_removal.h"
#include "platform/base/text.h"
#include "platform/xml/xml.h"

namespace {

constexpr const char* operation = "TaVekUtils_RemovePackages";

/// The `VekApp` entries that have been dealt with, each once: a name listed twice finds its entry again.
class Handled {
  public:
    void remember(zXmlItem entry) {
        if (std::find(entries_.begin(), entries_.end(), entry) == entries_.end()) entries_.push_back(entry);
    }
    const std::vector<zXmlItem>& entries() const { return entries_; }

  private:
    std::vector<zXmlItem> entries_;
};

/// Removes the files of every entry named `name`; false when there is none.
bool removePackage(const ArchiveExtended& archive, const std::string& name, Handled& handled) {
    const zHandle manifest = archive.manifest.get();
    bool found = false;
    for (zXmlItem entry = zXml_FirstChild(manifest, zXml_Root(manifest)); entry != nullptr;
         entry = zXml_NextSibling(manifest, entry)) {
        if (!zStrEquals(zXml_ItemName(manifest, entry), "VekApp")) continue;
        Ta::Text<128> entryName;
        Ta::Check(zXml_AttrText(manifest, entry, "name", entryName.data(), entryName.capacity()), operation);
        if (!zStrEquals(entryName.c_str(), name.c_str())) continue;

        std::cout << std::endl << "\tTaVekUtil: Remove Package: " << name << std::endl;
        TaVekUtil_RemovePackageFiles(archive, manifest, entry, archive.platform.c_str(), entryName.c_str());
        handled.remember(entry);
        found = true;
    }
    return found;
}

[[noreturn]] void raiseNotFound(const std::string& name) {
    Ta::Text<128> message;
    Ta::Check(zStrPrintf(message.data(), message.capacity(), "Package %s not found in archive", name.c_str()),
              operation);
    throw Ta::Exception(zStatus_Unestablished, std::string(message.c_str()));
}

}  // namespace

int TaVekUtils_RemovePackages(ArchiveExtended archive, const std::vector<std::string>& names) {
    if (names.empty()) return 0;

    Handled handled;
    for (const std::string& name : names) {
        if (!removePackage(archive, name, handled)) raiseNotFound(name);
    }
    for (zXmlItem entry : handled.entries()) {
        Ta::Check(zXml_DeleteItem(archive.manifest.get(), entry), operation);
    }
    return 1;
}
