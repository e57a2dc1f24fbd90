#pragma once

#include <string>
#include <string_view>

#include "platform/xml/characters.h"
#include "platform/xml/fault.h"

namespace xml {

/// Reads the parts of XML that stand in several places: characters, references, comments, instructions. Each
/// function takes the place where its part begins and answers where it ends; what is not well-formed is
/// thrown as a Fault.
class Reader {
  public:
    /// For UTF-8 text with a zero byte behind it.
    explicit Reader(std::string_view text) : begin_(text.data()), end_(text.data() + text.size()) {}

    const char* begin() const { return begin_; }
    const char* end() const { return end_; }
    bool isEnd(const char* at) const { return at == end_; }
    bool startsWith(const char* at, std::string_view text) const {
        return static_cast<std::size_t>(end_ - at) >= text.size() &&
               std::string_view(at, text.size()) == text;
    }

    /// Refuses the document. A character at `place` that no document may hold is the worse fault and named
    /// instead.
    [[noreturn]] void fail(const char* place, std::string_view sentence,
                           zStatus status = zStatus_Malformed) const;

    /// One character, which must be one that XML allows.
    const char* character(const char* at) const;
    /// A name; without one the fault is "a name must follow `before`".
    const char* name(const char* at, std::string_view before) const;
    /// `&lt;`, `&#38;` and the like.
    const char* reference(const char* at) const;
    /// `<!-- ... -->`
    const char* comment(const char* at) const;
    /// `<?target ... ?>`
    const char* instruction(const char* at) const;
    /// `<![CDATA[ ... ]]>`
    const char* cdata(const char* at) const;

  private:
    [[noreturn]] void refuse(const char* place, std::string_view sentence, zStatus status) const;
    const char* characterReference(const char* at) const;

    const char* begin_;
    const char* end_;
};

/// What a reference stands for: `reference` is a valid one, from `&` to `;`.
char32_t resolve(std::string_view reference);

}  // namespace xml
