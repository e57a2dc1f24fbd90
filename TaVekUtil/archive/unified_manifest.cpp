#include "TaVekUtil/archive/unified_manifest.h"

#include <vector>

#include "TaVekUtil/archive/archive_probes.h"
#include "TaVekUtil/archive/host_version.h"
#include "platform/archive/archive.h"
#include "platform/base/failure.h"
#include "platform/base/text.h"
#include "platform/xml/xml.h"

namespace {

constexpr const char* operation = "TaVekUtils_GetUnifiedManifest";

using PackageNameText = Ta::Text<128>;

void addTextItem(zHandle document, zXmlItem parent, const char* name, const std::string& text) {
    zXmlItem item = nullptr;
    Ta::Check(zXml_AddItem(document, parent, name, &item), operation);
    Ta::Check(zXml_SetItemText(document, item, text.c_str()), operation);
}

void buildFresh(const std::string& version, const std::string& platform, Ta::Object<void*>& manifest) {
    Ta::Check(zXml_Construct(manifest.out(), nullptr), operation);
    zXmlItem root = nullptr;
    Ta::Check(zXml_AddItem(manifest.get(), nullptr, "VekAppPackage", &root), operation);
    addTextItem(manifest.get(), root, "BeVersion", version);
    addTextItem(manifest.get(), root, "Platform", platform);
}

/// Copies every child of `from` to the end of `to`.
zStatus copyChildren(zHandle source, zXmlItem from, zHandle target, zXmlItem to) {
    for (zXmlItem child = zXml_FirstChild(source, from); child != nullptr;
         child = zXml_NextSibling(source, child)) {
        const zStatus status = zXml_CopyItem(target, to, nullptr, source, child, nullptr);
        if (status != zStatus_Success) return status;
    }
    return zStatus_Success;
}

/// Copies the file entries of the platform elements of `vekApp` that serve `platform`. An element serves it
/// when its `name` begins with the platform's; one whose `name` cannot be read serves none.
zStatus copyFileEntries(zHandle source, zXmlItem vekApp, const char* platform, zHandle target,
                        zXmlItem entry) {
    for (zXmlItem element = zXml_FirstChild(source, vekApp); element != nullptr;
         element = zXml_NextSibling(source, element)) {
        Ta::ShortText name;
        const zStatus read = zXml_AttrText(source, element, "name", name.data(), name.capacity());
        if (read != zStatus_Success) continue;
        if (zStrCompareN(platform, name.c_str(), zStrLength(platform)) != 0) continue;
        const zStatus copied = copyChildren(source, element, target, entry);
        if (copied != zStatus_Success) return copied;
    }
    return zStatus_Success;
}

}  // namespace

void TaVekUtils_GetUnifiedManifest(zHandle archive, const std::string&, Ta::Object<void*>& manifest) {
    std::int64_t index = 0;
    const zStatus found = zArchive_Find(archive, manifestFileName, &index);
    if (found == zStatus_NotFound) {
        const std::string platform = TaVekUtils_GetArchivePlatform(archive);
        buildFresh(TaVekUtils_GetArchiveVersion(archive), platform, manifest);
        return;
    }
    Ta::Check(found, operation);
    // Read as text: what follows a zero byte does not count, whatever size the member has.
    const zStatus parsed =
        zXml_FromText(manifest.out(), static_cast<const char*>(zArchive_FileData(archive, index)), nullptr);
    Ta::Check(failure::within("vekPackages.xml:", parsed), operation);
}

void TaVekUtils_GetUnifiedManifest(const std::string& path, Ta::Object<void*>& manifest) {
    const zStatus loaded = zXml_Load(manifest.out(), installedManifestPath(path).c_str(), nullptr);
    if (loaded == zStatus_NotFound) {
        buildFresh(TaVekUtils_GetHostVersion(path), "win", manifest);
        return;
    }
    Ta::Check(loaded, operation);
}

std::string installedManifestPath(const std::string& path) {
    return path + '\\' + manifestFileName;
}

zStatus TaVekUtils_MergeVekApp(zHandle packageManifest, zHandle unifiedManifest, const char* platform) {
    zXmlItem vekApp = nullptr;
    PackageNameText name;
    zStatus status = zXml_FindChild(packageManifest, nullptr, "VekAppPackage/VekApp", &vekApp);
    if (status != zStatus_Success) return status;
    status = zXml_AttrText(packageManifest, vekApp, "name", name.data(), name.capacity());
    if (status != zStatus_Success) return status;
    status = TaVekUtils_RemoveVekAppEntries(unifiedManifest, name.c_str());
    if (status != zStatus_Success) return status;

    zXmlItem entry = nullptr;
    status = zXml_AddItem(unifiedManifest, zXml_Root(unifiedManifest), "VekApp", &entry);
    if (status != zStatus_Success) return status;
    status = zXml_SetAttrText(unifiedManifest, entry, "name", name.c_str());
    if (status != zStatus_Success) return status;
    return copyFileEntries(packageManifest, vekApp, platform, unifiedManifest, entry);
}

zStatus TaVekUtils_RemoveVekAppEntries(zHandle unifiedManifest, const char* packageName) {
    zXmlItem root = nullptr;
    const zStatus found = zXml_FindChild(unifiedManifest, nullptr, "VekAppPackage", &root);
    if (found != zStatus_Success) return found;

    std::vector<zXmlItem> replaced;
    for (zXmlItem child = zXml_FirstChild(unifiedManifest, root); child != nullptr;
         child = zXml_NextSibling(unifiedManifest, child)) {
        if (!zStrEquals(zXml_ItemName(unifiedManifest, child), "VekApp")) continue;
        PackageNameText name;
        const zStatus read = zXml_AttrText(unifiedManifest, child, "name", name.data(), name.capacity());
        if (read != zStatus_Success) return read;
        // A package takes the place of every entry whose name its own name begins with, not just of its
        // equal.
        if (zStrCompareN(packageName, name.c_str(), zStrLength(name.c_str())) == 0) replaced.push_back(child);
    }
    for (zXmlItem entry : replaced) {
        const zStatus deleted = zXml_DeleteItem(unifiedManifest, entry);
        if (deleted != zStatus_Success) return deleted;
    }
    return zStatus_Success;
}
