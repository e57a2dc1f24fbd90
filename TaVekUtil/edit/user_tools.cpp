#include "TaVekUtil/edit/user_tools.h"

#include <iostream>

#include "platform/base/exception.h"
#include "platform/base/path.h"
#include "platform/base/text.h"

namespace {

void copyFile(const char* filePath, const char* destination, const char* installDirectory,
              InstallationFiles& files) {
    constexpr const char* operation = "TaVekUtil_InjectFile";
    Ta::PathText target;
    Ta::PathText directory;
    Ta::Check(zPath_Combine(installDirectory, destination, target.data(), target.capacity()), operation);
    Ta::Check(zPath_Directory(target.c_str(), directory.data(), directory.capacity()), operation);

    const zStatus found = files.findDirectory(directory.c_str());
    if (found == zStatus_NotFound) {
        std::cout << "Directory does not exists (\"" << target.c_str() << "\"), skipping file." << std::endl;
        return;
    }
    Ta::Check(found, operation);
    Ta::Check(files.copyFile(filePath, target.c_str()), operation);
    std::cout << "TaVekUtil:    - Loaded file for Windows: " << destination << std::endl;
}

}  // namespace

void TaVekUtil_InjectFile(const char* filePath, const char* destination, const char* installDirectory,
                          InstallationFiles& files) {
    try {
        copyFile(filePath, destination, installDirectory, files);
    } catch (const std::exception& exception) {
        std::cerr << "TaVekUtil: Failed injecting files into User Tools package: " << exception.what()
                  << std::endl;
        throw;
    }
}
