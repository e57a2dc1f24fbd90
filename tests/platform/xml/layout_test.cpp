// Where white space goes when elements come and go.

#include "platform/xml/layout.h"

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

/// `before` with a new last child `new` in the element along `path`.
std::string withNew(std::string_view before, const char* path) {
    const auto document = parsed(before);
    added(document, itemAt(document, path), "new");
    return saved(document);
}

TEST(Layout, indentsAsTheSiblingBefore) {
    EXPECT_EQ(withNew("<a>\n  <b/>\n</a>", "a"), "<a>\n  <b/>\n  <new/>\n</a>");
    EXPECT_EQ(withNew("<a>\n\t<b/>\n</a>", "a"), "<a>\n\t<b/>\n\t<new/>\n</a>");
    EXPECT_EQ(withNew("<a>\n      <b/>\n   <c/>\n</a>", "a"), "<a>\n      <b/>\n   <c/>\n   <new/>\n</a>");
    EXPECT_EQ(withNew("<a>\n<b/>\n</a>", "a"), "<a>\n<b/>\n<new/>\n</a>");
    EXPECT_EQ(withNew("<a>\n  <b/></a>", "a"), "<a>\n  <b/>\n  <new/></a>");
    EXPECT_EQ(withNew("<a>\n  <b/>\n  <!--c-->\n</a>", "a"), "<a>\n  <b/>\n  <!--c-->\n  <new/>\n</a>");
    EXPECT_EQ(withNew("<a>\n  <b/>\n\n</a>", "a"), "<a>\n  <b/>\n\n  <new/>\n</a>");
}

TEST(Layout, staysOnTheLineOfASiblingThatDoes) {
    EXPECT_EQ(withNew("<a><b/></a>", "a"), "<a><b/><new/></a>");
    EXPECT_EQ(withNew("<a> <b/> </a>", "a"), "<a> <b/> <new/></a>");
    EXPECT_EQ(withNew("<a>\n  <b/><c/>\n</a>", "a"), "<a>\n  <b/><c/>\n<new/></a>");
}

TEST(Layout, takesTheLineEndsOfTheDocument) {
    EXPECT_EQ(withNew("<a>\r\n  <b/>\r\n</a>", "a"), "<a>\r\n  <b/>\r\n  <new/>\r\n</a>");
    EXPECT_EQ(withNew("<a>\r  <b/>\r</a>", "a"), "<a>\r  <b/>\r  <new/>\r</a>");
    EXPECT_EQ(withNew("<?xml version='1.0'?>\r\n<a/>", "a"),
              "<?xml version='1.0'?>\r\n<a>\r\n  <new/>\r\n</a>");
    EXPECT_EQ(withNew("<a/>", "a"), "<a>\n  <new/>\n</a>");
}

TEST(Layout, addsNoWhiteSpaceToText) {
    EXPECT_EQ(withNew("<a>text</a>", "a"), "<a>text<new/></a>");
    EXPECT_EQ(withNew("<a>\n  text\n</a>", "a"), "<a>\n  text\n<new/></a>");
    EXPECT_EQ(withNew("<a>\n  <b/>\n  text\n</a>", "a"), "<a>\n  <b/>\n  text\n<new/></a>");
    EXPECT_EQ(withNew("<a><![CDATA[ ]]></a>", "a"), "<a><![CDATA[ ]]><new/></a>");
    EXPECT_EQ(withNew("<a>&#32;</a>", "a"), "<a>&#32;<new/></a>");
}

TEST(Layout, indentsAFirstChildByTheStepOfItsDocument) {
    EXPECT_EQ(withNew("<a>\n  <b/>\n</a>", "a/b"), "<a>\n  <b>\n    <new/>\n  </b>\n</a>");
    EXPECT_EQ(withNew("<a>\n\t<b/>\n</a>", "a/b"), "<a>\n\t<b>\n\t\t<new/>\n\t</b>\n</a>");
    EXPECT_EQ(withNew("<a>\n    <b></b>\n</a>", "a/b"), "<a>\n    <b>\n        <new/>\n    </b>\n</a>");
    EXPECT_EQ(withNew("<a>\n    <b>\n    </b>\n</a>", "a/b"), "<a>\n    <b>\n        <new/>\n    </b>\n</a>");
    EXPECT_EQ(withNew("<a><b/></a>", "a/b"), "<a><b><new/></b></a>");
    EXPECT_EQ(withNew("<a>\n   <b>\n      <c/>\n   </b>\n</a>", "a/b/c"),
              "<a>\n   <b>\n      <c>\n         <new/>\n      </c>\n   </b>\n</a>");
}

