// How much memory documents take, and what is left of an operation for which there was not enough.

#include <functional>

#include "platform/base/text.h"
#include "tests/platform/xml/counted_memory.h"
#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

/// Allocations are seen and refused by operators new and delete of this program.
class Memory : public ::testing::Test {};
using Exhaustion = Memory;

struct Shape {
    const char* name;
    std::string text;
    std::size_t nodes;  ///< Items and attributes.
};

std::vector<Shape> shapes() {
    constexpr std::size_t many = 100'000;
    std::string attributes = "<a";
    for (std::size_t i = 0; i < many; ++i) attributes += " a" + std::to_string(i) + "=''";
    return {
        {"many children", "<a>" + repeated("<b/>", many) + "</a>", many + 1},
        {"deep nesting", repeated("<a>", many) + repeated("</a>", many), many},
        {"many attributes", attributes + "/>", many + 1},
        {"a long text", "<a>" + repeated("text ", many) + "</a>", 1},
        {"a long name", "<" + repeated("a", many) + "/>", 1},
        {"entries",
         "<a>" + repeated("<File name='b' source='c'><Or><Eq property='d'/></Or></File>\n", many / 10) +
             "</a>",
         6 * many / 10 + 1},
    };
}

TEST_F(Memory, isTheDocumentAndAtMost64BytesAnItemAndAttribute) {
    constexpr std::size_t ofADocument = 6000;  // however small it is
    for (const Shape& shape : shapes()) {
        const std::size_t before = memoryCount().held;
        memoryCount().peak = before;
        Ta::Object<zHandle> document;
        ASSERT_EQ(zXml_LoadBytes(document.out(), shape.text.data(), shape.text.size(), &countedAllocator),
                  zStatus_Success);
        const std::size_t bound = shape.text.size() + 64 * shape.nodes + ofADocument;
        EXPECT_LE(memoryCount().held - before, bound) << shape.name;
        EXPECT_LE(memoryCount().peak - before, bound) << shape.name << ", while it was read";
        EXPECT_GT(memoryCount().held - before, shape.text.size()) << "something was counted";
    }
}

TEST_F(Memory, forSavingIsTheDocumentOnceMore) {
    for (const Shape& shape : shapes()) {
        const auto document = parsed(shape.text);
        ASSERT_EQ(zXml_SetAttrText(document.get(), zXml_Root(document.get()), "new", "x"), zStatus_Success);
        const std::size_t before = memoryCount().held;
        memoryCount().peak = before;
        void* bytes = nullptr;
        std::size_t size = 0;
        ASSERT_EQ(zXml_SaveBytes(document.get(), &bytes, &size, &countedAllocator), zStatus_Success);
        zAllocator_Release(&countedAllocator, bytes);
        EXPECT_LE(memoryCount().peak - before, size + 1000) << shape.name;
    }
}

TEST_F(Memory, ofABrokenDocumentIsGivenBack) {
    const std::size_t before = memoryCount().held;
    for (const char* text : {"<a><b></a>", "<?xml version='1.0' encoding='l1'?><a>\xE9", "<a b='1' b='2'/>"})
        EXPECT_NE(faultOf(text), "accepted");
    static_cast<void>(failure::record(zStatus_Failure, ""));
    EXPECT_LE(memoryCount().held, before + 200) << "more than the last failure's detail is held";
}

/// The document that edits are tried on.
constexpr const char* subject =
    "<a>\r\n  <b x='1'>t<c/>u</b>\r\n  <d>]<e/>]></d>\r\n  <f><g/>\r\n<g/></f>\r\n</a>\r\n";

/// What memory may run out in: an operation on a document and the item along `path` of it.
struct Edit {
    const char* name;
    const char* path;
    std::function<zStatus(zHandle, zXmlItem)> run;
};

