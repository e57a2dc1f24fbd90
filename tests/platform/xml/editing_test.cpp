// Edits: what each does to the bytes, and that it does nothing else.

#include "platform/xml/editing.h"

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

/// `before` after the text of the element along `path` was set.
std::string withText(std::string_view before, const char* path, const char* text) {
    const auto document = parsed(before);
    EXPECT_EQ(zXml_SetItemText(document.get(), itemAt(document, path), text), zStatus_Success);
    return saved(document);
}

std::string withAttribute(std::string_view before, const char* path, const char* name, const char* value) {
    const auto document = parsed(before);
    EXPECT_EQ(zXml_SetAttrText(document.get(), itemAt(document, path), name, value), zStatus_Success);
    return saved(document);
}

/// `before` without the element along `path`.
std::string without(std::string_view before, const char* path) {
    const auto document = parsed(before);
    EXPECT_EQ(zXml_DeleteItem(document.get(), itemAt(document, path)), zStatus_Success);
    return saved(document);
}

TEST(AddItem, makesTheRootOfAFreshDocument) {
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_Construct(document.out(), nullptr), zStatus_Success);
    zXmlItem root = nullptr;
    ASSERT_EQ(zXml_AddItem(document.get(), nullptr, "root", &root), zStatus_Success);
    EXPECT_EQ(zXml_Root(document.get()), root);
    EXPECT_EQ(saved(document), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root/>\n");
    EXPECT_EQ(zXml_AddItem(document.get(), nullptr, "second", nullptr), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the document has a root already");
}

TEST(AddItem, keepsTheOrderOfCalls) {
    const auto document = parsed("<a/>");
    zXmlItem root = zXml_Root(document.get());
    added(document, root, "b");
    added(document, root, "c");
    added(document, added(document, root, "d"), "e");
    added(document, root, "b");
    EXPECT_EQ(describeTree(document.get()), "1 a\n2 b\n2 c\n2 d\n3 e\n2 b\n");
}

TEST(AddItem, goesBehindEverythingThatIsThere) {
    const auto document = parsed("<a>t<b/>u<!--c--></a>");
    added(document, zXml_Root(document.get()), "d");
    EXPECT_EQ(saved(document), "<a>t<b/>u<!--c--><d/></a>");
}

TEST(AddItem, refusesWhatIsNoName) {
    const auto document = parsed("<a/>");
    zXmlItem item = zXml_Root(document.get());
    for (const std::string name : {"", " ", "1", "a b", "a/", "<a>", "a=\"b\"", "-a", "\xFF", "a\x01"}) {
        EXPECT_EQ(zXml_AddItem(document.get(), zXml_Root(document.get()), name.c_str(), &item),
                  zStatus_BadArgument);
        EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "\"" + name + "\" is no XML name");
        EXPECT_EQ(item, nullptr);
        EXPECT_EQ(zXml_SetAttrText(document.get(), zXml_Root(document.get()), name.c_str(), "v"),
                  zStatus_BadArgument);
        EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "\"" + name + "\" is no XML name");
    }
    EXPECT_EQ(saved(document), "<a/>");
}

TEST(AddItem, isUndoneByDeleteItem) {
    const char* const documents[] = {
        "<a/>",
        "<a  />",
        "<a></a>",
        "<a>\n</a>",
        "<a>\r\n\r\n</a>\r\n",
        "<a>\n  <b/>\n</a>",
        "<a>\n\t<b/>\n\t<!-- c -->\n</a>\n",
        "<a><b/></a>",
        "<a>text</a>",
        "<a> <b/> text\n</a>",
        "<a>\n  <b/></a>",
        "<a><!--c-->\n</a>",
        "<a>\n<b>\n  </b>  </a>",
    };
    for (const char* text : documents) {
        for (const bool isDeep : {false, true}) {
            const auto document = parsed(text);
            zXmlItem parent = zXml_Root(document.get());
            if (isDeep && zXml_FirstChild(document.get(), parent) != nullptr)
                parent = zXml_FirstChild(document.get(), parent);
            zXmlItem first = added(document, parent, "new");
            zXmlItem second = added(document, parent, "new");
            added(document, second, "inner");
            ASSERT_EQ(zXml_SetItemText(document.get(), first, "x"), zStatus_Success);
            ASSERT_EQ(zXml_DeleteItem(document.get(), first), zStatus_Success);
            ASSERT_EQ(zXml_DeleteItem(document.get(), second), zStatus_Success);
            EXPECT_EQ(saved(document), text);
        }
    }
}

