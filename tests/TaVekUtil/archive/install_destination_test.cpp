#include "TaVekUtil/archive/install_destination.h"

#include <gtest/gtest.h>

#include "platform/base/text.h"
#include "tests/testing/raised.h"

namespace {

using testing::IsFinding;
using testing::IsLocated;
using testing::raised;

constexpr const char* operation = "TaVekUtils_GetDefaultDestination";

struct Destination {
    Ta::PathText buffer;

    void ask(const std::string& platform, const std::string& name) {
        TaVekUtils_GetDefaultDestination(platform.c_str(), name.c_str(), buffer.data(), buffer.capacity());
    }
};

TEST(DefaultDestination, liesInTheUserDirectoryOfSensors) {
    Destination destination;
    destination.ask("linux_arm7", "libfoo.so");
    EXPECT_STREQ(destination.buffer.c_str(), "/user/libfoo.so");
    destination.ask("linux_arm64", "libbar.so");
    EXPECT_STREQ(destination.buffer.c_str(), "/user/libbar.so");
}

TEST(DefaultDestination, isRefusedForComputeModulesWithThePathInTheBuffer) {
    Destination destination;
    const auto exception = raised([&] { destination.ask("ombix", "libfoo.so"); });
    EXPECT_THAT(exception, IsFinding(zStatus_Unestablished, Ta::Exception(zStatus_Unestablished).what()));
    EXPECT_STREQ(destination.buffer.c_str(), "/app_main/lib/linux_arm64/libfoo.so");
}

TEST(DefaultDestination, isNotSupportedOnWindows) {
    Destination destination;
    const auto exception = raised([&] { destination.ask("win", "libfoo.so"); });
    EXPECT_STREQ(exception.what(), "Default Destination for Windows Platform is Not Supported");
    EXPECT_TRUE(destination.buffer.empty());
}

TEST(DefaultDestination, isUnknownToEveryOtherPlatform) {
    for (const char* platform : {"LINUX_ARM7", "linux_arm7x", "linux_arm", "all", "Win", "Ombix", ""}) {
        Destination destination;
        const auto exception = raised([&] { destination.ask(platform, "libfoo.so"); });
        EXPECT_EQ(exception.status(), zStatus_Unestablished) << platform;
        EXPECT_EQ(exception.operation(), "") << platform;
        EXPECT_TRUE(destination.buffer.empty()) << platform;
    }
}

TEST(DefaultDestination, leavesTheBufferAloneOnPlatformsThatHaveNone) {
    for (const char* platform : {"win", "LINUX_ARM7", ""}) {
        char buffer[] = "before";
        raised([&] { TaVekUtils_GetDefaultDestination(platform, "libfoo.so", buffer, sizeof buffer); });
        EXPECT_STREQ(buffer, "before") << platform;
    }
}

TEST(DefaultDestination, keepsToTheRoomThatItIsGiven) {
    char buffer[] = "/user/abc, and more that must stay";
    TaVekUtils_GetDefaultDestination("linux_arm7", "xyz", buffer, sizeof "/user/xyz");
    EXPECT_STREQ(buffer, "/user/xyz");
    EXPECT_THAT(
        raised([&] { TaVekUtils_GetDefaultDestination("linux_arm7", "wxyz", buffer, sizeof "/user/xyz"); }),
        IsLocated(operation, zStatus_DoesNotFit));
    EXPECT_STREQ(buffer + sizeof "/user/xyz", " and more that must stay");
}

TEST(DefaultDestination, takesPathsOfUpTo511Characters) {
    Destination destination;
    const std::string fits(511 - std::string("/user/").size(), 'a');
    destination.ask("linux_arm7", fits);
    EXPECT_EQ(destination.buffer.c_str(), "/user/" + fits);
    EXPECT_THAT(raised([&] { destination.ask("linux_arm7", fits + 'a'); }),
                IsLocated(operation, zStatus_DoesNotFit));
    EXPECT_THAT(raised([&] { destination.ask("linux_arm64", fits + 'a'); }),
                IsLocated(operation, zStatus_DoesNotFit));
}

TEST(DefaultDestination, failsForAComputeModuleOnlyByLengthBeforeItIsRefused) {
    Destination destination;
    const std::string fits(511 - std::string("/app_main/lib/linux_arm64/").size(), 'a');
    EXPECT_THAT(raised([&] { destination.ask("ombix", fits); }).operation(), "");
    EXPECT_THAT(raised([&] { destination.ask("ombix", fits + 'a'); }),
                IsLocated(operation, zStatus_DoesNotFit));
}

}  // namespace
