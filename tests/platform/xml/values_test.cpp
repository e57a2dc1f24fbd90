// What texts and attribute values say, and how they are written.

#include "platform/xml/values.h"

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

std::string textIn(std::string_view content) {
    const auto document = parsed("<a>" + std::string(content) + "</a>");
    return textOf(document, zXml_Root(document.get()));
}

std::string valueIn(std::string_view value) {
    const auto document = parsed("<a b='" + std::string(value) + "'/>");
    return valueOf(document, zXml_Root(document.get()), "b");
}

TEST(Text, isCharacterDataAndCData) {
    EXPECT_EQ(textIn("x"), "x");
    EXPECT_EQ(textIn(" x "), " x ") << "given exactly";
    EXPECT_EQ(textIn("x<!--c-->y<?p?>z"), "xyz");
    EXPECT_EQ(textIn("a<b>c</b>d<e/>f"), "adf") << "children's text is left out";
    EXPECT_EQ(textIn("<![CDATA[<&amp;>]]>"), "<&amp;>");
    EXPECT_EQ(textIn("a<![CDATA[b]]>c<![CDATA[]]]]>"), "abc]]");
    EXPECT_EQ(textIn("a<!-->-->b<?x >?>c"), "abc");
    EXPECT_EQ(textIn("a<!-- ]]&gt; <![CDATA[x]]> -->b"), "ab");
}

TEST(Text, ofWhiteSpaceAloneIsEmpty) {
    EXPECT_EQ(textIn(""), "");
    EXPECT_EQ(textIn(" \t\r\n"), "");
    EXPECT_EQ(textIn("&#32;&#10;"), "");
    EXPECT_EQ(textIn("<![CDATA[  ]]>"), "");
    EXPECT_EQ(textIn(" <b>x</b> "), "");
    EXPECT_EQ(textIn("&#160;"), "\xC2\xA0") << "a no-break space is none of XML's";
}

TEST(Text, endsLinesInLineFeed) {
    EXPECT_EQ(textIn("a\r\nb\rc\nd\r\r\n\n\re"), "a\nb\nc\nd\n\n\n\ne");
    EXPECT_EQ(textIn("<![CDATA[a\r\nb\r]]>c"), "a\nb\nc");
    EXPECT_EQ(textIn("a&#13;\nb"), "a\r\nb") << "a reference is no line end";
    EXPECT_EQ(textIn("a\r&#10;b"), "a\n\nb");
    EXPECT_EQ(textIn("a\r<!--c-->\nb"), "a\n\nb");
    EXPECT_EQ(textIn("a\r<![CDATA[\nb\r]]>\nc"), "a\n\nb\n\nc");
    EXPECT_EQ(textIn("a\r<b/>\nc"), "a\n\nc") << "two ends on two sides of a child";
}

TEST(Value, hasWhiteSpaceMadeSpaces) {
    EXPECT_EQ(valueIn(""), "");
    EXPECT_EQ(valueIn("  a  b "), "  a  b ") << "nothing is trimmed";
    EXPECT_EQ(valueIn("a\tb\nc\rd\r\ne\n\rf"), "a b c d e  f");
    EXPECT_EQ(valueIn("a&#9;b&#10;c&#13;d&#13;&#10;e&#32;f"), "a\tb\nc\rd\r\ne f")
        << "references stay what they are";
    EXPECT_EQ(valueIn("&lt;&amp;&gt;&quot;&apos;\"]]>"), "<&>\"'\"]]>");
}

TEST(Value, isThatOfTheNameExactly) {
    const auto document = parsed("<a\n name = \"1\" Name='2'\tnam=\"'\" x:name='4' name2='a=\"b\"'/>");
    zXmlItem root = zXml_Root(document.get());
    EXPECT_EQ(valueOf(document, root, "name"), "1");
    EXPECT_EQ(valueOf(document, root, "Name"), "2");
    EXPECT_EQ(valueOf(document, root, "nam"), "'");
    EXPECT_EQ(valueOf(document, root, "x:name"), "4");
    EXPECT_EQ(valueOf(document, root, "name2"), "a=\"b\"");
    char buffer[8];
    for (const char* name : {"", "n", "b", "NAME", "a"})
        EXPECT_EQ(zXml_AttrText(document.get(), root, name, buffer, sizeof buffer), zStatus_NotFound) << name;
}

