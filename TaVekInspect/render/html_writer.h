#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Builds HTML text. Everything that comes from outside goes through text(): markup characters escaped,
/// control characters and bytes that are no UTF-8 replaced.
class HtmlWriter {
  public:
    /// Begins an element; `attributes` is markup of the program's own, such as `class="size"`.
    HtmlWriter& open(std::string_view name, std::string_view attributes = "");
    /// Ends the element begun last.
    HtmlWriter& close();

    HtmlWriter& text(std::string_view text);
    /// An element that holds a text.
    HtmlWriter& element(std::string_view name, std::string_view text, std::string_view attributes = "");
    /// Markup of the program's own, as it stands.
    HtmlWriter& markup(std::string_view markup);

    const std::string& html() const { return html_; }

  private:
    std::string html_;
    std::vector<std::string> names_;
};
