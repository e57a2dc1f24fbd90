#pragma once

#include "TaVekInspect/commands/command.h"
#include "TaVekInspect/model/difference.h"

/// The two upgrades that "diff" and "report" look at, and what tells them apart.
struct Comparison {
    Upgrade before;
    Upgrade after;
    Difference difference;

    /// False when something could not be read.
    bool isComplete() const;
    /// 0 equal, 1 different, 2 not complete.
    int exitStatus() const;
};

/// Reads and compares the operands of `request`; what cannot be read is named on standard error.
Comparison compareOperands(const Request& request);
