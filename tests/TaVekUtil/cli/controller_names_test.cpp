#include "TaVekUtil/cli/controller_names.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

// Their order is that of the elements in script entries.
TEST(ControllerNames, areTheseInThisOrder) {
    EXPECT_THAT(Arm7ControllerNames, ElementsAre("R2", "R4", "R4-mc"));
    EXPECT_THAT(Arm64ControllerNames, ElementsAre("R6", "R8"));
    EXPECT_THAT(OmbixControllerNames, ElementsAre("TX2", "Xavier NX", "Orin NX", "AGX Orin"));
}

}  // namespace
