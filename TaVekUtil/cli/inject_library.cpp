#include "TaVekUtil/cli/inject_library.h"

#include <iostream>

#include "TaVekUtil/cli/controller_names.h"
#include "TaVekUtil/edit/startup_script.h"
#include "platform/archive/archive.h"
#include "platform/base/path.h"
#include "platform/base/text.h"

namespace {

std::vector<std::string> controllersFor(const char* libraryPath) {
    Ta::PathText extension;
    Ta::Check(zPath_Extension(libraryPath, extension.data(), extension.capacity()),
              "TaVekUtil_GetArmControllerNames", 493);
    if (zStrEquals(extension.c_str(), "zext")) return Arm7ControllerNames;
    if (!zStrEquals(extension.c_str(), "so")) return {};
    std::vector<std::string> controllers = Arm64ControllerNames;
    controllers.insert(controllers.end(), OmbixControllerNames.begin(), OmbixControllerNames.end());
    return controllers;
}

void inject(const char* libraryPath, const char* archivePath) {
    constexpr const char* operation = "injectLibToArchiveFile";
    const std::vector<std::string> controllers = controllersFor(libraryPath);
    Ta::PathText fileName;
    Ta::PathText member;
    Ta::PathText entry;
    Ta::Check(zPath_FileName(libraryPath, fileName.data(), fileName.capacity()), operation, 1300);
    Ta::Check(zStrPrintf(member.data(), member.capacity(), "data/12345-vekapp%s", fileName.c_str()),
              operation, 1301);
    Ta::Check(zStrPrintf(entry.data(), entry.capacity(), "vekapp%s", fileName.c_str()), operation, 1302);

    Ta::Object<void*> archive;
    Ta::Check(zArchive_Construct(archive.out(), nullptr), operation, 1304);
    Ta::Check(zArchive_Load(archive.get(), archivePath), operation, 1305);
    TaVekUtil_InjectFile(libraryPath, member.c_str(), entry.c_str(), controllers, archive.get());
    Ta::Check(zArchive_Save(archive.get(), archivePath), operation, 1309);
}

}  // namespace

int injectLibToArchiveFile(const char* libraryPath, const char* archivePath) {
    try {
        inject(libraryPath, archivePath);
        return 0;
    } catch (const Ta::Exception& exception) {
        std::cerr << "TaVekUtil: Failed to inject library to archive. Error: " << exception.what()
                  << std::endl;
        return 1;
    }
}
