#include "TaVekUtil/cli/extract_manifest.h"

#include <iostream>

#include "TaVekUtil/archive/archive_extended.h"
#include "platform/xml/xml.h"

int extractManifest(const char* archivePath, std::string outputName) {
    try {
        ArchiveExtended archive;
        archive.Load(archivePath);
        Ta::Check(archive.CheckOutput(outputName.c_str()), "extractManifest", 1329);
        Ta::Check(zXml_Save(archive.manifest.get(), outputName.c_str()), "extractManifest", 1329);
        std::cout << "Manifest saved at " << outputName << std::endl;
        return 0;
    } catch (const Ta::Exception& exception) {
        std::cerr << "TaVekUtil: Failed to extract manifest file. Error: " << exception.what() << std::endl;
        return 1;
    }
}
