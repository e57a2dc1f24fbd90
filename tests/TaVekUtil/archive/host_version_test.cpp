#include "TaVekUtil/archive/host_version.h"

#include <gtest/gtest.h>

#include "tests/platform/os/pe_image.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::IsFinding;
using testing::raised;
using testing::ScratchDirectory;

std::string versionOfHost(const os::FileVersion& version) {
    const ScratchDirectory scratch;
    testing::PeImage image;
    image.resources = {{.version = version}};
    scratch.write("bin/win64/TaQor.exe", image.build());
    return TaVekUtils_GetHostVersion(scratch.path());
}

TEST(HostVersion, hasFourDecimalFieldsWithoutLeadingZeros) {
    EXPECT_EQ(versionOfHost({6, 1, 2, 57}), "6.1.2.57");
    EXPECT_EQ(versionOfHost({10, 0, 0, 1}), "10.0.0.1");
    EXPECT_EQ(versionOfHost({1, 0, 0, 0}), "1.0.0.0");
    EXPECT_EQ(versionOfHost({65535, 256, 255, 65534}), "65535.256.255.65534");
}

TEST(HostVersion, cannotBeEstablishedWithoutVersionInformation) {
    const ScratchDirectory scratch;
    const auto refused = IsFinding(zStatus_NotFound, "TaQor version could not be established");
    EXPECT_THAT(raised([&] { TaVekUtils_GetHostVersion(scratch.path()); }), refused);
    scratch.write("bin/win64/TaQor.exe", "no executable");
    EXPECT_THAT(raised([&] { TaVekUtils_GetHostVersion(scratch.path()); }), refused);
    scratch.write("bin/win64/TaQor.exe", testing::PeImage().build());
    EXPECT_THAT(raised([&] { TaVekUtils_GetHostVersion(scratch.path()); }), refused);
}

TEST(HostVersion, takesADirectoryThatEndsInASeparator) {
    const ScratchDirectory scratch;
    testing::PeImage image;
    image.resources = {{.version = {1, 2, 3, 4}}};
    scratch.write("bin/win64/TaQor.exe", image.build());
    EXPECT_EQ(TaVekUtils_GetHostVersion(scratch.path() + "/"), "1.2.3.4");
    EXPECT_EQ(TaVekUtils_GetHostVersion(scratch.path() + "\\"), "1.2.3.4");
}

}  // namespace
