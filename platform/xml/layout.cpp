#include "platform/xml/layout.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/xml/characters.h"

namespace xml {
namespace {

constexpr std::string_view defaultStep = "  ";

/// How far the search for a line's beginning or end goes. White space on a line beyond that is no layout that
/// anybody wrote, and the search must not make edits slow.
constexpr std::size_t maxLineSpaces = 1024;
constexpr int maxLinePieces = 16;

bool isBreak(char byte) {
    return byte == '\n' || byte == '\r';
}

/// The size of the line break that ends `text`, or begins it; 0 when none does.
std::size_t breakAtEnd(std::string_view text) {
    if (text.ends_with("\r\n")) return 2;
    return !text.empty() && isBreak(text.back()) ? 1 : 0;
}
std::size_t breakAtFront(std::string_view text) {
    if (text.starts_with("\r\n")) return 2;
    return !text.empty() && isBreak(text.front()) ? 1 : 0;
}

std::size_t spacesAtEnd(std::string_view text) {
    std::size_t count = 0;
    while (count < text.size() && !isBreak(text[text.size() - 1 - count]) &&
           isSpace(text[text.size() - 1 - count]))
        ++count;
    return count;
}
std::size_t spacesAtFront(std::string_view text) {
    std::size_t count = 0;
    while (count < text.size() && !isBreak(text[count]) && isSpace(text[count])) ++count;
    return count;
}

/// The blanks next to an element on its line, and what they lead to.
struct LineSide {
    std::size_t spaces = 0;
    std::string_view lineBreak;  ///< Empty when none follows.
    bool isWhole = false;        ///< Nothing else is in the gap.
};

LineSide sideBefore(const Gap& gap) {
    LineSide side;
    int pieces = 0;
    for (const Piece* piece = gap.last; piece != nullptr; piece = piece->previous) {
        const std::size_t spaces = spacesAtEnd(piece->text);
        side.spaces += spaces;
        if (++pieces > maxLinePieces || side.spaces > maxLineSpaces) return side;
        const std::string_view rest = piece->text.substr(0, piece->text.size() - spaces);
        if (rest.empty()) continue;
        side.lineBreak = rest.substr(rest.size() - breakAtEnd(rest));
        return side;
    }
    side.isWhole = true;
    return side;
}

LineSide sideBehind(const Gap& gap) {
    LineSide side;
    int pieces = 0;
    for (const Piece* piece = gap.first; piece != nullptr; piece = piece->next) {
        const std::size_t spaces = spacesAtFront(piece->text);
        side.spaces += spaces;
        if (++pieces > maxLinePieces || side.spaces > maxLineSpaces) return side;
        const std::string_view rest = piece->text.substr(spaces);
        if (rest.empty()) continue;
        side.lineBreak = rest.substr(0, breakAtFront(rest));
        return side;
    }
    side.isWhole = true;
    return side;
}

/// The line that `text`, which stands right before an element, ends with.
Line lastLine(std::string_view text) {
    const std::size_t spaces = spacesAtEnd(text);
    const bool isOwn = spaces <= maxLineSpaces && breakAtEnd(text.substr(0, text.size() - spaces)) > 0;
    return {isOwn, std::string(isOwn ? text.substr(text.size() - spaces) : std::string_view())};
}

/// As lastLine for pieces, whose blanks may be spread over several: those of the last one are enough.
Line lastLine(const Gap& gap) {
    if (gap.empty()) return {};
    const LineSide side = sideBefore(gap);
    if (side.lineBreak.empty()) return {};
    const std::string_view last = gap.last->text;
    return {true, std::string(last.substr(last.size() - spacesAtEnd(last)))};
}

/// The white space by which the children of `parent` stand further in than itself.
std::string step(const Item& parent, const Line& line) {
    if (parent.parent->parent == nullptr) return std::string(defaultStep);
    const Line outer = lineOf(*parent.parent);
    if (!outer.isOwn || !line.spaces.starts_with(outer.spaces)) return std::string(defaultStep);
    return line.spaces.substr(outer.spaces.size());
}

struct Style {
    bool ownLine = false;
    std::string spaces;
    bool closes = false;  ///< The end tag goes on a line of its own, too.
};

/// The style of the first child of an element that has none yet.
Style firstChildStyle(Document& document, Item& parent) {
    const Gap& content = document.tail(parent);
    if (&parent == &document.top()) return {lastLine(content).isOwn, "", false};
    const Line line = lineOf(parent);
    if (!content.empty()) {
        // What stands there already, a comment or just a line break, shows the way.
        if (!lastLine(content).isOwn) return {};
        const std::string_view first = content.first->text;
        const std::string_view behindBreak = first.substr(breakAtFront(first));
        const std::size_t spaces = spacesAtFront(behindBreak);
        if (breakAtFront(first) > 0 && spaces < behindBreak.size() && behindBreak[spaces] == '<')
            return {true, std::string(behindBreak.substr(0, spaces)), false};
        return {true, line.spaces + step(parent, line), false};
    }
    if (!line.isOwn) return {};
    // Elements of one kind look alike: the one before shows how this kind holds its children.
    const Item* before = parent.before();
    if (before != nullptr && before->firstChild != nullptr && before->name() == parent.name()) {
        const Line childLine = lineOf(*before->firstChild);
        return {childLine.isOwn, childLine.spaces, childLine.isOwn};
    }
    return {true, line.spaces + step(parent, line), true};
}

Style styleFor(Document& document, Item& parent, Item* before) {
    if (parent.hasText) return {};
    const Item* sibling = before != nullptr ? before : parent.lastChild();
    if (sibling == nullptr) return firstChildStyle(document, parent);
    const Line line = lineOf(*sibling);
    return {line.isOwn, line.spaces, false};
}

/// Takes off `gap` its last line, from the line break on, when nothing but white space is on it.
Gap takeLastLine(Document& document, Gap& gap) {
    Gap line;
    if (gap.empty()) return line;
    const std::string_view last = gap.last->text;
    const std::size_t spaces = spacesAtEnd(last);
    const std::size_t lineBreak = breakAtEnd(last.substr(0, last.size() - spaces));
    if (lineBreak == 0 || spaces > maxLineSpaces) return line;
    line.push(document.piece(last.substr(last.size() - spaces - lineBreak)));
    gap.trimBack(spaces + lineBreak);
    return line;
}

}  // namespace

Line lineOf(const Item& item) {
    if (item.edit != nullptr && !item.edit->indent.empty()) return lastLine(item.edit->indent);
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): whoever owns a lead has an edit
    Line line = ownsLead(item) ? lastLine(item.edit->lead) : lastLine(textLead(item));
    if (item.parent->parent == nullptr) line.isOwn = true;
    return line;
}

