#include "TaVekUtil/cli/controller_names.h"

const std::vector<std::string> Arm7ControllerNames{"R2", "R4", "R4-mc"};
const std::vector<std::string> Arm64ControllerNames{"R6", "R8"};
const std::vector<std::string> OmbixControllerNames{"TX2", "Xavier NX", "Orin NX", "AGX Orin"};