const char* const writtenTexts[] = {
    "",
    "plain",
    " a  b ",
    "<a href=\"b\">&amp;'</a>",
    "]]>",
    "]]",
    ">",
    "a\nb\n\nc\n",
    "\rx",
    "a\r\nb\rc\n",
    "\ta\tb\t",
    "<![CDATA[x]]>",
    "<!-- x -->",
    "&#65;",
    "\xC2\x85\xE2\x80\xA8\x7F",
    "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
};

TEST(Writing, readsBackTheSame) {
    for (const char* lineEnd : {"\n", "\r\n", "\r"}) {
        for (const char* text : writtenTexts) {
            const auto document = parsed("<a>" + std::string(lineEnd) + "</a>");
            zXmlItem item = added(document, zXml_Root(document.get()), "b");
            ASSERT_EQ(zXml_SetItemText(document.get(), item, text), zStatus_Success);
            ASSERT_EQ(zXml_SetAttrText(document.get(), item, "v", text), zStatus_Success);
            EXPECT_EQ(textOf(document, item), text);
            EXPECT_EQ(valueOf(document, item, "v"), text);
            const auto again = parsed(saved(document));
            EXPECT_EQ(textOf(again, itemAt(again, "a/b")), text) << saved(document);
            EXPECT_EQ(valueOf(again, itemAt(again, "a/b"), "v"), text) << saved(document);
        }
    }
}

TEST(Writing, escapesWhatMustBe) {
    const auto document = parsed("<a\r\n/>");
    zXmlItem root = zXml_Root(document.get());
    ASSERT_EQ(zXml_SetItemText(document.get(), root, "<&>\"'\t\r\n"), zStatus_Success);
    EXPECT_EQ(saved(document), "<a>&lt;&amp;&gt;\"'\t&#13;\r\n</a>");
    ASSERT_EQ(zXml_SetItemText(document.get(), root, ""), zStatus_Success);
    ASSERT_EQ(zXml_SetAttrText(document.get(), root, "b", "<&>\"'\t\r\n"), zStatus_Success);
    EXPECT_EQ(saved(document), "<a b=\"&lt;&amp;>&quot;'&#9;&#13;&#10;\"\r\n/>");
}

TEST(Writing, keepsTheQuotesOfAValue) {
    const auto document = parsed("<a b='1' c=\"2\"/>");
    zXmlItem root = zXml_Root(document.get());
    ASSERT_EQ(zXml_SetAttrText(document.get(), root, "b", "\"'"), zStatus_Success);
    ASSERT_EQ(zXml_SetAttrText(document.get(), root, "c", "\"'"), zStatus_Success);
    EXPECT_EQ(saved(document), "<a b='\"&apos;' c=\"&quot;'\"/>");
}

TEST(Writing, refusesWhatXmlCannotHold) {
    const std::pair<const char*, const char*> refused[] = {
        {"a\x01", "XML cannot hold the character U+0001"},
        {"\x1F", "XML cannot hold the character U+001F"},
        {"\xEF\xBF\xBE", "XML cannot hold the character U+FFFE"},
        {"\xFF", "the text is no UTF-8"},
        {"a\xC3", "the text is no UTF-8"},
        {"\xED\xA0\x80", "the text is no UTF-8"},
        {"\xC0\x80", "the text is no UTF-8"},
    };
    const std::string before = "<a b='1'>t</a>";
    const auto document = parsed(before);
    zXmlItem root = zXml_Root(document.get());
    for (const auto& [text, detail] : refused) {
        EXPECT_EQ(zXml_SetItemText(document.get(), root, text), zStatus_BadArgument);
        EXPECT_EQ(failure::detailOf(zStatus_BadArgument), detail);
        EXPECT_EQ(zXml_SetAttrText(document.get(), root, "b", text), zStatus_BadArgument);
        EXPECT_EQ(failure::detailOf(zStatus_BadArgument), detail);
        EXPECT_EQ(saved(document), before);
    }
}

}  // namespace
