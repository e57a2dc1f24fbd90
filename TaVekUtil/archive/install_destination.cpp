#include "TaVekUtil/archive/install_destination.h"

#include "platform/base/exception.h"
#include "platform/base/text.h"

void TaVekUtils_GetDefaultDestination(const char* platform, const char* name, char* buffer,
                                      std::size_t capacity) {
    constexpr const char* operation = "TaVekUtils_GetDefaultDestination";
    if (zStrEquals(platform, "ombix")) {
        // No return here: compute modules have no default destination that may be used, so the call goes on
        // to the refusal at the end, with the path in the buffer.
        Ta::Check(zStrPrintf(buffer, capacity, "/app_main/lib/linux_arm64/%s", name), operation);
    }
    if (zStrEquals(platform, "linux_arm64") || zStrEquals(platform, "linux_arm7")) {
        Ta::Check(zStrPrintf(buffer, capacity, "/user/%s", name), operation);
        return;
    }
    if (zStrEquals(platform, "win")) {
        throw Ta::Exception("Default Destination for Windows Platform is Not Supported");
    }
    throw Ta::Exception(zStatus_Unestablished);
}
