// Copies of elements, into the same document or another.

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

/// `target` with a copy of the element along `path` of `source` under its root: last, or before its first
/// child.
std::string withCopy(std::string_view target, std::string_view source, const char* path,
                     bool isFirst = false) {
    const auto to = parsed(target);
    const auto from = parsed(source);
    zXmlItem root = zXml_Root(to.get());
    zXmlItem before = isFirst ? zXml_FirstChild(to.get(), root) : nullptr;
    zXmlItem copy = nullptr;
    EXPECT_EQ(zXml_CopyItem(to.get(), root, before, from.get(), itemAt(from, path), &copy), zStatus_Success);
    EXPECT_EQ(copy, zXml_ChildAt(to.get(), root, isFirst ? 0 : zXml_ChildCount(to.get(), root) - 1));
    EXPECT_EQ(saved(from), source) << "the source stays as it is";
    return saved(to);
}

TEST(CopyItem, isDeepAndKeepsHowThingsAreWritten) {
    EXPECT_EQ(withCopy("<a/>", "<r><b x = '1'  y=\"&#65;\"><!--c-->t<![CDATA[<]]><d /></b ></r>", "r/b"),
              "<a>\n  <b x = '1'  y=\"&#65;\"><!--c-->t<![CDATA[<]]><d /></b >\n</a>");
}

TEST(CopyItem, movesItsLinesToTheirNewDepth) {
    EXPECT_EQ(withCopy("<a>\n  <x/>\n</a>", "<r>\n\t\t<b>\n\t\t\t<c/>\n\t\t</b>\n</r>", "r/b"),
              "<a>\n  <x/>\n  <b>\n  \t<c/>\n  </b>\n</a>");
    EXPECT_EQ(withCopy("<a>\r\n    <x/>\r\n</a>", "<r>\n  <b>\n    <c/>\n  </b>\n</r>", "r/b"),
              "<a>\r\n    <x/>\r\n    <b>\r\n      <c/>\r\n    </b>\r\n</a>");
    EXPECT_EQ(withCopy("<a>\n    <x/>\n</a>", "<r>\n  <b>\n    one\n    two\n  </b>\n</r>", "r/b"),
              "<a>\n    <x/>\n    <b>\n    one\n    two\n  </b>\n</a>")
        << "lines of text are no layout";
    EXPECT_EQ(withCopy("<a>\n  <x/>\n</a>", "<?xml version='1.0'?><b>\n  <c/>\n</b>", "b"),
              "<a>\n  <x/>\n  <b>\n    <c/>\n  </b>\n</a>");
}

TEST(CopyItem, goesBeforeAnItem) {
    EXPECT_EQ(withCopy("<a>\n  <x/>\n</a>", "<b/>", "b", true), "<a>\n  <b/>\n  <x/>\n</a>");
    EXPECT_EQ(withCopy("<a><x/></a>", "<b/>", "b", true), "<a><b/><x/></a>");
    EXPECT_EQ(withCopy("<a>t<x/></a>", "<b/>", "b", true), "<a>t<b/><x/></a>");
}

TEST(CopyItem, takesEditsAlong) {
    const auto from = parsed("<r>\n  <b>\n    <c/>\n    <d/>\n  </b>\n</r>");
    ASSERT_EQ(zXml_SetAttrText(from.get(), itemAt(from, "r/b"), "v", "1"), zStatus_Success);
    ASSERT_EQ(zXml_DeleteItem(from.get(), itemAt(from, "r/b/c")), zStatus_Success);
    ASSERT_EQ(zXml_SetItemText(from.get(), added(from, itemAt(from, "r/b"), "e"), "t"), zStatus_Success);
    const auto to = parsed("<a/>");
    ASSERT_EQ(zXml_CopyItem(to.get(), zXml_Root(to.get()), nullptr, from.get(), itemAt(from, "r/b"), nullptr),
              zStatus_Success);
    EXPECT_EQ(saved(to), "<a>\n  <b v=\"1\">\n    <d/>\n    <e>t</e>\n  </b>\n</a>");
}

