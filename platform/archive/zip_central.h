#pragma once

#include <cstdint>
#include <vector>

#include "platform/archive/zip_extra.h"

namespace zip {

/// Changes the central header `header`, whose extra field is `field` taken apart, so that it points to
/// `localOffset`. Everything else stays as it is, unless the offset needs a ZIP64 record it has no place in:
/// then that record is added or made longer. False when the extra field has no room for it.
bool moveCentral(std::vector<std::uint8_t>& header, const ExtraField& field, std::uint64_t localOffset);

}  // namespace zip
