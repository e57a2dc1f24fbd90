#include "TaVekUtil/archive/archive_extended.h"

#include "TaVekUtil/archive/archive_probes.h"
#include "TaVekUtil/archive/unified_manifest.h"
#include "platform/archive/archive.h"
#include "platform/base/failure.h"
#include "platform/base/file.h"
#include "platform/base/path.h"
#include "platform/base/text.h"
#include "platform/xml/xml.h"

void ArchiveExtended::Load(const char* archivePath) {
    path = archivePath;
    Ta::Check(zArchive_Construct(archive.out(), nullptr), "ArchiveExtended::Load");

    if (zArchive_Load(archive.get(), archivePath) == zStatus_Success) {
        platform = TaVekUtils_GetArchivePlatform(archive.get());
    } else {
        if (!isInstallationDirectory(path)) throw Ta::Exception("Invalid Archive Path: " + path);
        platform = "win";
    }

    if (isInstallation()) {
        TaVekUtils_GetUnifiedManifest(path, manifest);
        return;
    }
    Ta::Text<256> fileName;
    // Users know this failure under the manifest's name, which asks for the file name.
    Ta::Check(zPath_FileName(archivePath, fileName.data(), fileName.capacity()),
              "TaVekUtils_GetUnifiedManifest");
    TaVekUtils_GetUnifiedManifest(archive.get(), fileName.c_str(), manifest);
}

std::string ArchiveExtended::Version() const {
    Ta::Text<128> version;
    const zHandle document = manifest.get();
    Ta::Check(zXml_ChildText(document, zXml_Root(document), "BeVersion", version.data(), version.capacity()),
              "ArchiveExtended::Version");
    return version.c_str();
}

zStatus ArchiveExtended::CheckOutput(const char* output) const {
    if (!zFile_IsSame(path.c_str(), output)) return zStatus_Success;
    return failure::record(zStatus_BadArgument, std::string(output) + ": that is the archive itself");
}
