#include "TaVekUtil/batch/process_archives.h"

#include <iostream>

#include "TaVekUtil/archive/archive_extended.h"
#include "TaVekUtil/archive/unified_manifest.h"
#include "TaVekUtil/edit/add_packages.h"
#include "TaVekUtil/edit/remove_packages.h"
#include "platform/archive/archive.h"
#include "platform/base/path.h"
#include "platform/xml/xml.h"

namespace {

constexpr const char* operation = "TaVekUtil_ModifyVekPkgs";

void saveArchive(const ArchiveExtended& archive, const ArchivePlace& place, const BuildConfig& config) {
    TaVekUtil_StoreManifest(archive);
    const Ta::PathText outputPath = TaVekUtil_OutputPath(place, config);
    Ta::Check(archive.CheckOutput(outputPath.c_str()), operation, 983);
    Ta::Check(zArchive_Save(archive.archive.get(), outputPath.c_str()), operation, 983);
    std::cout << "TaVekUtil:    - Saving new package as: " << outputPath.c_str() << std::endl;
}

void saveInstalledManifest(const ArchiveExtended& archive) {
    Ta::Check(zXml_Save(archive.manifest.get(), installedManifestPath(archive.path).c_str()), operation, 989);
}

void modify(const std::vector<AddonPackage>& packages, const std::vector<std::string>& names,
            const char* path, const BuildConfig& config) {
    std::cout << std::endl << "TaVekUtil: Processing Archive: " << path << std::endl;
    const ArchivePlace place = TaVekUtil_SplitPath(path);
    ArchiveExtended archive;
    archive.Load(path);
    const int removed = TaVekUtils_RemovePackages(archive, names);
    const int added = TaVekUtils_AddPackages(archive, packages);
    if (removed == 0 && added == 0) {
        std::cout << "TaVekUtil:    - No libraries were loaded for: " << path << std::endl;
    } else if (archive.isInstallation()) {
        saveInstalledManifest(archive);
    } else {
        saveArchive(archive, place, config);
    }
}

}  // namespace

void TaVekUtil_ProcessStockPackages(const BuildConfig& config) {
    try {
        for (const std::string& path : config.stockPackages) {
            TaVekUtil_ModifyVekPkgs(config.addonPackages, config.vekPkgsToRemove, path.c_str(), config);
        }
    } catch (const Ta::Exception&) {
        std::cerr << "TaVekUtil: Failed process upgrade package." << std::endl;
        throw;
    }
}

void TaVekUtil_ModifyVekPkgs(const std::vector<AddonPackage>& packages, const std::vector<std::string>& names,
                             const char* path, const BuildConfig& config) {
    try {
        modify(packages, names, path, config);
    } catch (const Ta::Exception&) {
        std::cerr << "TaVekUtil: Failed injecting files into upgrade package." << std::endl;
        throw;
    }
}

ArchivePlace TaVekUtil_SplitPath(const char* path) {
    ArchivePlace place;
    Ta::Check(zPath_Directory(path, place.directory.data(), place.directory.capacity()), operation, 959);
    Ta::Check(zPath_FileName(path, place.fileName.data(), place.fileName.capacity()), operation, 960);
    return place;
}

Ta::PathText TaVekUtil_OutputPath(const ArchivePlace& place, const BuildConfig& config) {
    Ta::PathText name;
    Ta::PathText path;
    Ta::Check(zStrPrintf(name.data(), name.capacity(), "%s-%s", config.outputPrefix.c_str(),
                         place.fileName.c_str()),
              operation, 981);
    Ta::Check(zPath_Combine(place.directory.c_str(), name.c_str(), path.data(), path.capacity()), operation,
              982);
    return path;
}

void TaVekUtil_StoreManifest(const ArchiveExtended& archive) {
    Ta::Buffer bytes;
    const zHandle container = archive.archive.get();
    Ta::Check(zXml_SaveBytes(archive.manifest.get(), bytes.data(), bytes.size(), nullptr), operation, 976);
    Ta::Check(zArchive_DeleteFile(container, manifestFileName), operation, 977);
    Ta::Check(zArchive_AddData(container, bytes.bytes(), bytes.byteCount(), manifestFileName, 0), operation,
              978);
}
