#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "TaVekInspect/model/upgrade.h"
#include "TaVekInspect/plan/destinations.h"
#include "TaVekInspect/plan/imagined_files.h"
#include "TaVekInspect/plan/package_planner.h"
#include "TaVekInspect/plan/quiet.h"
#include "TaVekUtil/batch/build_config.h"

/// Does to one archive after the other what the run would do, with the tool's own operations, and notes what
/// comes of it. Nothing is saved; where the run would read what it has saved before, the planner does too.
class ArchivePlanner {
  public:
    ArchivePlanner(const BuildConfig& config, const PackagePlanner& packages,
                   const TemporaryDirectory& scratch)
        : config_(config), packages_(packages), scratch_(scratch) {}

    PlannedArchive plan(const std::string& path);

    /// True when the package `name` went into an archive so far.
    bool isInstalled(const std::string& name) const { return installed_.contains(name); }

  private:
    /// One archive while it is being worked on.
    struct Work {
        PlannedArchive result;
        ArchiveExtended archive;
        Upgrade before;
        bool isChanged = false;
        std::vector<std::string> merged;  // packages that would be recorded
        std::optional<Destinations> destinations;
    };

    bool open(Work& work, const std::string& path, Quiet& quiet);
    bool readVersion(Work& work);
    void checkPlatform(Work& work);
    void remove(Work& work);
    void removePackage(Work& work, const std::string& name);
    bool checkRemoval(Work& work, const RecordedPackage& package, const RecordedFile& file);
    void checkInstalledFile(Work& work, const std::string& subject, const std::string& destination);
    void add(Work& work);
    void addPackage(Work& work, const AddonPackage& package);
    void addFile(Work& work, const AddonPackage& package, const PackageFile& file);
    void noteOtherPlatform(Work& work, const AddonPackage& package, const PackageFile& file);
    void skip(Work& work, const AddonPackage& package, const PackageFile& file, const std::string& reason);
    void noteFile(Work& work, const AddonPackage& package, const PackageFile& file, bool isSkipped,
                  bool replacesFile);
    void merge(Work& work, const AddonPackage& package);
    void finish(Work& work);
    void save(Work& work);
    void checkMembers(Work& work);
    void checkOutput(Work& work, const std::string& output);
    void checkResult(Work& work);

    const BuildConfig& config_;
    const PackagePlanner& packages_;
    const TemporaryDirectory& scratch_;
    ImaginedFiles files_;
    std::map<std::string, ArchiveExtended> results_;  // by the path that the run would write, in one spelling
    std::set<std::string> installed_;
};
