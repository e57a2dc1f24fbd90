#include "tests/platform/xml/random_edits.h"

#include <gtest/gtest.h>

#include "platform/xml/characters.h"

namespace testing {
namespace {

/// An element on both sides.
struct Place {
    zXmlItem item;
    Element* model;
};

Place childOf(zHandle document, const Place& parent, std::size_t index) {
    return {zXml_ChildAt(document, parent.item, index), &parent.model->children[index]};
}

Place pick(RandomDocument& random, zHandle document, Element& root) {
    Place place{zXml_Root(document), &root};
    while (!place.model->children.empty() && !random.chance(4))
        place = childOf(document, place, random.roll(place.model->children.size()));
    return place;
}

void add(RandomDocument& random, zHandle document, const Place& parent, xml::Encoding encoding) {
    const std::string name = random.name(encoding);
    EXPECT_EQ(zXml_AddItem(document, parent.item, name.c_str(), nullptr), zStatus_Success);
    parent.model->children.push_back({name, {}, {}, {}});
}

void setText(RandomDocument& random, zHandle document, const Place& place) {
    place.model->text = random.text();
    EXPECT_EQ(zXml_SetItemText(document, place.item, place.model->text.c_str()), zStatus_Success);
}

void setAttribute(RandomDocument& random, zHandle document, const Place& place) {
    const std::string name = "n" + std::to_string(random.roll(6));
    const std::string value = random.text();
    EXPECT_EQ(zXml_SetAttrText(document, place.item, name.c_str(), value.c_str()), zStatus_Success);
    for (auto& [known, old] : place.model->attributes) {
        if (known != name) continue;
        old = value;
        return;
    }
    place.model->attributes.emplace_back(name, value);
}

void remove(RandomDocument& random, zHandle document, const Place& parent) {
    if (parent.model->children.empty()) return;
    // Next to text, a line break may go with the element; elsewhere it says nothing.
    if (parent.model->text.find('\n') != std::string::npos && !xml::isBlank(parent.model->text)) return;
    const std::size_t index = random.roll(parent.model->children.size());
    EXPECT_EQ(zXml_DeleteItem(document, childOf(document, parent, index).item), zStatus_Success);
    parent.model->children.erase(parent.model->children.begin() + static_cast<std::ptrdiff_t>(index));
}

void copy(RandomDocument& random, zHandle document, const Place& parent, Element& root) {
    const Place source = pick(random, document, root);
    if (describe(*source.model).size() > 2000) return;
    const Element copied = *source.model;
    std::vector<Element>& children = parent.model->children;
    const std::size_t index = random.roll(children.size() + 1);
    zXmlItem before = index < children.size() ? childOf(document, parent, index).item : nullptr;
    EXPECT_EQ(zXml_CopyItem(document, parent.item, before, document, source.item, nullptr), zStatus_Success);
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(index), copied);
}

}  // namespace

void editBoth(RandomDocument& random, zHandle document, Element& model, xml::Encoding encoding) {
    const Place place = pick(random, document, model);
    switch (random.roll(5)) {
        case 0:
            return add(random, document, place, encoding);
        case 1:
            return setText(random, document, place);
        case 2:
            return setAttribute(random, document, place);
        case 3:
            return remove(random, document, place);
        default:
            return copy(random, document, place, model);
    }
}

}  // namespace testing