std::vector<Edit> edits() {
    const std::string longText(300, 'x');
    return {
        {"AddItem", "a", [](zHandle d, zXmlItem i) { return zXml_AddItem(d, i, "new", nullptr); }},
        {"AddItem, first child", "a/b/c",
         [](zHandle d, zXmlItem i) { return zXml_AddItem(d, i, "new", nullptr); }},
        {"SetItemText", "a/b", [](zHandle d, zXmlItem i) { return zXml_SetItemText(d, i, "<new>"); }},
        {"SetItemText, children", "a", [](zHandle d, zXmlItem i) { return zXml_SetItemText(d, i, "new"); }},
        {"SetItemText, clearing", "a/b", [](zHandle d, zXmlItem i) { return zXml_SetItemText(d, i, ""); }},
        {"SetAttrText", "a/b",
         [longText](zHandle d, zXmlItem i) { return zXml_SetAttrText(d, i, "x", longText.c_str()); }},
        {"SetAttrText, new", "a/d", [](zHandle d, zXmlItem i) { return zXml_SetAttrText(d, i, "new", "1"); }},
        {"DeleteItem", "a/b", [](zHandle d, zXmlItem i) { return zXml_DeleteItem(d, i); }},
        {"DeleteItem, joining brackets", "a/d/e",
         [](zHandle d, zXmlItem i) { return zXml_DeleteItem(d, i); }},
        {"DeleteItem, root", "a", [](zHandle d, zXmlItem i) { return zXml_DeleteItem(d, i); }},
        {"CopyItem", "a/b",
         [](zHandle d, zXmlItem i) { return zXml_CopyItem(d, i, nullptr, d, zXml_Root(d), nullptr); }},
        {"CopyItem, before", "a/f",
         [](zHandle d, zXmlItem i) {
             return zXml_CopyItem(d, i, zXml_FirstChild(d, i), d, zXml_Root(d), nullptr);
         }},
    };
}

TEST_F(Exhaustion, leavesTheDocumentAsItWas) {
    for (const Edit& edit : edits()) {
        std::size_t failures = 0;
        for (bool isDone = false; !isDone; ++failures) {
            const auto document = parsed(subject);
            zXmlItem item = itemAt(document, edit.path);
            failAfter(failures);
            const zStatus status = edit.run(document.get(), item);
            failNever();
            isDone = status == zStatus_Success;
            if (isDone) continue;
            ASSERT_EQ(status, zStatus_NoMemory) << edit.name;
            ASSERT_EQ(saved(document), subject) << edit.name << ", allocation " << failures;
            // The same edit goes well afterwards.
            ASSERT_EQ(edit.run(document.get(), item), zStatus_Success) << edit.name;
            const auto untroubled = parsed(subject);
            ASSERT_EQ(edit.run(untroubled.get(), itemAt(untroubled, edit.path)), zStatus_Success);
            ASSERT_EQ(writtenBytes(document.get()), writtenBytes(untroubled.get())) << edit.name;
        }
        EXPECT_GT(failures, 1u) << edit.name << " never ran out of memory";
    }
}

TEST_F(Exhaustion, isAStatusOfLoadingAndSaving) {
    const std::string text =
        "<?xml version='1.0' encoding='l1'?><a>" + repeated("<b x='\xE9'/>", 200) + "</a>";
    std::size_t failures = 0;
    for (zStatus status = zStatus_NoMemory; status != zStatus_Success; ++failures) {
        const std::size_t before = memoryCount().held;
        zHandle document = nullptr;
        failAfter(failures);
        status = zXml_LoadBytes(&document, text.data(), text.size(), &countedAllocator);
        void* bytes = nullptr;
        std::size_t size = 0;
        if (status == zStatus_Success) status = zXml_SaveBytes(document, &bytes, &size, &countedAllocator);
        failNever();
        ASSERT_TRUE(status == zStatus_Success || status == zStatus_NoMemory) << status;
        EXPECT_EQ(bytes != nullptr, status == zStatus_Success);
        zAllocator_Release(&countedAllocator, bytes);
        if (document != nullptr) {
            ASSERT_EQ(zObject_Destroy(document), zStatus_Success);
        }
        ASSERT_LE(memoryCount().held, before + 200);
    }
    EXPECT_GT(failures, 10u);
}

TEST_F(Exhaustion, doesNotDisturbReading) {
    const auto document = parsed(subject);
    zXmlItem root = zXml_Root(document.get());
    char buffer[32];
    failAfter(0);
    EXPECT_EQ(zXml_ChildCount(document.get(), root), 3u);
    zXmlItem second = zXml_ChildAt(document.get(), root, 1);
    EXPECT_EQ(second, zXml_NextSibling(document.get(), zXml_FirstChild(document.get(), root)));
    EXPECT_EQ(zXml_ItemName(document.get(), root), nullptr) << "nothing to keep the name in";
    EXPECT_EQ(
        zXml_AttrText(document.get(), zXml_FirstChild(document.get(), root), "x", buffer, sizeof buffer),
        zStatus_Success)
        << "short values need no memory";
    failNever();
    EXPECT_STREQ(buffer, "1");
    EXPECT_STREQ(zXml_ItemName(document.get(), second), "d");
}

}  // namespace
