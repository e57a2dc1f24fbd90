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

void storeManifest(const ArchiveExtended& archive) {
    Ta::Buffer bytes;
    const zHandle container = archive.archive.get();
    Ta::Check(zXml_SaveBytes(archive.manifest.get(), bytes.data(), bytes.size(), nullptr), operation, 976);
    Ta::Check(zArchive_DeleteFile(container, manifestFileName), operation, 977);
    Ta::Check(zArchive_AddData(container, bytes.bytes(), bytes.byteCount(), manifestFileName, 0), operation,
              978);
}

void saveArchive(const ArchiveExtended& archive, const Ta::PathText& directory, const Ta::PathText& fileName,
                 const BuildConfig& config) {
    storeManifest(archive);
    Ta::PathText outputName;
    Ta::PathText outputPath;
    Ta::Check(zStrPrintf(outputName.data(), outputName.capacity(), "%s-%s", config.outputPrefix.c_str(),
                         fileName.c_str()),
              operation, 981);
    Ta::Check(zPath_Combine(directory.c_str(), outputName.c_str(), outputPath.data(), outputPath.capacity()),
              operation, 982);
    Ta::Check(zArchive_Save(archive.archive.get(), outputPath.c_str()), operation, 983);
    std::cout << "TaVekUtil:    - Saving new package as: " << outputPath.c_str() << std::endl;
}

void saveInstalledManifest(const ArchiveExtended& archive) {
    Ta::Check(zXml_Save(archive.manifest.get(), installedManifestPath(archive.path).c_str()), operation, 989);
}

void modify(const std::vector<AddonPackage>& packages, const std::vector<std::string>& names,
            const char* path, const BuildConfig& config) {
    std::cout << std::endl << "TaVekUtil: Processing Archive: " << path << std::endl;
    Ta::PathText directory;
    Ta::PathText fileName;
    Ta::Check(zPath_Directory(path, directory.data(), directory.capacity()), operation, 959);
    Ta::Check(zPath_FileName(path, fileName.data(), fileName.capacity()), operation, 960);

    ArchiveExtended archive;
    archive.Load(path);
    const int removed = TaVekUtils_RemovePackages(archive, names);
    const int added = TaVekUtils_AddPackages(archive, packages);
    if (removed == 0 && added == 0) {
        std::cout << "TaVekUtil:    - No libraries were loaded for: " << path << std::endl;
    } else if (archive.isInstallation()) {
        saveInstalledManifest(archive);
    } else {
        saveArchive(archive, directory, fileName, config);
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
