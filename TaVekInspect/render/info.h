#pragma once

#include <ostream>

#include "TaVekInspect/model/upgrade.h"

/// What an upgrade is and holds: platform, versions, packages, script entries by controller, figures. As
/// text, and as a JSON document.
void printInfo(std::ostream& out, const Upgrade& upgrade);
void writeInfo(std::ostream& out, const Upgrade& upgrade);
