#pragma once

#include <string>
#include <vector>

#include "platform/base/object.h"
#include "platform/base/text.h"

/// One file of an add-on package.
struct PackageFile {
    Ta::ShortText platform;    ///< `name` of the platform element, cut to 31 characters.
    Ta::ShortText type;        ///< "Resource", in any letter case, has its directory made on "win".
    Ta::PathText source;       ///< Path relative to the package directory.
    Ta::PathText destination;  ///< Where it is installed; empty for the default destination.
    Ta::PathText path;         ///< The file on disk: the package directory and `source` combined.
};

/// An add-on package as loaded from its "vek_manifest.xml". Copies share the manifest document.
struct AddonPackage {
    Ta::ShortText beVersion;         ///< Host version the package was built for; "*" goes with any.
    Ta::Text<256> name;              ///< Up to 255 characters load; a unified manifest takes 127.
    std::vector<PackageFile> files;  ///< Of the selected platforms, in document order.
    Ta::Object<void*> manifest;
};
