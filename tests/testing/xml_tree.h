#pragma once

#include <string>

#include "platform/base/object.h"
#include "platform/xml/xml.h"

namespace testing {

/// The document's elements, one a line in document order: depth, name, attributes in their order, text; what
/// two documents have in common when they say the same.
std::string describeTree(zHandle document);

/// The document as it would be saved; "" when it cannot be.
std::string writtenBytes(zHandle document);

}  // namespace testing
