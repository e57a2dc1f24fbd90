#pragma once

#include <cstddef>
#include <functional>

#include "TaVekInspect/model/upgrade.h"

/// Called before each member is decoded: how many are done, of how many.
using Progress = std::function<void(std::size_t done, std::size_t count)>;

/// Decodes every member of `upgrade` and checks its size and checksum. One that cannot be decoded is a
/// warning.
Findings verifyMembers(const Upgrade& upgrade, const Progress& progress);

/// Whether script, members and manifest of `upgrade` are in step, and what could not be read of them.
Findings verifyConsistency(const Upgrade& upgrade);
