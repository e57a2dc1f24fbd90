#include "TaVekUtil/batch/package_loading.h"

#include <iostream>

#include "TaVekUtil/batch/stock_packages.h"
#include "platform/base/directory.h"
#include "platform/base/failure.h"
#include "platform/base/path.h"
#include "platform/os/os.h"

namespace {

/// The directory of the package `entry`: where a tar file was unpacked, else the entry itself.
void locatePackage(const std::string& entry, Ta::PathText& directory, const char* operation) {
    TaVekUtil_Untar_VekApp(entry, directory.data(), directory.capacity());
    if (!directory.empty()) return;
    // An empty entry would otherwise stand for the working directory.
    if (entry.empty()) Ta::Check(failure::record(zStatus_NotFound, "the package entry is empty"), operation);
    static_cast<void>(zStrCopy(directory.data(), directory.capacity(), entry.c_str()));
}

void readHead(zHandle manifest, zXmlItem root, zXmlItem& vekApp, AddonPackage& package,
              const char* operation) {
    zXmlItem version = nullptr;
    Ta::Check(zXml_FindChild(manifest, root, "BeVersion", &version), operation);
    Ta::Check(zXml_ItemText(manifest, version, package.beVersion.data(), package.beVersion.capacity()),
              operation);
    Ta::Check(zXml_FindChild(manifest, root, "VekApp", &vekApp), operation);
    Ta::Check(zXml_AttrText(manifest, vekApp, "name", package.name.data(), package.name.capacity()),
              operation);
}

AddonPackage loadPackage(const std::string& entry, const char* platform) {
    constexpr const char* operation = "TaVekUtil_Load_VekPkg_Manifest";
    Ta::PathText directory;
    Ta::PathText path;
    locatePackage(entry, directory, operation);
    Ta::Check(zPath_Combine(directory.c_str(), packageManifestName, path.data(), path.capacity()), operation);
    return TaVekUtil_Load_Package(path.c_str(), directory.c_str(), platform);
}

constexpr const char* filesOperation = "TaVekUtil_Load_VekPkg_Files";

template <std::size_t Capacity>
void readChildText(zHandle manifest, zXmlItem item, const char* name, Ta::Text<Capacity>& text) {
    zXmlItem child = nullptr;
    Ta::Check(zXml_FindChild(manifest, item, name, &child), filesOperation);
    Ta::Check(zXml_ItemText(manifest, child, text.data(), text.capacity()), filesOperation);
}

void readFile(zHandle manifest, zXmlItem item, const char* directory, PackageFile& file) {
    Ta::Check(zXml_AttrText(manifest, item, "type", file.type.data(), file.type.capacity()), filesOperation);
    readChildText(manifest, item, "Source", file.source);
    readChildText(manifest, item, "Destination", file.destination);
    Ta::Check(zPath_Combine(directory, file.source.c_str(), file.path.data(), file.path.capacity()),
              filesOperation);
}

void loadFiles(const char* platform, zHandle manifest, zXmlItem element, const char* directory,
               AddonPackage& package) {
    Ta::PathText name;
    Ta::Check(zXml_AttrText(manifest, element, "name", name.data(), name.capacity()), filesOperation);
    if (!zStrEquals(platform, name.c_str()) && !zStrEquals(platform, "all")) return;

    PackageFile file;
    static_cast<void>(zStrCopy(file.platform.data(), file.platform.capacity(), name.c_str()));
    for (zXmlItem item = zXml_FirstChild(manifest, element); item != nullptr;
         item = zXml_NextSibling(manifest, item)) {
        readFile(manifest, item, directory, file);
        package.files.push_back(file);
    }
}

}  // namespace

void TaVekUtil_Load_VekPkg_Manifest(BuildConfig& config) {
    try {
        for (const std::string& entry : config.vekPkgsToLoad) {
            AddonPackage package = loadPackage(entry, config.platform.c_str());
            if (!package.files.empty()) config.addonPackages.push_back(std::move(package));
        }
    } catch (...) {
        std::cerr << "TaVekUtil: Failed to load vek manifest file from vek package(s)." << std::endl;
        throw;
    }
}

void TaVekUtil_Untar_VekApp(const std::string& entry, char* directory, std::size_t capacity) {
    constexpr const char* operation = "TaVekUtil_Untar_VekApp";
    if (!TaVekUtil_IsTarEntry(entry)) {
        static_cast<void>(zStrCopy(directory, capacity, ""));
        return;
    }
    const Ta::PathText extraction = TaVekUtil_ExtractionDirectory(entry);
    TaVekUtil_Unpack(entry, extraction.c_str());
    const std::string manifest = TaVekUtil_FindFilepath(extraction.c_str(), packageManifestName);
    Ta::Check(zPath_Directory(manifest.c_str(), directory, capacity), operation);
}

bool TaVekUtil_IsTarEntry(const std::string& entry) {
    return entry.find(".tar") != std::string::npos;
}

Ta::PathText TaVekUtil_ExtractionDirectory(const std::string& entry) {
    Ta::PathText directory;
    Ta::Check(zPath_StripExtension(entry.c_str(), directory.data(), directory.capacity()),
              "TaVekUtil_Untar_VekApp");
    return directory;
}

void TaVekUtil_Unpack(const std::string& entry, const char* directory) {
    constexpr const char* operation = "TaVekUtil_Untar_VekApp";
    Ta::PathText programs;
    Ta::Check(zDirectory_Application(programs.data(), programs.capacity()), operation);
    if (!zDirectory_Exists(directory)) Ta::Check(zDirectory_Create(directory), operation);

    const int result = os::unpackTar(programs.c_str(), directory, entry);
    if (result == 0) return;
    std::cerr << "TaVekUtil: Failed to untar: " << entry << std::endl;
    std::cerr << "TaVekUtil: Result: " << result << std::endl;
    throw Ta::Exception(zStatus_Failure);
}

AddonPackage TaVekUtil_Load_Package(const char* manifestPath, const char* directory, const char* platform) {
    constexpr const char* operation = "TaVekUtil_Load_VekPkg_Manifest";
    AddonPackage package;
    Ta::Check(zXml_Load(package.manifest.out(), manifestPath, nullptr), operation);

    const zHandle manifest = package.manifest.get();
    zXmlItem root = nullptr;
    zXmlItem vekApp = nullptr;
    Ta::Check(zXml_FindRoot(manifest, &root), operation);
    readHead(manifest, root, vekApp, package, operation);
    for (zXmlItem element = zXml_FirstChild(manifest, vekApp); element != nullptr;
         element = zXml_NextSibling(manifest, element)) {
        TaVekUtil_Load_VekPkg_Files(platform, manifest, element, directory, package);
    }
    return package;
}

void TaVekUtil_Load_VekPkg_Files(const char* platform, zHandle manifest, zXmlItem element,
                                 const char* directory, AddonPackage& package) {
    try {
        loadFiles(platform, manifest, element, directory, package);
    } catch (...) {
        std::cerr << "TaVekUtil: Failed to load vekapp platform files." << std::endl;
        throw;
    }
}