TEST(CopyItem, mayStayInItsDocumentEvenInItself) {
    const auto document = parsed("<a><b><c/></b></a>");
    zXmlItem b = itemAt(document, "a/b");
    ASSERT_EQ(zXml_CopyItem(document.get(), b, nullptr, document.get(), b, nullptr), zStatus_Success);
    EXPECT_EQ(saved(document), "<a><b><c/><b><c/></b></b></a>");
    ASSERT_EQ(zXml_CopyItem(document.get(), b, zXml_FirstChild(document.get(), b), document.get(),
                            zXml_Root(document.get()), nullptr),
              zStatus_Success);
    EXPECT_EQ(saved(document), "<a><b><a><b><c/><b><c/></b></b></a><c/><b><c/></b></b></a>");
}

TEST(CopyItem, makesTheRootOfAnEmptyDocument) {
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_Construct(document.out(), nullptr), zStatus_Success);
    const auto from = parsed("<r><b>t</b></r>");
    ASSERT_EQ(zXml_CopyItem(document.get(), nullptr, nullptr, from.get(), itemAt(from, "r/b"), nullptr),
              zStatus_Success);
    EXPECT_EQ(saved(document), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<b>t</b>\n");
    EXPECT_EQ(zXml_CopyItem(document.get(), nullptr, nullptr, from.get(), itemAt(from, "r/b"), nullptr),
              zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the document has a root already");
}

TEST(CopyItem, fitsTheEncodingOfItsDocument) {
    const std::string declaration = "<?xml version='1.0' encoding='ISO-8859-1'?>";
    EXPECT_EQ(withCopy(declaration + "<a>x</a>",
                       "<b v='\xC3\xA9\xE2\x82\xAC'>\xC3\xA9\xE2\x82\xAC<![CDATA[<\xE2\x82\xAC>]]></b>", "b"),
              declaration + "<a>x<b v='\xE9&#8364;'>\xE9&#8364;<![CDATA[<]]>&#8364;<![CDATA[>]]></b></a>");
    for (const char* source :
         {"<b><!--\xE2\x82\xAC--></b>", "<b><?p \xE2\x82\xAC?></b>", "<b><\xE4\xB8\x80/></b>",
          "<b \xE4\xB8\x80='1'/>", "<b c='1' \xE4\xB8\x80='1'/>"}) {
        const auto to = parsed(declaration + "<a/>");
        const auto from = parsed(source);
        EXPECT_EQ(
            zXml_CopyItem(to.get(), zXml_Root(to.get()), nullptr, from.get(), zXml_Root(from.get()), nullptr),
            zStatus_BadArgument);
        EXPECT_EQ(failure::detailOf(zStatus_BadArgument),
                  "the copy holds a name or a comment that cannot be written in ISO-8859-1");
        EXPECT_EQ(saved(to), declaration + "<a/>");
    }
}

TEST(CopyItem, refusesItemsThatAreNotThere) {
    const auto to = parsed("<a><b><c/></b></a>");
    const auto from = parsed("<r/>");
    zXmlItem root = zXml_Root(to.get());
    zXmlItem source = zXml_Root(from.get());
    zXmlItem copy = root;
    const auto copied = [&](zXmlItem parent, zXmlItem before, zHandle sourceDocument, zXmlItem sourceItem) {
        copy = root;
        const zStatus status = zXml_CopyItem(to.get(), parent, before, sourceDocument, sourceItem, &copy);
        EXPECT_EQ(copy, nullptr);
        EXPECT_EQ(status, zStatus_BadArgument);
        return std::string(failure::detailOf(status));
    };
    const std::string noItem = "the item is no living element of the document";
    EXPECT_EQ(copied(root, itemAt(to, "a/b/c"), from.get(), source), noItem) << "no child of the parent";
    EXPECT_EQ(copied(root, source, from.get(), source), noItem);
    EXPECT_EQ(copied(source, nullptr, from.get(), source), noItem);
    EXPECT_EQ(copied(root, nullptr, from.get(), root), noItem);
    EXPECT_EQ(copied(root, nullptr, from.get(), nullptr), noItem);
    EXPECT_EQ(copied(root, nullptr, nullptr, source), "the handle is that of no XML document");
    EXPECT_EQ(saved(to), "<a><b><c/></b></a>");
}

}  // namespace
