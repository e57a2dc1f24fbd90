#pragma once

#include <ostream>

#include "TaVekInspect/model/difference.h"

/// What tells two upgrades apart. As text, which is empty when they are equal, and as a JSON document.
void printDifference(std::ostream& out, const Upgrade& before, const Upgrade& after,
                     const Difference& difference);
void writeDifference(std::ostream& out, const Upgrade& before, const Upgrade& after,
                     const Difference& difference);
