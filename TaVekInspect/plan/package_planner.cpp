#include "TaVekInspect/plan/package_planner.h"

#include <algorithm>
#include <filesystem>

#include "TaVekInspect/model/upgrade.h"
#include "TaVekInspect/plan/destinations.h"
#include "TaVekInspect/plan/imagined_files.h"
#include "TaVekInspect/plan/quiet.h"
#include "TaVekInspect/plan/spelling.h"
#include "TaVekUtil/batch/package_loading.h"
#include "platform/base/directory.h"
#include "platform/base/failure.h"
#include "platform/base/path.h"
#include "platform/os/access.h"
#include "platform/os/os.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* operation = "TaVekInspect";

std::string combined(const std::string& directory, const std::string& name) {
    Ta::PathText path;
    Ta::Check(zPath_Combine(directory.c_str(), name.c_str(), path.data(), path.capacity()), operation);
    return path.c_str();
}

bool isFile(const std::string& path) {
    os::FileType type{};
    return !os::fileType(path, type) && type == os::FileType::regular;
}

/// Whether tar could write `target`, a directory or not.
zStatus checkUnpacked(const std::string& target, bool isDirectory) {
    os::FileType type{};
    Ta::PathText parent;
    if (const std::error_code error = os::fileType(target, type)) return failure::record(error, target);
    static_cast<void>(zPath_Directory(target.c_str(), parent.data(), parent.capacity()));
    if (!zDirectory_Exists(parent.c_str())) return zStatus_Success;  // it would be made
    if (type == os::FileType::directory) {
        if (isDirectory) return zStatus_Success;
        return failure::record(std::make_error_code(std::errc::is_a_directory), target);
    }
    if (os::mayReplace(target)) return zStatus_Success;
    return failure::record(std::make_error_code(std::errc::permission_denied), target);
}

/// Raises when tar could not put what lies in `place` into `directory`, where an earlier run may have left
/// something.
void checkUnpacking(const std::string& directory, const std::string& place) {
    Ta::Check(ImaginedFiles().createDirectory(directory.c_str()), operation);
    const fs::path root = std::u8string(place.begin(), place.end());
    std::error_code error;
    for (fs::recursive_directory_iterator at(root, error), end; !error && at != end; at.increment(error)) {
        const std::u8string below = at->path().lexically_relative(root).generic_u8string();
        std::error_code ignored;
        const bool isDirectory = at->symlink_status(ignored).type() == fs::file_type::directory;
        const std::string target = combined(directory, std::string(below.begin(), below.end()));
        Ta::Check(checkUnpacked(target, isDirectory), operation);
    }
}

void unpack(const std::string& entry, const std::string& place) {
    os::FileType type{};
    if (!os::fileType(entry, type) && type == os::FileType::absent) {
        const auto reason = std::make_error_code(std::errc::no_such_file_or_directory);
        Ta::Check(failure::record(reason, entry), operation);
    }
    try {
        TaVekUtil_Unpack(entry, place.c_str());
    } catch (const Ta::Exception& exception) {
        if (exception.status() != zStatus_Failure) throw;
        throw Ta::Exception("tar cannot unpack it");
    }
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
    // A directory that a tar file before it is unpacked to is there when the run comes to it.
    if (const Unpacked* unpacked = findUnpacked(entry)) {
        const std::string place = unpacked->place;
        unpacked_.push_back({entry, place});
        add(entry, TaVekUtil_Load_Package(combined(place, packageManifestName).c_str(), entry.c_str(),
                                          platform_.c_str()));
        return;
    }
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
    // Behind the number a letter, so that no place begins with the path of another (asInRun).
    unpacked_.push_back({directory, scratch_.path(std::to_string(unpacked_.size()) + 't')});
    const std::string place = unpacked_.back().place;
    unpack(entry, place);
    checkUnpacking(directory, place);

    // What an earlier run unpacked is still there, and tar leaves alone what it does not replace.
    const bool isInTar = isFile(combined(place, packageManifestName));
    const bool isThere = isInTar || isFile(combined(directory, packageManifestName));
    const std::string home = isThere ? directory : entry;
    add(entry, TaVekUtil_Load_Package(combined(isInTar ? place : home, packageManifestName).c_str(),
                                      home.c_str(), platform_.c_str()));
}

const PackagePlanner::Unpacked* PackagePlanner::findUnpacked(const std::string& directory) const {
    const std::string spelling = spellingOf(directory);
    const auto found = std::find_if(unpacked_.rbegin(), unpacked_.rend(), [&](const Unpacked& unpacked) {
        return spellingOf(unpacked.directory) == spelling;
    });
    return found == unpacked_.rend() ? nullptr : &*found;
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
