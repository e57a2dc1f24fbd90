// Walking through documents.

#include <algorithm>

#include "platform/base/failure.h"
#include "platform/xml/operations.h"

namespace xml {

zStatus refuseDocument() {
    return failure::record(zStatus_BadArgument, "the handle is that of no XML document");
}

zStatus refuseItem() {
    return failure::record(zStatus_BadArgument, "the item is no living element of the document");
}

zStatus refuseNull(const char* what) {
    return failure::guarded(
        [&] { return failure::record(zStatus_BadArgument, std::string(what) + " must not be null"); });
}

Item* findChild(Item* parent, std::string_view path) {
    for (;;) {
        const std::size_t slash = path.find('/');
        const std::string_view name = path.substr(0, slash);
        Item* child = parent->firstChild;
        while (child != nullptr && (name.empty() || !child->isNamed(name))) child = child->next;
        if (child == nullptr || slash == std::string_view::npos) return child;
        parent = child;
        path.remove_prefix(slash + 1);
    }
}

namespace {

/// The child at `index`, found from whichever is nearest: the first, the last or the one last asked for.
Item* childAt(Item& parent, std::size_t index) {
    Item* item = parent.firstChild;
    std::size_t at = 0;
    const Edit* known = parent.edit;
    const auto distance = [&](std::size_t place) { return place < index ? index - place : place - index; };
    if (known != nullptr && known->cursor != nullptr && distance(known->cursorIndex) < index) {
        item = known->cursor;
        at = known->cursorIndex;
    }
    if (parent.childCount - 1 - index < distance(at)) {
        item = parent.lastChild();
        at = parent.childCount - 1;
    }
    for (; at < index; ++at) item = item->next;
    for (; at > index; --at) item = item->previous;
    return item;
}

}  // namespace
}  // namespace xml

using namespace xml;

zXmlItem zXml_Root(zHandle document) {
    Document* source = documentOf(document);
    return source == nullptr ? nullptr : source->root();
}

zStatus zXml_FindRoot(zHandle document, zXmlItem* root) {
    *root = nullptr;
    Document* source = documentOf(document);
    if (source == nullptr) return refuseDocument();
    *root = source->root();
    return *root != nullptr ? zStatus_Success
                            : failure::record(zStatus_NotFound, "the document has no root element");
}

zStatus zXml_FindChild(zHandle document, zXmlItem parent, const char* path, zXmlItem* item) {
    *item = nullptr;
    if (path == nullptr) return refuseNull("the path");
    Item* start = livingParent(document, parent);
    if (start == nullptr) return documentOf(document) == nullptr ? refuseDocument() : refuseItem();
    *item = findChild(start, path);
    if (*item != nullptr) return zStatus_Success;
    return failure::guarded(
        [&] { return failure::record(zStatus_NotFound, "there is no element " + std::string(path)); });
}

zXmlItem zXml_FirstChild(zHandle document, zXmlItem item) {
    const Item* parent = livingItem(document, item);
    return parent == nullptr ? nullptr : parent->firstChild;
}

zXmlItem zXml_NextSibling(zHandle document, zXmlItem item) {
    const Item* sibling = livingItem(document, item);
    return sibling == nullptr ? nullptr : sibling->next;
}

std::size_t zXml_ChildCount(zHandle document, zXmlItem item) {
    const Item* parent = livingItem(document, item);
    return parent == nullptr ? 0 : parent->childCount;
}

zXmlItem zXml_ChildAt(zHandle document, zXmlItem item, std::size_t index) {
    Item* parent = livingItem(document, item);
    if (parent == nullptr || index >= parent->childCount) return nullptr;
    Item* child = childAt(*parent, index);
    // Without memory to remember the place in, walking by index is slower, but goes on.
    static_cast<void>(failure::guarded([&] {
        Edit& known = documentOf(document)->edit(*parent);
        known.cursor = child;
        known.cursorIndex = index;
        return zStatus_Success;
    }));
    return child;
}

const char* zXml_ItemName(zHandle document, zXmlItem item) {
    const Item* named = livingItem(document, item);
    const char* name = nullptr;
    if (named == nullptr) return name;
    static_cast<void>(failure::guarded([&] {
        name = documentOf(document)->internedName(named->name());
        return zStatus_Success;
    }));
    return name;
}
