#pragma once

#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_set>

#include "platform/base/allocator.h"
#include "platform/base/object.h"
#include "platform/xml/encoding.h"
#include "platform/xml/item.h"

namespace xml {

/// A block that goes back to the allocator it came from.
struct Release {
    const zAllocator* allocator;
    void operator()(char* block) const { zAllocator_Release(allocator, block); }
};
using Block = std::unique_ptr<char, Release>;

/// A document: its text, as it was read, the items that point into it, and an arena for what edits add.
/// Nothing in it moves or goes before the document does.
class Document final : public zObject {
  public:
    /// Either `startFresh` or `read` must follow.
    explicit Document(const zAllocator* allocator) : text_(nullptr, Release{allocator}) {}
    const char* kind() const override { return "XML document"; }

    /// Becomes an empty document in the style of fresh ones.
    void startFresh();
    /// Reads `size` bytes, behind which a zero byte stands. Throws Fault when they are no document.
    void read(Block bytes, std::size_t size);

    /// The item above the root: its content is all of the document, a byte order mark aside.
    Item& top() { return top_; }
    Item* root() { return top_.firstChild; }
    ItemPool& items() { return items_; }
    Encoding encoding() const { return encoding_; }
    /// The byte order mark, as UTF-8; empty when there is none.
    std::string_view mark() const { return mark_; }
    /// The first line end of the text, LF when it has none.
    std::string_view lineEnd();
    /// True when `item` is a living element of this document.
    bool holds(const Item* item) const { return items_.owns(item) && !item->isDead; }
    /// `name`, zero-terminated, for as long as the document lives.
    const char* internedName(std::string_view name);

    /// Copies `text` into the arena, a zero byte behind it; `capacity` bytes may be written there later on.
    std::string_view keep(std::string_view text, std::size_t capacity = 0);
    /// A new piece over `text`, which must live as long as the document.
    Piece* piece(std::string_view text);
    /// What is known of `item` beyond its text, begun when nothing is.
    Edit& edit(Item& item);
    /// The gap before `item`, and the one behind the last child of `item`, as pieces that may be changed.
    Gap& lead(Item& item);
    Gap& tail(Item& item);
    /// Notes that the bytes of `item`, and so those of everything around it, are no longer those of the text.
    static void touch(Item& item);

  private:
    void replaceText(std::string_view text);
    std::size_t readEncoding(Mark mark);

    struct NameHash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    Block text_;
    std::size_t size_ = 0;
    std::string_view mark_;
    std::string_view lineEnd_;
    Encoding encoding_ = Encoding::utf8;
    Item top_{};
    ItemPool items_;
    std::pmr::monotonic_buffer_resource arena_;
    std::unordered_set<std::string, NameHash, std::equal_to<>> names_;
};

/// The start tag of `item`, as an edit left it.
std::string_view startTag(const Item& item);
/// What the text has between the tags of `item`; all of it for a document's top.
std::string_view textContent(const Item& item);
/// What the text has before `item` and behind its last child. Holds only where no edit owns the gap.
std::string_view textLead(const Item& item);
std::string_view textTail(const Item& item);

inline bool ownsLead(const Item& item) {
    return item.edit != nullptr && item.edit->ownsLead;
}
inline bool ownsTail(const Item& item) {
    return item.edit != nullptr && item.edit->ownsTail;
}

/// Calls `use` with each stretch of the gap before `item`, or behind its last child.
template <typename Use>
void eachOfLead(const Item& item, Use use) {
    if (!ownsLead(item)) return use(textLead(item));
    for (const Piece* piece = item.edit->lead.first; piece != nullptr; piece = piece->next) use(piece->text);
}
template <typename Use>
void eachOfTail(const Item& item, Use use) {
    if (!ownsTail(item)) return use(textTail(item));
    for (const Piece* piece = item.edit->tail.first; piece != nullptr; piece = piece->next) use(piece->text);
}

}  // namespace xml
