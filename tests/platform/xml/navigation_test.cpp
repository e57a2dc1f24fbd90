// Walking through documents.

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

constexpr const char* library =
    "<lib><shelf n='1'><book>A</book><book>B</book></shelf><!--c--><shelf "
    "n='2'><box><book>C</book></box></shelf>"
    "</lib>";

TEST(Root, isNullForAnEmptyDocument) {
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_Construct(document.out(), nullptr), zStatus_Success);
    EXPECT_EQ(zXml_Root(document.get()), nullptr);
    auto* item = reinterpret_cast<zXmlItem>(&document);
    EXPECT_EQ(zXml_FindRoot(document.get(), &item), zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), "the document has no root element");
    EXPECT_EQ(item, nullptr);
}

TEST(Root, isTheOneElement) {
    const auto document = parsed(library);
    zXmlItem item = nullptr;
    EXPECT_EQ(zXml_FindRoot(document.get(), &item), zStatus_Success);
    EXPECT_EQ(zXml_Root(document.get()), item);
    EXPECT_STREQ(zXml_ItemName(document.get(), item), "lib");
}

TEST(FindChild, takesTheFirstOfAName) {
    const auto document = parsed(library);
    zXmlItem root = zXml_Root(document.get());
    zXmlItem shelf = nullptr;
    ASSERT_EQ(zXml_FindChild(document.get(), root, "shelf", &shelf), zStatus_Success);
    EXPECT_EQ(valueOf(document, shelf, "n"), "1");
    zXmlItem book = nullptr;
    ASSERT_EQ(zXml_FindChild(document.get(), root, "shelf/book", &book), zStatus_Success);
    EXPECT_EQ(textOf(document, book), "A");
}

TEST(FindChild, startsAboveTheRootWithoutAParent) {
    const auto document = parsed(library);
    EXPECT_EQ(itemAt(document, "lib"), zXml_Root(document.get()));
    EXPECT_EQ(textOf(document, itemAt(document, "lib/shelf/book")), "A");
}

TEST(FindChild, answersNotFound) {
    const auto document = parsed(library);
    zXmlItem root = zXml_Root(document.get());
    for (const std::string path : {"book", "Shelf", "shel", "shelf2", "", "/", "shelf/", "/shelf",
                                   "shelf//book", "shelf/box", "shelf/book/x", "lib/shelf"}) {
        zXmlItem item = root;
        EXPECT_EQ(zXml_FindChild(document.get(), root, path.c_str(), &item), zStatus_NotFound) << path;
        EXPECT_EQ(failure::detailOf(zStatus_NotFound), "there is no element " + path);
        EXPECT_EQ(item, nullptr);
    }
    const auto other = parsed("<Manifest><VekApp/></Manifest>");
    zXmlItem item = nullptr;
    EXPECT_EQ(zXml_FindChild(other.get(), nullptr, "VekAppPackage/VekApp", &item), zStatus_NotFound);
    EXPECT_EQ(zXml_FindChild(other.get(), nullptr, "VekApp", &item), zStatus_NotFound);
}

TEST(FindChild, comparesNamesBeyondAscii) {
    const auto document = parsed("<a><\xC3\xA9/><\xC3\xA9\xC3\xA8 x='1'/></a>");
    EXPECT_EQ(valueOf(document, itemAt(document, "a/\xC3\xA9\xC3\xA8"), "x"), "1");
}

TEST(Siblings, areWalkedInDocumentOrder) {
    const auto document = parsed("<a>1<b/>2<!--3--><c><x/></c>4<d/></a>");
    std::string names;
    zXmlItem root = zXml_Root(document.get());
    for (zXmlItem item = zXml_FirstChild(document.get(), root); item != nullptr;
         item = zXml_NextSibling(document.get(), item))
        names += zXml_ItemName(document.get(), item);
    EXPECT_EQ(names, "bcd");
    EXPECT_EQ(zXml_NextSibling(document.get(), root), nullptr);
    EXPECT_EQ(zXml_FirstChild(document.get(), itemAt(document, "a/b")), nullptr);
}

TEST(ChildAt, findsEveryChildInAnyOrder) {
    std::string text = "<a>";
    constexpr std::size_t count = 100;
    for (std::size_t i = 0; i < count; ++i) text += "<n" + std::to_string(i) + "/>";
    const auto document = parsed(text + "</a>");
    zXmlItem root = zXml_Root(document.get());
    EXPECT_EQ(zXml_ChildCount(document.get(), root), count);
    for (std::size_t step : {1u, 99u, 37u, 51u, 3u}) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t index = i * step % count;
            ASSERT_EQ(zXml_ItemName(document.get(), zXml_ChildAt(document.get(), root, index)),
                      "n" + std::to_string(index));
        }
    }
    EXPECT_EQ(zXml_ChildAt(document.get(), root, count), nullptr);
    EXPECT_EQ(zXml_ChildAt(document.get(), root, std::size_t(-1)), nullptr);
    EXPECT_EQ(zXml_ChildAt(document.get(), zXml_FirstChild(document.get(), root), 0), nullptr);
    EXPECT_EQ(saved(document), text + "</a>") << "looking changes nothing";
}

TEST(ChildAt, staysRightThroughEdits) {
    const auto document = parsed("<a><n0/><n1/><n2/><n3/><n4/></a>");
    zXmlItem root = zXml_Root(document.get());
    const auto name = [&](std::size_t index) {
        zXmlItem item = zXml_ChildAt(document.get(), root, index);
        return std::string(item == nullptr ? "none" : zXml_ItemName(document.get(), item));
    };
    EXPECT_EQ(name(2), "n2");
    ASSERT_EQ(zXml_DeleteItem(document.get(), zXml_ChildAt(document.get(), root, 2)), zStatus_Success);
    EXPECT_EQ(name(2), "n3");
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/n0")), zStatus_Success);
    EXPECT_EQ(name(0) + name(1) + name(2) + name(3), "n1n3n4none");
    EXPECT_EQ(name(1), "n3");
    ASSERT_EQ(zXml_CopyItem(document.get(), root, itemAt(document, "a/n1"), document.get(),
                            itemAt(document, "a/n4"), nullptr),
              zStatus_Success);
    EXPECT_EQ(name(0) + name(1) + name(2) + name(3), "n4n1n3n4");
    added(document, root, "n9");
    EXPECT_EQ(name(4) + name(3) + name(2), "n9n4n3");
    ASSERT_EQ(zXml_DeleteItem(document.get(), zXml_ChildAt(document.get(), root, 4)), zStatus_Success);
    EXPECT_EQ(name(3) + name(4), "n4none");
}

TEST(ItemName, staysValid) {
    const auto document = parsed("<a><b/></a>");
    const char* name = zXml_ItemName(document.get(), itemAt(document, "a/b"));
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/b")), zStatus_Success);
    EXPECT_STREQ(name, "b");
    EXPECT_EQ(zXml_ItemName(document.get(), nullptr), nullptr);
}

}  // namespace
