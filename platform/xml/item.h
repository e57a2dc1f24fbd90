#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/xml/gap.h"

namespace xml {

struct Item;

/// What became of an element since it was read, and what walking it by index remembers. Only elements that
/// were touched have one.
struct Edit {
    std::string_view tag;         ///< The start tag, when it is no longer the one in the text.
    std::size_t tagCapacity = 0;  ///< Bytes at `tag` that may be overwritten.
    Gap lead;                     ///< What stands between the sibling before and the element ...
    bool ownsLead = false;        ///< ... when it is no longer what the text has there.
    Gap tail;                     ///< What stands between the last child and the end tag ...
    bool ownsTail = false;        ///< ... likewise.
    std::string_view
        indent;  ///< White space that came, behind `lead`, with an added element and goes with it.
    std::string_view closingIndent;  ///< White space before the end tag that came with the first added child.
    bool isAdded = false;

    Item* cursor = nullptr;  ///< The child last asked for by index, and
    std::size_t cursorIndex = 0;
};

/// An element. Its text lies in the document's text or, for added ones, in the document's arena:
///
///     \n  <File name="a" >...</File>
///     lead^text                     ^text + size
///
/// Leads and tails that no edit touched are not stored: they are what lies between the neighbours.
struct Item {
    const char* text;
    Item* parent;    ///< The document's top for the root, null for the top itself.
    Item* next;      ///< Null for the last child.
    Item* previous;  ///< For the first child: the last one.
    Item* firstChild;
    Edit* edit;
    std::uint32_t size;
    std::uint32_t childCount : 29;
    std::uint32_t
        hasText : 1;  ///< Holds text that is not white space alone, so that white space means something.
    std::uint32_t isDirty : 1;  ///< The element's bytes are no longer those at `text`.
    std::uint32_t isDead : 1;   ///< Deleted, or below a deleted one.

    std::string_view bytes() const { return {text, size}; }
    Item* lastChild() const { return firstChild == nullptr ? nullptr : firstChild->previous; }
    Item* before() const { return this == parent->firstChild ? nullptr : previous; }
    /// The name, as it stands in the start tag.
    std::string_view name() const;
    bool isNamed(std::string_view wanted) const;

    /// Puts `child`, which is alone, at the end or before the child `place`.
    void append(Item* child) {
        child->parent = this;
        if (firstChild == nullptr) {
            firstChild = child;
        } else {
            child->previous = firstChild->previous;
            child->previous->next = child;
        }
        firstChild->previous = child;
        ++childCount;
    }
    void insert(Item* child, Item* place);
    void remove(Item* child);
};

/// All items of a document, alive or deleted: they stay where they are until the document goes.
class ItemPool {
  public:
    /// A new item with nothing but its text.
    Item* make(const char* text) {
        if (free_ == end_) grow();
        return new (free_++) Item{text, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0, 0, 0, 0};
    }
    /// True when `item` points into the memory of this pool, whatever else the pointer may be: it is not
    /// looked at. So a pointer to no item's beginning would count, which nobody was ever given.
    bool owns(const Item* item) const;

  private:
    struct Chunk {
        std::unique_ptr<std::byte[]> memory;
        std::size_t count = 0;
    };
    void grow();

    std::vector<Chunk> chunks_;  ///< By address.
    Item* free_ = nullptr;
    Item* end_ = nullptr;
    std::size_t capacity_ = 0;
};

/// Behind the start tag that begins at `tag`.
const char* startTagEnd(const char* tag);

}  // namespace xml
