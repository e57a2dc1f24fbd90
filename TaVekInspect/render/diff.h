#pragma once

#include <ostream>

#include "TaVekInspect/model/difference.h"

/// What tells two upgrades apart; nothing when they are equal.
void printDifference(std::ostream& out, const Upgrade& before, const Upgrade& after,
                     const Difference& difference);
void writeDifference(std::ostream& out, const Upgrade& before, const Upgrade& after,
                     const Difference& difference);
