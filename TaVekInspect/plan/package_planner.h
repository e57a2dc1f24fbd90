#pragma once

#include <string>
#include <vector>

#include "TaVekInspect/plan/plan.h"
#include "TaVekInspect/plan/temporary_directory.h"
#include "TaVekUtil/edit/addon_package.h"

/// Loads the packages of a run as the tool would, but unpacks tar files into a temporary directory.
class PackagePlanner {
  public:
    PackagePlanner(const std::string& platform, const TemporaryDirectory& scratch, Plan& plan)
        : platform_(platform), scratch_(scratch), plan_(plan) {}

    /// Loads the package of the configuration's entry `entry`; what goes wrong is noted in the plan.
    void load(const std::string& entry);

    /// The packages that have a file for the platform. The paths of their files are those of the run.
    const std::vector<AddonPackage>& packages() const { return packages_; }

    /// `file` with the path where its content is now, when that is among what was unpacked.
    PackageFile present(const PackageFile& file) const;

    /// `message` with the paths of the run in the place of those of the temporary directory.
    std::string asInRun(std::string message) const;

  private:
    /// A tar file's content: where the run puts it, and where it is now.
    struct Unpacked {
        std::string directory;
        std::string place;
    };

    void loadDirectory(const std::string& entry);
    void loadTar(const std::string& entry);
    void add(const std::string& entry, AddonPackage package);
    void checkPackage(const AddonPackage& package);
    const Unpacked* findUnpacked(const std::string& directory) const;
    bool isSentInVain(const std::string& entry);

    std::string platform_;
    const TemporaryDirectory& scratch_;
    Plan& plan_;
    std::vector<AddonPackage> packages_;
    std::vector<Unpacked> unpacked_;
};
