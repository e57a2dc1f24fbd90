#pragma once

#include <string>
#include <vector>

#include "TaVekUtil/batch/build_config.h"

/// Processes every archive of `config.stockPackages` in order. The first failure ends the run, after one line
/// on standard error; archives saved before it stay. Raises Ta::Exception.
void TaVekUtil_ProcessStockPackages(const BuildConfig& config);

/// Removes the packages `names` from the archive `path`, adds `packages`, and when either changed anything
/// saves the archive with its manifest beside the input, under the output prefix of `config`; of an
/// installation directory the manifest file is written. Raises Ta::Exception, after one line on standard
/// error.
void TaVekUtil_ModifyVekPkgs(const std::vector<AddonPackage>& packages, const std::vector<std::string>& names,
                             const char* path, const BuildConfig& config);
