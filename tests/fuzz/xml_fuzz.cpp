// Reads the input as a document. One that is accepted must be written back as the same bytes, and after
// random edits what is written must read as the very tree that was written. The edits follow from the input
// itself.

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/failure.h"
#include "tests/fuzz/require.h"
#include "tests/testing/xml_tree.h"

namespace {

using fuzz::require;
using testing::describeTree;
using testing::writtenBytes;

/// Numbers that follow from the input.
class Dice {
  public:
    explicit Dice(std::string_view seed) {
        for (const char byte : seed) roll(static_cast<unsigned char>(byte) + 1u);
    }
    std::size_t roll(std::size_t sides) {
        state_ = (state_ ^ sides) * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::size_t>((state_ >> 33) % sides);
    }

  private:
    std::uint64_t state_ = 1;
};

constexpr const char* names[] = {"a", "File", "xml:b", "\xC3\xA9", "1", "", "a b"};
constexpr const char* texts[] = {"",     "plain", " x ", "]]>",          "a<b>&\"'",         "\t\r\n\r",
                                 "\r\n", "\n ",   "]",   "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\x01",
                                 "\xFF"};

template <std::size_t count>
const char* pick(Dice& dice, const char* const (&from)[count]) {
    return from[dice.roll(count)];
}

/// Any living element.
zXmlItem pickItem(Dice& dice, zHandle document) {
    zXmlItem item = zXml_Root(document);
    while (item != nullptr && zXml_ChildCount(document, item) > 0 && dice.roll(4) != 0)
        item = zXml_ChildAt(document, item, dice.roll(zXml_ChildCount(document, item)));
    return item;
}

/// What was set must read back the same, unless it was refused, which is answered.
zStatus setAndRead(Dice& dice, zHandle document, zXmlItem item) {
    char buffer[64] = "kept";
    const char* text = pick(dice, texts);
    const char* name = pick(dice, names);
    if (dice.roll(2) == 0) {
        const zStatus status = zXml_SetAttrText(document, item, name, text);
        if (status != zStatus_Success) return status;
        require(zXml_AttrText(document, item, name, buffer, sizeof buffer) == zStatus_Success,
                "attribute lost");
        require(std::string_view(buffer) == text, "attribute reads otherwise than it was written");
    } else {
        const zStatus status = zXml_SetItemText(document, item, text);
        if (status != zStatus_Success) return status;
        require(zXml_ItemText(document, item, buffer, sizeof buffer) == zStatus_Success, "text lost");
        const bool isBlank = std::string_view(text).find_first_not_of(" \t\r\n") == std::string_view::npos;
        require(std::string_view(buffer) == (isBlank ? "" : text),
                "text reads otherwise than it was written");
    }
    return zStatus_Success;
}

/// An element that is added, and filled, and deleted again leaves the bytes as they were.
void addAndDelete(Dice& dice, zHandle document, zXmlItem parent) {
    const std::string before = writtenBytes(document);
    zXmlItem added = nullptr;
    const bool isCopied = dice.roll(3) == 0;
    zXmlItem place = isCopied && dice.roll(2) == 0 ? zXml_FirstChild(document, parent) : nullptr;
    const zStatus status =
        isCopied ? zXml_CopyItem(document, parent, place, document, pickItem(dice, document), &added)
                 : zXml_AddItem(document, parent, pick(dice, names), &added);
    if (status != zStatus_Success) return;
    static_cast<void>(setAndRead(dice, document, added));
    require(zXml_DeleteItem(document, added) == zStatus_Success, "an added element cannot be deleted");
    require(writtenBytes(document) == before, "adding and deleting left a trace");
    require(zXml_DeleteItem(document, added) == zStatus_BadArgument, "a dead element can be deleted");
}

zStatus edit(Dice& dice, zHandle document, bool isLarge) {
    zXmlItem item = pickItem(dice, document);
    // Copies of copies grow fast.
    switch (isLarge ? 2 : dice.roll(6)) {
        case 0:
            return zXml_AddItem(document, item, pick(dice, names), nullptr);
        case 1:
            if (item != nullptr) addAndDelete(dice, document, item);
            return zStatus_Success;
        case 2:
            if (item == zXml_Root(document) && dice.roll(8) != 0) return zStatus_Success;
            return zXml_DeleteItem(document, item);
        case 3: {
            zXmlItem before = dice.roll(2) == 0 ? zXml_FirstChild(document, item) : nullptr;
            return zXml_CopyItem(document, item, before, document, pickItem(dice, document), nullptr);
        }
        default:
            return item == nullptr ? zStatus_Success : setAndRead(dice, document, item);
    }
}

/// Makes an edit; one that is refused must leave no trace.
void change(Dice& dice, zHandle document) {
    const std::string before = writtenBytes(document);
    if (edit(dice, document, before.size() > 20'000) != zStatus_Success)
        require(writtenBytes(document) == before, "a refused edit left a trace");
}

void checkReread(zHandle document) {
    if (zXml_Root(document) == nullptr) return;
    const std::string written = writtenBytes(document);
    Ta::Object<zHandle> again;
    const zStatus status = zXml_LoadBytes(again.out(), written.data(), written.size(), nullptr);
    if (status != zStatus_Success)
        std::fprintf(stderr, "%s\n", std::string(failure::detailOf(status)).c_str());
    require(status == zStatus_Success, "what was written is not well-formed");
    require(describeTree(again.get()) == describeTree(document), "what was written says something else");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    Ta::Object<zHandle> document;
    const zStatus status = zXml_LoadBytes(document.out(), data, size, nullptr);
    if (status != zStatus_Success) {
        require(document.get() == nullptr && !failure::detailOf(status).empty(), "refused without a word");
        return 0;
    }
    require(writtenBytes(document.get()) == input, "an untouched document is written otherwise");

    Dice dice(input);
    const std::size_t edits = size > 4096 ? 4 : 12;
    for (std::size_t i = 0; i < edits; ++i) {
        change(dice, document.get());
        if (i % 4 == 3) checkReread(document.get());
    }
    return 0;
}
