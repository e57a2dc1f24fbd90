#include "platform/xml/gap.h"

#include <algorithm>

namespace xml {

void Gap::push(Piece* piece) {
    piece->previous = last;
    piece->next = nullptr;
    (last == nullptr ? first : last->next) = piece;
    last = piece;
}

void Gap::join(Gap& other) {
    if (other.empty()) return;
    other.first->previous = last;
    (last == nullptr ? first : last->next) = other.first;
    last = other.last;
    other = Gap();
}

void Gap::trimFront(std::size_t count) {
    while (count > 0 && first != nullptr) {
        if (count < first->text.size()) return first->text.remove_prefix(count);
        count -= first->text.size();
        first = first->next;
        (first == nullptr ? last : first->previous) = nullptr;
    }
}

void Gap::trimBack(std::size_t count) {
    while (count > 0 && last != nullptr) {
        if (count < last->text.size()) return last->text.remove_suffix(count);
        count -= last->text.size();
        last = last->previous;
        (last == nullptr ? first : last->next) = nullptr;
    }
}

Token nextToken(std::string_view& text) {
    TokenKind kind = TokenKind::text;
    std::size_t size = 0;
    if (text.front() != '<') {
        size = std::min(text.find('<'), text.size());
    } else if (text.starts_with("<![")) {
        kind = TokenKind::cdata;
        size = text.find("]]>") + 3;
    } else {
        kind = TokenKind::markup;
        // A comment's own beginning is no end: "<!-->" is none. A document type never stands between
        // elements.
        size = text.starts_with("<!--") ? text.find("-->", 4) + 3 : text.find("?>") + 2;
    }
    const Token token{kind, text.substr(0, size)};
    text.remove_prefix(size);
    return token;
}

}  // namespace xml
