#pragma once

#include <string>
#include <vector>

/// The controller models of each sensor platform: they restrict script entries, and they tell an archive's
/// platform. Read-only; built before main.

/// Sensors of platform "linux_arm7".
extern const std::vector<std::string> Arm7ControllerNames;
/// Sensors of platform "linux_arm64".
extern const std::vector<std::string> Arm64ControllerNames;
/// Compute modules of platform "ombix".
extern const std::vector<std::string> OmbixControllerNames;
