#include "TaVekUtil/edit/add_packages.h"

#include <iostream>
#include <string>

#include "TaVekUtil/archive/install_destination.h"
#include "TaVekUtil/archive/unified_manifest.h"
#include "TaVekUtil/cli/controller_names.h"
#include "TaVekUtil/edit/startup_script.h"
#include "TaVekUtil/edit/user_tools.h"
#include "platform/base/path.h"

namespace {

constexpr const char* operation = "TaVekUtils_AddPackages";

/// A sensor platform: the controllers its files are for, and what is said when one has been loaded.
struct SensorPlatform {
    const char* key;
    const std::vector<std::string>& controllers;
    const char* progress;
};

const SensorPlatform sensorPlatforms[] = {
    {"linux_arm7", Arm7ControllerNames, "TaVekUtil:    - Loaded file for Linux_Arm7 Sensor: "},
    {"ombix", OmbixControllerNames, "TaVekUtil:    - Loaded file for Linux Arm64 Ombix: "},
    {"linux_arm64", Arm64ControllerNames, "TaVekUtil:    - Loaded file for Linux Arm64 Sensor: "},
};

const SensorPlatform* findSensorPlatform(const char* key) {
    for (const SensorPlatform& platform : sensorPlatforms) {
        if (zStrEquals(platform.key, key)) return &platform;
    }
    return nullptr;
}

/// Makes the directory of a resource below the installation directory. Other files do without theirs.
void createResourceDirectory(const ArchiveExtended& archive, const Installation& plan) {
    Ta::Text<256> target;
    Ta::Text<256> directory;
    Ta::Check(zPath_Combine(archive.path.c_str(), plan.destination.c_str(), target.data(), target.capacity()),
              operation);
    Ta::Check(zPath_Directory(target.c_str(), directory.data(), directory.capacity()), operation);
    if (archive.files->findDirectory(directory.c_str()) == zStatus_Success) return;
    Ta::Check(archive.files->createDirectory(directory.c_str()), operation);
}

}  // namespace

bool TaVekUtils_FitsVersion(const ArchiveExtended& archive, const AddonPackage& package) {
    const std::string version = archive.Version();
    if (zStrEquals(package.beVersion.c_str(), "*") || version == package.beVersion.c_str()) return true;
    std::cerr << "TaVekUtil: ERROR - Version for Upgrade package != Vek Package " << std::endl;
    std::cerr << "TaVekUtil: ERROR - " << version << " != " << package.name.c_str() << "("
              << package.beVersion.c_str() << ")" << std::endl;
    return false;
}

Installation TaVekUtils_PlanInstallation(const PackageFile& file) {
    Installation plan;
    Ta::PathText name;
    Ta::Check(zStrCopy(plan.path.data(), plan.path.capacity(), file.path.c_str()), operation);
    Ta::Check(zPath_FileName(plan.path.c_str(), name.data(), name.capacity()), operation);
    Ta::Check(zStrPrintf(plan.member.data(), plan.member.capacity(), "data/12345-%s", name.c_str()),
              operation);
    Ta::Check(zStrCopy(plan.destination.data(), plan.destination.capacity(), file.destination.c_str()),
              operation);
    if (plan.destination.empty()) {
        TaVekUtils_GetDefaultDestination(file.platform.c_str(), name.c_str(), plan.destination.data(),
                                         plan.destination.capacity());
    }
    return plan;
}

bool TaVekUtils_InstallFile(const ArchiveExtended& archive, const PackageFile& file) {
    // A file platform that only begins with the archive's passes here, on purpose. Below it finds no place in
    // a sensor's archive; into an installation directory it is copied like any other.
    const std::size_t length = archive.platform.size();
    if (zStrCompareN(archive.platform.c_str(), file.platform.c_str(), length) != 0) return false;

    const Installation plan = TaVekUtils_PlanInstallation(file);
    if (zStrCompareLower(file.type.c_str(), "Resource") == 0 && archive.isInstallation()) {
        createResourceDirectory(archive, plan);
    }
    if (const SensorPlatform* sensor = findSensorPlatform(file.platform.c_str())) {
        TaVekUtil_InjectFile(plan.path.c_str(), plan.member.c_str(), plan.destination.c_str(),
                             sensor->controllers, archive.archive.get());
        std::cout << sensor->progress << plan.path.c_str() << std::endl;
        return true;
    }
    if (!archive.isInstallation()) return false;
    TaVekUtil_InjectFile(plan.path.c_str(), plan.destination.c_str(), archive.path.c_str(), *archive.files);
    return true;
}

int TaVekUtils_AddPackages(ArchiveExtended archive, const std::vector<AddonPackage>& packages) {
    int installed = 0;
    for (const AddonPackage& package : packages) {
        if (!TaVekUtils_FitsVersion(archive, package)) continue;
        for (const PackageFile& file : package.files) {
            if (TaVekUtils_InstallFile(archive, file)) installed = 1;
        }
        // Last, so that the manifest names only packages whose files went in; and for each package, so that
        // one without a file for this platform is recorded too.
        Ta::Check(
            TaVekUtils_MergeVekApp(package.manifest.get(), archive.manifest.get(), archive.platform.c_str()),
            operation);
    }
    return installed;
}
