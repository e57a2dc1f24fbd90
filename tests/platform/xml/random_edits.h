#pragma once

#include "platform/xml/xml.h"
#include "tests/platform/xml/random_document.h"

namespace testing {

/// Makes one drawn edit in `document` and the same in `model`, which say the same before and after. A wrong
/// answer fails the test.
void editBoth(RandomDocument& random, zHandle document, Element& model, xml::Encoding encoding);

}  // namespace testing