Line newChildLine(Document& document, Item& parent, Item* before) {
    Style style = styleFor(document, parent, before);
    return {style.ownLine, std::move(style.spaces)};
}

Place makePlace(Document& document, Item& parent, Item* before) {
    const Style style = styleFor(document, parent, before);
    Gap& behind = before != nullptr ? document.lead(*before) : document.tail(parent);
    Place place;
    if (!style.ownLine) {
        place.lead.join(behind);
        return place;
    }
    const std::string lineEnd(document.lineEnd());
    place.indent = document.keep(lineEnd + style.spaces);
    if (style.closes) place.closingIndent = document.keep(lineEnd + lineOf(parent).spaces);
    Gap line = takeLastLine(document, behind);
    place.lead.join(behind);
    behind = line;
    return place;
}

void cutLines(const Surroundings& around) {
    LineSide behind = sideBehind(around.behind);
    const bool breakIsNew = behind.isWhole && breakAtFront(around.next) > 0;
    const bool endsDocument = behind.isWhole && around.endsDocument && around.next.empty();
    if (behind.lineBreak.empty() && !breakIsNew && !endsDocument) return;
    const LineSide before = sideBefore(around.lead);
    if (before.lineBreak.empty() && !(before.isWhole && around.beginsDocument)) return;

    // The line's own break goes with it. When that belongs to a neighbour, or to nobody, or when both are the
    // same bytes, it is the break before: the neighbour's indentation then stays in one piece with its break.
    const bool cutsBefore = behind.lineBreak.empty() || behind.lineBreak == before.lineBreak;
    const std::size_t lineBreak = behind.lineBreak.size();
    around.lead.trimBack(before.spaces + (cutsBefore ? before.lineBreak.size() : 0));
    around.behind.trimFront(behind.spaces + (cutsBefore ? 0 : lineBreak));
}

}  // namespace xml
