#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/os/os.h"

namespace testing {

/// A Windows executable made by hand that holds version resources and nothing else. The fields are what a
/// test may want to be different; build() writes them down as they are, sense or not.
struct PeImage {
    struct Resource {
        std::uint32_t type = 16;
        std::uint32_t name = 1;
        std::uint32_t language = 0;
        os::FileVersion version{};
    };

    bool is64Bit = true;
    std::vector<Resource> resources{};
    std::uint32_t directoryCount = 16;
    bool emptySectionFirst = false;

    // Of every VS_VERSIONINFO block:
    std::uint32_t signature = 0xFEEF04BD;
    std::uint16_t valueLength = 52;

    std::string build() const;
};

/// Where in a built image things lie.
constexpr std::size_t peHeaderAt = 64;
constexpr std::size_t resourceSectionAt = 0x200;

}  // namespace testing
