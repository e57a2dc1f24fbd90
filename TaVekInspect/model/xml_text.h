#pragma once

#include <string>

#include "platform/xml/xml.h"

/// Texts of documents without the capacities that the tool's records put on them, so that a text that is too
/// long for the tool can be shown, and named as the fault that it is.

/// The value of the attribute `name`, "" when there is none.
std::string attributeOf(zHandle document, zXmlItem item, const char* name);
/// Whether `item` has the attribute `name`, be it empty.
bool hasAttribute(zHandle document, zXmlItem item, const char* name);

/// The text of the first child of `item` named `name`, "" when there is none.
std::string childTextOf(zHandle document, zXmlItem item, const char* name);
