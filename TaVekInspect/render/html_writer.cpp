#include "TaVekInspect/render/html_writer.h"

#include "TaVekInspect/model/utf8.h"
#include "TaVekInspect/render/text.h"

namespace {

std::string_view escapeOf(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return {};
    }
}

}  // namespace

HtmlWriter& HtmlWriter::open(std::string_view name, std::string_view attributes) {
    html_.append("<").append(name);
    if (!attributes.empty()) html_.append(" ").append(attributes);
    html_ += '>';
    names_.emplace_back(name);
    return *this;
}

HtmlWriter& HtmlWriter::close() {
    html_.append("</").append(names_.back()).append(">");
    // Line ends between blocks, for whoever reads the source; inside of lines they would be seen.
    if (names_.back() != "span" && names_.back() != "code") html_ += '\n';
    names_.pop_back();
    return *this;
}

HtmlWriter& HtmlWriter::text(std::string_view text) {
    for (const char character : printable(validUtf8(text), "\t\n")) {
        const std::string_view escape = escapeOf(character);
        escape.empty() ? html_ += character : html_ += escape;
    }
    return *this;
}

HtmlWriter& HtmlWriter::element(std::string_view name, std::string_view text, std::string_view attributes) {
    return open(name, attributes).HtmlWriter::text(text).close();
}

HtmlWriter& HtmlWriter::markup(std::string_view markup) {
    html_ += markup;
    return *this;
}