TEST(Layout, followsACommentThatStandsThere) {
    EXPECT_EQ(withNew("<a>\n    <!--c-->\n</a>", "a"), "<a>\n    <!--c-->\n    <new/>\n</a>");
    EXPECT_EQ(withNew("<a><!--c--></a>", "a"), "<a><!--c--><new/></a>");
    EXPECT_EQ(withNew("<a>\n</a>", "a"), "<a>\n  <new/>\n</a>");
}

TEST(Layout, followsTheSiblingOfTheSameKind) {
    EXPECT_EQ(withNew("<a>\n  <b><c/></b>\n  <b/>\n</a>", "a/b"), "<a>\n  <b><c/><new/></b>\n  <b/>\n</a>");
    const auto document = parsed("<a>\n  <b><c/></b>\n  <b/>\n  <d/>\n</a>");
    zXmlItem b = zXml_ChildAt(document.get(), zXml_Root(document.get()), 1);
    added(document, b, "new");
    EXPECT_EQ(saved(document), "<a>\n  <b><c/></b>\n  <b><new/></b>\n  <d/>\n</a>");
}

TEST(Layout, ofAFreshDocumentIsTwoSpacesAndLineFeeds) {
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_Construct(document.out(), nullptr), zStatus_Success);
    zXmlItem root = added(document, nullptr, "a");
    zXmlItem b = added(document, root, "b");
    ASSERT_EQ(zXml_SetItemText(document.get(), added(document, b, "c"), "x"), zStatus_Success);
    added(document, b, "c");
    added(document, root, "d");
    EXPECT_EQ(saved(document),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\n  <b>\n    <c>x</c>\n    <c/>\n  </b>\n  "
              "<d/>\n</a>\n");
}

TEST(Layout, survivesDeletingTheNeighbours) {
    const auto document = parsed("<a>\n  <b/>\n</a>\n");
    zXmlItem root = zXml_Root(document.get());
    added(document, root, "c");
    added(document, root, "d");
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/b")), zStatus_Success);
    EXPECT_EQ(saved(document), "<a>\n  <c/>\n  <d/>\n</a>\n");
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/c")), zStatus_Success);
    EXPECT_EQ(saved(document), "<a>\n  <d/>\n</a>\n");
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/d")), zStatus_Success);
    EXPECT_EQ(saved(document), "<a>\n</a>\n");
}

TEST(Layout, goesByLinesOfUpTo1024Blanks) {
    const std::string spaces(1024, ' ');
    const auto document = parsed("<a>\n" + spaces + "<b/>\n" + spaces + "</a>");
    added(document, zXml_Root(document.get()), "new");
    EXPECT_EQ(saved(document), "<a>\n" + spaces + "<b/>\n" + spaces + "<new/>\n" + spaces + "</a>");
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/new")), zStatus_Success);
    EXPECT_EQ(saved(document), "<a>\n" + spaces + "<b/>\n" + spaces + "</a>");
    EXPECT_EQ(withNew("<a>\n " + spaces + "<b/>\n</a>", "a"), "<a>\n " + spaces + "<b/>\n<new/></a>");
}

/// What is left of a line of `count` elements when they are deleted one by one.
std::string emptied(std::size_t count, bool fromTheFront) {
    std::string text = "<a>\n ";
    for (std::size_t i = 0; i < count; ++i) text += "<b/> ";
    const auto document = parsed(text + "\n</a>");
    zXmlItem root = zXml_Root(document.get());
    for (std::size_t left = count; left > 0; --left) {
        zXmlItem item = zXml_ChildAt(document.get(), root, fromTheFront ? 0 : left - 1);
        EXPECT_EQ(zXml_DeleteItem(document.get(), item), zStatus_Success);
    }
    return saved(document);
}

TEST(Layout, takesALineAwayWhoseElementsAreGone) {
    for (const bool fromTheFront : {true, false}) {
        EXPECT_EQ(emptied(1, fromTheFront), "<a>\n</a>");
        EXPECT_EQ(emptied(15, fromTheFront), "<a>\n</a>");
        EXPECT_EQ(emptied(40, fromTheFront), "<a>\n" + std::string(41, ' ') + "\n</a>")
            << "so many pieces are not searched through";
    }
}

TEST(Layout, doesNotSearchThroughAbsurdlyLongLines) {
    const std::string spaces(5000, ' ');
    const std::string text = "<a>\n" + spaces + "<b/>\n</a>";
    EXPECT_EQ(withNew(text, "a"), "<a>\n" + spaces + "<b/>\n<new/></a>") << "that is no layout anybody wrote";
}

}  // namespace
