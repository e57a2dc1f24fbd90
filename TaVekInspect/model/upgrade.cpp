#include "TaVekInspect/model/upgrade.h"

#include <algorithm>

#include "TaVekInspect/model/xml_text.h"
#include "TaVekUtil/archive/archive_probes.h"
#include "TaVekUtil/archive/host_version.h"
#include "TaVekUtil/archive/install_destination.h"
#include "TaVekUtil/archive/unified_manifest.h"
#include "TaVekUtil/edit/startup_script.h"
#include "platform/archive/archive.h"
#include "platform/base/failure.h"
#include "platform/base/text.h"
#include "platform/os/os.h"

namespace {

constexpr const char* operation = "TaVekInspect";

/// Runs `step`; what it raises becomes an error, and the answer is false.
template <typename Step>
bool attempt(Upgrade& upgrade, Step step) {
    try {
        step();
        return true;
    } catch (const Ta::Exception& exception) {
        addError(upgrade.problems, reasonOf(exception, upgrade.path));
        return false;
    }
}

// ---- The start-up script -------------------------------------------------------------------------------

/// Appends the models of every `Eq` below `entry`, however deep the conditions are nested.
void readControllers(zHandle document, zXmlItem entry, std::vector<std::string>& controllers) {
    std::vector<zXmlItem> open{zXml_FirstChild(document, entry)};
    while (!open.empty()) {
        const zXmlItem item = open.back();
        if (item == nullptr) {
            open.pop_back();
            continue;
        }
        if (zStrEquals(zXml_ItemName(document, item), "Eq") &&
            attributeOf(document, item, "property") == "Controller") {
            controllers.push_back(attributeOf(document, item, "value"));
        }
        open.back() = zXml_NextSibling(document, item);
        open.push_back(zXml_FirstChild(document, item));
    }
}

void readEntries(const StartupScript& script, std::vector<ScriptEntry>& entries) {
    zHandle document = script.document();
    for (zXmlItem item = zXml_FirstChild(document, script.root()); item != nullptr;
         item = zXml_NextSibling(document, item)) {
        if (!zStrEquals(zXml_ItemName(document, item), "File")) continue;
        ScriptEntry entry;
        entry.name = attributeOf(document, item, "name");
        entry.source = attributeOf(document, item, "source");
        entry.isComplete = hasAttribute(document, item, "name") && hasAttribute(document, item, "source");
        readControllers(document, item, entry.controllers);
        entries.push_back(std::move(entry));
    }
}

/// The script's entries, the platform and the host version that it tells.
void readScript(Upgrade& upgrade) {
    zHandle archive = upgrade.handles.archive.get();
    upgrade.hasScript =
        attempt(upgrade, [&] { readEntries(*StartupScript::of(archive, operation), upgrade.entries); });
    if (!upgrade.hasScript) return;
    attempt(upgrade, [&] { upgrade.handles.platform = TaVekUtils_GetArchivePlatform(archive); });
    try {
        upgrade.hostVersion = TaVekUtils_GetArchiveVersion(archive);
    } catch (const Ta::Exception& exception) {
        // Only a fresh manifest asks for it.
        const auto severity = upgrade.hasManifest ? Finding::Severity::warning : Finding::Severity::error;
        upgrade.problems.push_back({severity, reasonOf(exception, upgrade.path)});
    }
}

// ---- The unified manifest ------------------------------------------------------------------------------

RecordedPackage readPackage(zHandle manifest, zXmlItem item) {
    RecordedPackage package;
    package.name = attributeOf(manifest, item, "name");
    for (zXmlItem file = zXml_FirstChild(manifest, item); file != nullptr;
         file = zXml_NextSibling(manifest, file)) {
        package.files.push_back({attributeOf(manifest, file, "type"), childTextOf(manifest, file, "Source"),
                                 childTextOf(manifest, file, "Destination")});
    }
    return package;
}

void readManifest(Upgrade& upgrade) {
    zHandle manifest = upgrade.handles.manifest.get();
    const zXmlItem root = zXml_Root(manifest);
    upgrade.manifestVersion = childTextOf(manifest, root, "BeVersion");
    upgrade.manifestPlatform = childTextOf(manifest, root, "Platform");
    upgrade.packages = readPackages(manifest);
}

// ---- The two kinds of upgrades -------------------------------------------------------------------------

bool hasMember(const Upgrade& upgrade, const char* name) {
    return std::any_of(upgrade.members.begin(), upgrade.members.end(),
                       [name](const zMemberInfo& member) { return member.name == name; });
}

void readArchive(Upgrade& upgrade) {
    zHandle archive = upgrade.handles.archive.get();
    attempt(upgrade, [&] { Ta::Check(zArchive_Members(archive, upgrade.members), operation); });
    // A manifest that was obtained already may be edited; the member is what it was.
    const bool isObtained = upgrade.handles.manifest.get() != nullptr;
    upgrade.hasManifest = isObtained || hasMember(upgrade, manifestFileName);
    readScript(upgrade);
    const auto obtain = [&] { TaVekUtils_GetUnifiedManifest(archive, "", upgrade.handles.manifest); };
    if (upgrade.hasManifest && (isObtained || attempt(upgrade, obtain))) readManifest(upgrade);
}

void readInstallation(Upgrade& upgrade) {
    ArchiveExtended& handles = upgrade.handles;
    attempt(upgrade, [&] { upgrade.hostVersion = TaVekUtils_GetHostVersion(handles.path); });
    const bool isObtained = handles.manifest.get() != nullptr;
    os::FileType type{};
    const bool isAbsent =
        !os::fileType(installedManifestPath(handles.path), type) && type == os::FileType::absent;
    upgrade.hasManifest = isObtained || !isAbsent;
    const auto obtain = [&] { TaVekUtils_GetUnifiedManifest(handles.path, handles.manifest); };
    if (upgrade.hasManifest && (isObtained || attempt(upgrade, obtain))) readManifest(upgrade);
}

/// Opens `path` in the order in which the tool tries: as an archive, then as an installation directory.
void open(Upgrade& upgrade) {
    ArchiveExtended& handles = upgrade.handles;
    Ta::Check(zArchive_Construct(handles.archive.out(), nullptr), operation);
    const zStatus loaded = zArchive_Load(handles.archive.get(), upgrade.path.c_str());
    upgrade.isOpen = loaded == zStatus_Success;
    if (upgrade.isOpen) return;
    const std::string reason = reasonOf(loaded, upgrade.path);
    upgrade.isOpen = isInstallationDirectory(upgrade.path);
    if (upgrade.isOpen) {
        handles.platform = "win";
    } else {
        throw Ta::Exception(loaded, "neither an archive nor an installation directory: " + reason);
    }
}

}  // namespace

