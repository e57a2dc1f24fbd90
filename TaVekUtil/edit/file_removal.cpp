#include "TaVekUtil/edit/file_removal.h"

#include <iostream>

#include "TaVekUtil/archive/install_destination.h"
#include "TaVekUtil/edit/startup_script.h"
#include "platform/archive/archive.h"
#include "platform/base/path.h"
#include "platform/base/text.h"

namespace {

constexpr const char* operation = "TaVekUtil_RemoveFile";

void removeInstalled(const ArchiveExtended& archive, const char* destination) {
    Ta::PathText path;
    Ta::Check(zPath_Combine(archive.path.c_str(), destination, path.data(), path.capacity()), operation);
    const zStatus deleted = archive.files->deleteFile(path.c_str());
    if (deleted == zStatus_NotFound) {
        std::cout << "Skipping File: " << path.c_str() << " - Not Found" << std::endl;
        return;
    }
    Ta::Check(deleted, operation);
}

void removeMember(const ArchiveExtended& archive, const char* destination) {
    Ta::PathText source;
    TaVekUtils_ScriptXmlRemoveAndGetSource(archive.archive.get(), destination, source.data(),
                                           source.capacity(), zAllocator_Application());
    // Without an entry the source is empty, a name that no member has: deleting it is a success.
    Ta::Check(zArchive_DeleteFile(archive.archive.get(), source.c_str()), operation);
}

bool isRemovable(const char* type) {
    return zStrCompareLower(type, "VekApp") == 0 || zStrCompareLower(type, "Resource") == 0;
}

}  // namespace

void TaVekUtil_RemovePackageFiles(ArchiveExtended archive, zHandle manifest, zXmlItem vekAppEntry,
                                  const char* platform, const char* packageName) {
    // Not cleared for each child: one without a type keeps that of the child before it.
    Ta::ShortText type;
    for (zXmlItem file = zXml_FirstChild(manifest, vekAppEntry); file != nullptr;
         file = zXml_NextSibling(manifest, file)) {
        static_cast<void>(zXml_AttrText(manifest, file, "type", type.data(), type.capacity()));
        if (!isRemovable(type.c_str())) continue;

        Ta::PathText destination;
        static_cast<void>(
            zXml_ChildText(manifest, file, "Destination", destination.data(), destination.capacity()));
        if (destination.empty()) {
            TaVekUtils_GetDefaultDestination(platform, packageName, destination.data(),
                                             destination.capacity());
        }
        TaVekUtil_RemoveFile(archive, destination.c_str());
    }
}

void TaVekUtil_RemoveFile(ArchiveExtended archive, const char* destination) {
    try {
        if (archive.isInstallation()) {
            removeInstalled(archive, destination);
        } else {
            removeMember(archive, destination);
        }
    } catch (...) {
        std::cerr << "TaVekUtil: Failed Removing file from upgrade package: " << destination << "."
                  << std::endl;
        throw;
    }
}