TEST(SetItemText, replacesTextAndLeavesMarkup) {
    EXPECT_EQ(withText("<a/>", "a", "x"), "<a>x</a>");
    EXPECT_EQ(withText("<a />", "a", "x"), "<a>x</a>");
    EXPECT_EQ(withText("<a b='/' />", "a", "x"), "<a b='/'>x</a>");
    EXPECT_EQ(withText("<a></a >", "a", "x"), "<a>x</a >");
    EXPECT_EQ(withText("<a>old</a>", "a", "new"), "<a>new</a>");
    EXPECT_EQ(withText("<a>old</a>", "a", ""), "<a></a>");
    EXPECT_EQ(withText("<a/>", "a", ""), "<a/>");
    EXPECT_EQ(withText("<a><![CDATA[old]]></a>", "a", "new"), "<a>new</a>");
    EXPECT_EQ(withText("<a>1<![CDATA[2]]>3&amp;4</a>", "a", "new"), "<a>new</a>");
    EXPECT_EQ(withText("<a><!--c-->old<?p?></a>", "a", "new"), "<a><!--c-->new<?p?></a>");
    EXPECT_EQ(withText("<a>1<b>2</b>3</a>", "a", "new"), "<a>new<b>2</b></a>");
    EXPECT_EQ(withText("<a><b/>1<c/>2</a>", "a", "new"), "<a><b/>new<c/></a>");
    EXPECT_EQ(withText("<a>1<b>2</b>3</a>", "a/b", "new"), "<a>1<b>new</b>3</a>");
}

TEST(SetItemText, keepsTheLayoutOfChildrenWhenItClears) {
    EXPECT_EQ(withText("<a>\n  <b/>\n  old\n  <c/>\n</a>", "a", ""), "<a>\n  <b/><c/>\n</a>");
    EXPECT_EQ(withText("<a>\n  <b/>\n  <c/>\n</a>", "a", ""), "<a>\n  <b/>\n  <c/>\n</a>");
    EXPECT_EQ(withText("<a>\n  <b/>\n</a>", "a", "x"), "<a>x<b/></a>") << "white space would be text now";
}

TEST(SetItemText, mayBeRepeated) {
    const auto document = parsed("<a><b>1</b></a>");
    zXmlItem item = itemAt(document, "a/b");
    for (const char* text : {"2", "", "3 & 4", "5"}) {
        ASSERT_EQ(zXml_SetItemText(document.get(), item, text), zStatus_Success);
        EXPECT_EQ(textOf(document, item), text);
    }
    EXPECT_EQ(saved(document), "<a><b>5</b></a>");
}

TEST(SetAttrText, replacesTheValueAlone) {
    EXPECT_EQ(withAttribute("<a  b = '1'\tc=\"2\" />", "a", "b", "3"), "<a  b = '3'\tc=\"2\" />");
    EXPECT_EQ(withAttribute("<a  b = '1'\tc=\"2\" />", "a", "c", ""), "<a  b = '1'\tc=\"\" />");
    EXPECT_EQ(withAttribute("<a b='1'>t<c b='2'/></a>", "a/c", "b", "x"), "<a b='1'>t<c b='x'/></a>");
}

TEST(SetAttrText, putsANewOneBehindTheOthers) {
    EXPECT_EQ(withAttribute("<a/>", "a", "b", "1"), "<a b=\"1\"/>");
    EXPECT_EQ(withAttribute("<a />", "a", "b", "1"), "<a b=\"1\" />");
    EXPECT_EQ(withAttribute("<a></a>", "a", "b", "1"), "<a b=\"1\"></a>");
    EXPECT_EQ(withAttribute("<a   c='2' >t</a>", "a", "b", "1"), "<a   c='2' b=\"1\" >t</a>");
    EXPECT_EQ(withAttribute("<a c='1'\n   d='2'/>", "a", "b", "3"), "<a c='1'\n   d='2'\n   b=\"3\"/>")
        << "attributes one below the other stay so";
    EXPECT_EQ(withAttribute("<a bb='1'/>", "a", "b", "2"), "<a bb='1' b=\"2\"/>");
}

TEST(SetAttrText, mayBeRepeatedWithAnyLength) {
    const auto document = parsed("<a><b/></a>");
    zXmlItem item = itemAt(document, "a/b");
    for (const std::size_t length : {1u, 10u, 5u, 100u, 0u, 101u, 3u}) {
        const std::string text(length, 'x');
        ASSERT_EQ(zXml_SetAttrText(document.get(), item, "v", text.c_str()), zStatus_Success);
        EXPECT_EQ(saved(document), "<a><b v=\"" + text + "\"/></a>");
    }
}

TEST(DeleteItem, takesTheLinesThatItStandsOnAlone) {
    EXPECT_EQ(without("<a>\n  <b/>\n  <c/>\n</a>", "a/b"), "<a>\n  <c/>\n</a>");
    EXPECT_EQ(without("<a>\n  <b/>\n  <c/>\n</a>", "a/c"), "<a>\n  <b/>\n</a>");
    EXPECT_EQ(without("<a>\r\n\t<b>\r\n\t</b>\t\r\n\t<c/>\r\n</a>", "a/b"), "<a>\r\n\t<c/>\r\n</a>");
    EXPECT_EQ(without("<a>\r\n  <b/>\n  <c/>\n</a>", "a/b"), "<a>\r\n  <c/>\n</a>") << "the line's own end";
    EXPECT_EQ(without("<a>\n  <b/>\r\n  <c/>\n</a>", "a/b"), "<a>\n  <c/>\n</a>") << "the line's own end";
    EXPECT_EQ(without("<a>\n  <b/>\n</a>", "a/b"), "<a>\n</a>");
    EXPECT_EQ(without("<a>\n\n  <b/>\n\n  <c/>\n</a>", "a/b"), "<a>\n\n\n  <c/>\n</a>") << "blank lines stay";
    EXPECT_EQ(without("<a>\n  <!--x-->\n  <b/>\n</a>", "a/b"), "<a>\n  <!--x-->\n</a>");
}

