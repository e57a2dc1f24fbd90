#include "TaVekUtil/batch/run.h"

#include <iostream>

#include "TaVekUtil/batch/build_config.h"
#include "TaVekUtil/batch/package_loading.h"
#include "TaVekUtil/batch/process_archives.h"
#include "platform/base/directory.h"
#include "platform/base/path.h"
#include "platform/xml/xml.h"

namespace {

constexpr const char* operation = "TaVekUtil_Run";

void loadArguments(const char* platform, BuildConfig& config) {
    try {
        static_cast<void>(zStrCopy(config.platform.data(), config.platform.capacity(), platform));
    } catch (...) {
        std::cerr << "TaVekUtil: Failed to load arguments specified." << std::endl;
        throw;
    }
}

void runBatch(const char* platform, const char* configFileName) {
    BuildConfig config;
    Ta::Object<void*> document;
    const Ta::PathText path = TaVekUtil_ConfigPath(configFileName);
    Ta::Check(zXml_Load(document.out(), path.c_str(), nullptr), operation, 1268);
    loadArguments(platform, config);
    TaVekUtil_Load_Config(document.get(), config);
    TaVekUtil_Load_VekPkg_Manifest(config);
    TaVekUtil_ProcessStockPackages(config);
}

}  // namespace

int TaVekUtil_Run(const char* platform, const char* configFileName) {
    try {
        runBatch(platform, configFileName);
        return 0;
    } catch (const Ta::Exception& exception) {
        std::cerr << "TaVekUtil: Failed updating upgrade packages using configuration file: "
                  << configFileName << " Error: " << exception.what() << std::endl;
        return 1;
    }
}

Ta::PathText TaVekUtil_ConfigPath(const char* configFileName) {
    Ta::PathText path;
    if (zPath_IsAbsolute(configFileName)) {
        static_cast<void>(zStrCopy(path.data(), path.capacity(), configFileName));
        return path;
    }
    Ta::PathText programs;
    Ta::Check(zDirectory_Application(programs.data(), programs.capacity()), operation, 1265);
    Ta::Check(zPath_Combine(programs.c_str(), configFileName, path.data(), path.capacity()), operation, 1266);
    return path;
}