Upgrade readUpgrade(const std::string& path) {
    Upgrade upgrade;
    upgrade.path = upgrade.handles.path = path;
    attempt(upgrade, [&] { open(upgrade); });
    if (upgrade.isOpen) upgrade.isInstallation() ? readInstallation(upgrade) : readArchive(upgrade);
    return upgrade;
}

Upgrade readUpgrade(const ArchiveExtended& handles) {
    Upgrade upgrade;
    upgrade.path = handles.path;
    upgrade.handles = handles;
    upgrade.isOpen = true;
    upgrade.isInstallation() ? readInstallation(upgrade) : readArchive(upgrade);
    return upgrade;
}

std::vector<RecordedPackage> readPackages(zHandle manifest) {
    std::vector<RecordedPackage> packages;
    for (zXmlItem item = zXml_FirstChild(manifest, zXml_Root(manifest)); item != nullptr;
         item = zXml_NextSibling(manifest, item)) {
        if (zStrEquals(zXml_ItemName(manifest, item), "VekApp"))
            packages.push_back(readPackage(manifest, item));
    }
    return packages;
}

std::string destinationOf(const RecordedFile& file, const std::string& platform) {
    if (!file.destination.empty()) return file.destination;
    Ta::PathText destination;
    try {
        TaVekUtils_GetDefaultDestination(platform.c_str(), fileNameOf(file.source).c_str(),
                                         destination.data(), destination.capacity());
    } catch (const Ta::Exception&) {
        return {};
    }
    return destination.c_str();
}

std::string fileNameOf(const std::string& path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

std::string reasonOf(const Ta::Exception& exception, const std::string& path) {
    const bool hasDetail = !exception.operation().empty() && !failure::detailOf(exception.status()).empty();
    return hasDetail ? reasonOf(exception.status(), path) : exception.what();
}

std::string reasonOf(zStatus status, const std::string& path) {
    std::string_view detail = failure::detailOf(status);
    if (detail.empty()) return zStatus_Phrase(status);
    const std::string prefix = path + ": ";
    if (detail.starts_with(prefix)) detail.remove_prefix(prefix.size());
    return std::string(detail);
}