TEST(DeleteItem, takesTheElementAloneWhenMoreIsOnItsLine) {
    EXPECT_EQ(without("<a><b/><c/></a>", "a/b"), "<a><c/></a>");
    EXPECT_EQ(without("<a>\n  <b/> <c/>\n</a>", "a/b"), "<a>\n   <c/>\n</a>");
    EXPECT_EQ(without("<a>\n  <b/> <!--x-->\n</a>", "a/b"), "<a>\n   <!--x-->\n</a>");
    EXPECT_EQ(without("<a>x<b/>y</a>", "a/b"), "<a>xy</a>");
    EXPECT_EQ(without("<a> <b/> </a>", "a/b"), "<a>  </a>");
}

TEST(DeleteItem, neverJoinsTextToAMark) {
    EXPECT_EQ(without("<a>]]<b/>&gt;</a>", "a/b"), "<a>]]&gt;</a>");
    EXPECT_EQ(without("<a>]]<b/>></a>", "a/b"), "<a>]&#93;></a>");
    EXPECT_EQ(without("<a>]<b/>]></a>", "a/b"), "<a>&#93;]></a>");
    EXPECT_EQ(without("<a>]<b/>x</a>", "a/b"), "<a>]x</a>");
    const auto document = parsed("<a>]<b/>]<c/>></a>");
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/c")), zStatus_Success);
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/b")), zStatus_Success);
    const auto again = parsed(saved(document));
    EXPECT_EQ(textOf(again, zXml_Root(again.get())), "]]>");
}

TEST(DeleteItem, takesAllChildrenInAnyOrder) {
    for (const bool isForward : {true, false}) {
        const auto document = parsed("<a>\n  <b/>\n  <c>\n    <d/>\n  </c>\n  <e/>\n</a>\n");
        zXmlItem root = zXml_Root(document.get());
        while (zXml_ChildCount(document.get(), root) > 0) {
            const std::size_t index = isForward ? 0 : zXml_ChildCount(document.get(), root) - 1;
            ASSERT_EQ(zXml_DeleteItem(document.get(), zXml_ChildAt(document.get(), root, index)),
                      zStatus_Success);
        }
        EXPECT_EQ(saved(document), "<a>\n</a>\n");
    }
}

TEST(DeleteItem, takesTheFirstLineOfADocumentWithItsRoot) {
    for (const std::string before : {"", "  "}) {
        const auto document = parsed(before + "<a/>\n<!--c-->\n");
        ASSERT_EQ(zXml_DeleteItem(document.get(), zXml_Root(document.get())), zStatus_Success);
        added(document, nullptr, "b");
        EXPECT_EQ(saved(document), "<!--c-->\n<b/>\n");
    }
}

TEST(DeleteItem, leavesADocumentWithoutRoot) {
    const auto document = parsed("<?xml version='1.0'?>\n<!--c-->\n<a/>\n");
    ASSERT_EQ(zXml_DeleteItem(document.get(), zXml_Root(document.get())), zStatus_Success);
    EXPECT_EQ(zXml_Root(document.get()), nullptr);
    Ta::Buffer buffer;
    EXPECT_EQ(zXml_SaveBytes(document.get(), buffer.data(), buffer.size(), nullptr), zStatus_BadArgument);
    added(document, nullptr, "b");
    EXPECT_EQ(saved(document), "<?xml version='1.0'?>\n<!--c-->\n<b/>\n");
}

TEST(Edits, mixFreely) {
    const auto document = parsed("<a>\n  <b x='1'/>\n  <c/>\n</a>\n");
    zXmlItem root = zXml_Root(document.get());
    zXmlItem d = added(document, root, "d");
    ASSERT_EQ(zXml_SetAttrText(document.get(), d, "y", "2"), zStatus_Success);
    ASSERT_EQ(zXml_DeleteItem(document.get(), itemAt(document, "a/c")), zStatus_Success);
    ASSERT_EQ(zXml_SetItemText(document.get(), added(document, d, "e"), "f"), zStatus_Success);
    ASSERT_EQ(zXml_SetAttrText(document.get(), itemAt(document, "a/b"), "x", "3"), zStatus_Success);
    EXPECT_EQ(saved(document), "<a>\n  <b x='3'/>\n  <d y=\"2\">\n    <e>f</e>\n  </d>\n</a>\n");
}

}  // namespace
