#pragma once

#include <string>

#include "platform/base/object.h"

namespace testing {

/// The document that `text` parses to; fails the test when it is none.
Ta::Object<void*> document(const std::string& text);

/// The document as it would be saved.
std::string documentText(zHandle document);

/// `xml` without what an equal document may write otherwise: the declaration, white space between tags, the
/// two forms of an empty element.
std::string compact(const std::string& xml);
/// The compact text of a document.
std::string compact(zHandle document);

}  // namespace testing
