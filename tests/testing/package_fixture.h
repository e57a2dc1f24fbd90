#pragma once

#include <string>
#include <vector>

#include "TaVekUtil/edit/addon_package.h"
#include "tests/testing/scratch_directory.h"

namespace testing {

/// One file of a package that a test makes up.
struct MadeUpFile {
    std::string platform;
    std::string source;       ///< Relative to the package directory.
    std::string destination;  ///< Empty for the default.
    std::string type = "VekApp";
    std::string content = "content";
};

/// A package that a test makes up.
struct MadeUpPackage {
    std::string name;
    std::string beVersion = "*";
    std::vector<MadeUpFile> files = {};
};

/// The text of the package's "vek_manifest.xml": one platform element for each run of files of one platform.
std::string packageManifest(const MadeUpPackage& package);

/// Writes the package's files and its "vek_manifest.xml" into the directory `name`; answers its path.
std::string writePackage(const ScratchDirectory& scratch, const std::string& name,
                         const MadeUpPackage& package);

/// The package as loading would give it, its files written into the directory `name`.
AddonPackage loadedPackage(const ScratchDirectory& scratch, const std::string& name,
                           const MadeUpPackage& package);

}  // namespace testing
