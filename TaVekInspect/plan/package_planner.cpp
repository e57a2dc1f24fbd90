#include "TaVekInspect/plan/package_planner.h"

#include <algorithm>

#include "TaVekInspect/model/upgrade.h"
#include "TaVekInspect/plan/quiet.h"
#include "TaVekUtil/batch/package_loading.h"
#include "platform/base/directory.h"
#include "platform/base/path.h"
#include "platform/os/os.h"

namespace {

std::string combined(const std::string& directory, const std::string& name) {
    Ta::PathText path;
    Ta::Check(zPath_Combine(directory.c_str(), name.c_str(), path.data(), path.capacity()), "TaVekInspect");
    return path.c_str();
}

bool isFile(const std::string& path) {
    os::FileType type{};
    return !os::fileType(path, type) && type == os::FileType::regular;
}

}  // namespace

void PackagePlanner::load(const std::string& entry) {
    const Quiet quiet;
    try {
        if (TaVekUtil_IsTarEntry(entry)) {
            loadTar(entry);
        } else {
            loadDirectory(entry);
        }
    } catch (const Ta::Exception& exception) {
        addError(plan_.findings, "package entry \"" + entry + "\": " + asInRun(reasonOf(exception, "")));
    }
}

void PackagePlanner::loadDirectory(const std::string& entry) {
    BuildConfig config;
    static_cast<void>(zStrCopy(config.platform.data(), config.platform.capacity(), platform_.c_str()));
    config.vekPkgsToLoad = {entry};
    TaVekUtil_Load_VekPkg_Manifest(config);
    // A package without a file for the platform is not handed out.
    add(entry, config.addonPackages.empty() ? AddonPackage() : config.addonPackages.front());
}

void PackagePlanner::loadTar(const std::string& entry) {
    const std::string directory = TaVekUtil_ExtractionDirectory(entry).c_str();
    if (isSentInVain(entry)) return;
    if (isFile(directory)) {
        addError(plan_.findings,
                 "package entry \"" + entry + "\": " + directory + " is a file, no directory");
        return;
    }
    // Behind the number a letter, so that no place begins with the path of another (asInRun).
    unpacked_.push_back({directory, scratch_.path(std::to_string(unpacked_.size()) + 't')});
    const std::string place = unpacked_.back().place;
    TaVekUtil_Unpack(entry, place.c_str());

    // What an earlier run unpacked is still there, and tar leaves alone what it does not replace.
    const bool isInTar = isFile(combined(place, packageManifestName));
    const bool isThere = isInTar || isFile(combined(directory, packageManifestName));
    const std::string home = isThere ? directory : entry;
    add(entry, TaVekUtil_Load_Package(combined(isInTar ? place : home, packageManifestName).c_str(),
                                      home.c_str(), platform_.c_str()));
}

bool PackagePlanner::isSentInVain(const std::string& entry) {
    if (!zDirectory_Exists(entry.c_str())) return false;
    addError(plan_.findings, "package entry \"" + entry +
                                 "\" is a directory, but \".tar\" in it sends it to tar; call it otherwise");
    return true;
}

void PackagePlanner::add(const std::string& entry, AddonPackage package) {
    plan_.packages.push_back({entry, package.name.c_str(), package.beVersion.c_str(), package.files.size()});
    if (package.files.empty()) {
        addWarning(plan_.findings, "package entry \"" + entry + "\" has no file for platform " + platform_ +
                                       " and is left out");
        return;
    }
    checkPackage(package);
    packages_.push_back(std::move(package));
}

void PackagePlanner::checkPackage(const AddonPackage& package) {
    for (const PackageFile& file : package.files) {
        if (!leavesDirectory(file.source.c_str())) continue;
        addWarning(plan_.findings, std::string("package ") + package.name.c_str() + ": Source " +
                                       file.source.c_str() + " leaves the package's directory");
    }
    constexpr std::size_t mostCharacters = 127;
    if (zStrLength(package.name.c_str()) > mostCharacters) {
        addWarning(plan_.findings, std::string("package ") + package.name.c_str() +
                                       ": its name has more than 127 characters, so it cannot be recorded");
    }
}

PackageFile PackagePlanner::present(const PackageFile& file) const {
    PackageFile found = file;
    for (const Unpacked& unpacked : unpacked_) {
        Ta::PathText inRun, now;
        const bool fits = zPath_Combine(unpacked.directory.c_str(), file.source.c_str(), inRun.data(),
                                        inRun.capacity()) == zStatus_Success &&
                          zPath_Combine(unpacked.place.c_str(), file.source.c_str(), now.data(),
                                        now.capacity()) == zStatus_Success;
        if (fits && zStrEquals(inRun.c_str(), file.path.c_str()) && isFile(now.c_str())) {
            static_cast<void>(zStrCopy(found.path.data(), found.path.capacity(), now.c_str()));
        }
    }
    return found;
}

std::string PackagePlanner::asInRun(std::string message) const {
    for (const Unpacked& unpacked : unpacked_) {
        for (std::size_t at = 0; (at = message.find(unpacked.place, at)) != std::string::npos;) {
            message.replace(at, unpacked.place.size(), unpacked.directory);
            at += unpacked.directory.size();
        }
    }
    return message;
}

bool leavesDirectory(const std::string& path) {
    std::size_t begin = 0;
    while (begin <= path.size()) {
        const std::size_t end = std::min(path.find_first_of("/\\", begin), path.size());
        if (path.substr(begin, end - begin) == "..") return true;
        begin = end + 1;
    }
    return false;
}
