#pragma once

#include <string>

#include "platform/xml/document.h"

/// Where white space goes when elements come and go: docs/xml.md tells the rules.
namespace xml {

/// The bytes around a new element.
struct Place {
    Gap lead;                        ///< Goes before the element, from what stood there already.
    std::string_view indent;         ///< New white space, behind the lead.
    std::string_view closingIndent;  ///< New white space before the parent's end tag.
};

/// Makes room for a new child of `parent`: the last one, or the one before `before`. What it takes for the
/// place's lead it takes from the gap behind.
Place makePlace(Document& document, Item& parent, Item* before);

/// The white space that begins the line on which `item` stands first; false when something else stands
/// before it on its line. The root counts as standing at the margin, whatever is before it.
struct Line {
    bool isOwn = false;
    std::string spaces;
};
Line lineOf(const Item& item);

/// The line on which a new child of `parent` will stand: the last one, or the one before `before`.
Line newChildLine(Document& document, Item& parent, Item* before);

/// When `lead` and `behind`, the gaps around an element that goes, show it alone on its lines, cuts those
/// lines from both. `next` is the white space that an edit put behind `behind`.
struct Surroundings {
    Gap& lead;
    Gap& behind;
    std::string_view next;
    bool beginsDocument;  ///< Nothing stands before `lead`.
    bool endsDocument;    ///< Nothing stands behind `behind`.
};
void cutLines(const Surroundings& around);

}  // namespace xml
