#pragma once

#include "platform/xml/encoding.h"
#include "platform/xml/reader.h"

namespace xml {

/// The XML declaration at the beginning of a document.
struct Declaration {
    const char* end;            ///< Behind it; where the text begins when there is none.
    std::string_view encoding;  ///< As written, empty when it names none.
};
Declaration readDeclaration(const Reader& reader);

/// Reads `<!DOCTYPE ... >`, which begins at `at`, and answers where it ends. It is checked for its name,
/// identifiers, quotes, comments, instructions and brackets; nothing that it declares is taken from it.
const char* readDocumentType(const Reader& reader, const char* at);

}  // namespace xml
