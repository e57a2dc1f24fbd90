#pragma once

#include <string>
#include <vector>

#include "TaVekUtil/edit/addon_package.h"
#include "platform/base/object.h"
#include "platform/base/text.h"

/// What one batch run is to do. The configuration file's format is told in docs/configuration.md.
struct BuildConfig {
    Ta::Text<256> outputPrefix;                ///< A changed archive is saved as this, a hyphen and its name.
    std::vector<std::string> stockPackages;    ///< Paths of the archives to process, in order.
    Ta::ShortText platform;                    ///< "linux_arm7", "linux_arm64", "ombix", "win" or "all".
    std::vector<std::string> vekPkgsToLoad;    ///< Add-on packages: tar files or directories.
    std::vector<std::string> vekPkgsToRemove;  ///< Names of packages to remove from every archive.
    std::vector<AddonPackage> addonPackages;   ///< The loaded packages (package_loading.h).
};

/// Fills `config`, whose platform is set already, from the parsed configuration document `document`. Without
/// stock packages in it those of the host software are taken (stock_packages.h).
///
/// Raises Ta::Exception, after one line on standard error. When there is no archive to process at all, the
/// process ends abnormally right after the line that says so.
void TaVekUtil_Load_Config(zHandle document, BuildConfig& config);

// The steps of it, each of which reads one element of the document into `config`. An element that may be
// missing leaves its list empty. They raise Ta::Exception without a word.
void TaVekUtil_Read_OutputPrefix(zHandle document, BuildConfig& config);
void TaVekUtil_Read_StockPackages(zHandle document, BuildConfig& config);
void TaVekUtil_Read_VekPkgsToLoad(zHandle document, BuildConfig& config);
void TaVekUtil_Read_VekPkgsToRemove(zHandle document, BuildConfig& config);
