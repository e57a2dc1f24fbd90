#include "TaVekUtil/cli/extract_manifest.h"

#include <iostream>

#include "TaVekUtil/archive/archive_extended.h"
#include "platform/base/failure.h"
#include "platform/base/file.h"
#include "platform/xml/xml.h"

namespace {

zStatus save(const ArchiveExtended& archive, const std::string& outputName) {
    if (zFile_IsSame(archive.path.c_str(), outputName.c_str())) {
        return failure::record(zStatus_BadArgument, outputName + ": that is the archive itself");
    }
    return zXml_Save(archive.manifest.get(), outputName.c_str());
}

}  // namespace

int extractManifest(const char* archivePath, std::string outputName) {
    try {
        ArchiveExtended archive;
        archive.Load(archivePath);
        Ta::Check(save(archive, outputName), "extractManifest", 1329);
        std::cout << "Manifest saved at " << outputName << std::endl;
        return 0;
    } catch (const Ta::Exception& exception) {
        std::cerr << "TaVekUtil: Failed to extract manifest file. Error: " << exception.what() << std::endl;
        return 1;
    }
}
