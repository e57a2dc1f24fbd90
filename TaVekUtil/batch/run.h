#pragma once

#include "platform/base/text.h"

/// The batch mode: reads the configuration file, loads the add-on packages, and processes every archive. A
/// relative `configFileName` is looked up beside the program. `platform` is a validated platform key or
/// "all".
///
/// Answers 0, or 1 after reporting a Ta::Exception on standard error.
int TaVekUtil_Run(const char* platform, const char* configFileName);

/// The path of the configuration file of that name: a relative one beside the program. Raises Ta::Exception.
Ta::PathText TaVekUtil_ConfigPath(const char* configFileName);
