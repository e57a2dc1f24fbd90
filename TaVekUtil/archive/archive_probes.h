#pragma once

#include <string>

#include "platform/base/object.h"

/// Probes that identify what `ArchiveExtended::Load` has opened.

/// The member that holds the start-up script.
inline constexpr const char* scriptMemberName = "script.xml";

/// The parsed start-up script of the loaded container `archive`. Raises Ta::Exception in the name of
/// `operation`.
Ta::Object<void*> parseScript(zHandle archive, const char* operation);

/// The sensor platform of the loaded container `archive`: "linux_arm7", "ombix" or "linux_arm64", tried in
/// this order. It is decided by the first controller model name that occurs anywhere in the text of
/// "script.xml", in a comment as well as in an entry. Raises Ta::Exception -999 "Could not determine
/// platform" when none does.
std::string TaVekUtils_GetArchivePlatform(zHandle archive);

/// The host software version that the loaded container `archive` carries: attribute `value` of the `Version`
/// child of the root of "script.xml", as it stands. Raises Ta::Exception, -984 "Could not retrieve Qor BE
/// version" when there is no such child.
std::string TaVekUtils_GetArchiveVersion(zHandle archive);

/// True when `path` is a directory in which the host software is installed. Raises Ta::Exception -999
/// "Path not found: " and the path when it names nothing.
bool isInstallationDirectory(std::string path);
