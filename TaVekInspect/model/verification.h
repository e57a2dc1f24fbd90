#pragma once

#include "TaVekInspect/model/progress.h"
#include "TaVekInspect/model/upgrade.h"

/// Decodes every member of `upgrade` and checks its size and checksum. One that cannot be decoded is a
/// warning. A step of `progress` is a member.
Findings verifyMembers(const Upgrade& upgrade, const Progress& progress);

/// Whether script, members and manifest of `upgrade` are in step, and what could not be read of them.
Findings verifyConsistency(const Upgrade& upgrade);
