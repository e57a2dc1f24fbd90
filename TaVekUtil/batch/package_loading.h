#pragma once

#include <cstddef>
#include <string>

#include "TaVekUtil/batch/build_config.h"
#include "platform/xml/xml.h"

/// The manifest at the top of every add-on package.
inline constexpr const char* packageManifestName = "vek_manifest.xml";

/// Loads every add-on package of `config.vekPkgsToLoad`, unpacking those that are tar files, and appends to
/// `config.addonPackages` those that have a file for `config.platform`. The format of the packages is told in
/// docs/addon-packages.md. Raises Ta::Exception, after one line on standard error.
void TaVekUtil_Load_VekPkg_Manifest(BuildConfig& config);

/// Unpacks the tar file `entry` beside itself, into a directory of its name without the last extension, and
/// puts into `directory` (of `capacity` characters) the directory that holds "vek_manifest.xml", "" when none
/// at the top does. An entry without ".tar" anywhere in it is no tar file: `directory` becomes "" and nothing
/// happens. Raises Ta::Exception; a failed tar run is first reported with its result on standard error.
void TaVekUtil_Untar_VekApp(const std::string& entry, char* directory, std::size_t capacity);

// The steps of both, for whoever unpacks elsewhere.

/// Whether the package entry `entry` is sent to tar: ".tar" anywhere in it does.
bool TaVekUtil_IsTarEntry(const std::string& entry);

/// Where the tar file `entry` is unpacked. Raises Ta::Exception.
Ta::PathText TaVekUtil_ExtractionDirectory(const std::string& entry);

/// Unpacks the tar file `entry` into `directory`, which is made when it is missing. Raises Ta::Exception.
void TaVekUtil_Unpack(const std::string& entry, const char* directory);

/// Loads the package manifest `manifestPath` of the package in `directory`, with its files for `platform`.
/// Raises Ta::Exception.
AddonPackage TaVekUtil_Load_Package(const char* manifestPath, const char* directory, const char* platform);

/// Appends to `package` the files of the platform element `element` of `manifest`, when its `name` is
/// `platform` or `platform` is "all"; otherwise the element is not looked into. `directory` is the package
/// directory. Raises Ta::Exception, after one line on standard error.
void TaVekUtil_Load_VekPkg_Files(const char* platform, zHandle manifest, zXmlItem element,
                                 const char* directory, AddonPackage& package);
