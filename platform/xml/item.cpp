#include "platform/xml/item.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "platform/xml/characters.h"

namespace xml {
namespace {

bool endsName(char byte) {
    return isSpace(byte) || byte == '/' || byte == '>';
}

}  // namespace

std::string_view Item::name() const {
    const char* end = text + 1;
    while (!endsName(*end)) ++end;
    return {text + 1, static_cast<std::size_t>(end - text - 1)};
}

bool Item::isNamed(std::string_view wanted) const {
    return wanted.size() + 3 <= size && std::memcmp(text + 1, wanted.data(), wanted.size()) == 0 &&
           endsName(text[1 + wanted.size()]);
}

void Item::insert(Item* child, Item* place) {
    child->parent = this;
    child->previous = place->previous;
    child->next = place;
    if (place == firstChild) {
        firstChild = child;
    } else {
        place->previous->next = child;
    }
    place->previous = child;
    ++childCount;
}

void Item::remove(Item* child) {
    if (child->next != nullptr) {
        child->next->previous = child->previous;
    } else {
        firstChild->previous = child->previous;
    }
    if (child == firstChild) {
        firstChild = child->next;
    } else {
        child->previous->next = child->next;
    }
    --childCount;
}

bool ItemPool::owns(const Item* item) const {
    const auto* address = reinterpret_cast<const std::byte*>(item);
    const auto chunk = std::upper_bound(
        chunks_.begin(), chunks_.end(), address,
        [](const std::byte* place, const Chunk& c) { return std::less<>()(place, c.memory.get()); });
    if (chunk == chunks_.begin()) return false;
    const std::byte* begin = std::prev(chunk)->memory.get();
    return std::less<>()(address, begin + std::prev(chunk)->count * sizeof(Item));
}

void ItemPool::grow() {
    // An eighth more each time: little is held in vain, and the chunks stay few.
    Chunk chunk;
    chunk.count = std::max<std::size_t>(capacity_ / 8, 64);
    chunk.memory.reset(new std::byte[chunk.count * sizeof(Item)]);
    auto* items = reinterpret_cast<Item*>(chunk.memory.get());
    const auto place = std::upper_bound(
        chunks_.begin(), chunks_.end(), chunk,
        [](const Chunk& a, const Chunk& b) { return std::less<>()(a.memory.get(), b.memory.get()); });
    const std::size_t count = chunk.count;
    chunks_.insert(place, std::move(chunk));
    free_ = items;
    end_ = items + count;
    capacity_ += count;
}

const char* startTagEnd(const char* tag) {
    for (;; ++tag) {
        if (*tag == '>') return tag + 1;
        if (*tag == '"' || *tag == '\'') tag = std::strchr(tag + 1, *tag);
    }
}

}  // namespace xml
