#pragma once

#include <string>

#include "TaVekInspect/model/difference.h"

/// The difference of two upgrades as one HTML page that needs nothing else: no script, no font, no picture
/// from anywhere.
std::string htmlReport(const Upgrade& before, const Upgrade& after, const Difference& difference);
