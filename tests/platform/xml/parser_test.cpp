// Elements, attributes and text: what is well-formed, and the place and sentence of every fault.

#include "platform/xml/parser.h"

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;
using namespace std::string_literals;

struct Fault {
    std::string text;
    std::string detail;
};

const Fault structureFaults[] = {
    // The document as a whole.
    {"", "1:1: the document has no root element"},
    {" \n\t", "2:2: the document has no root element"},
    {"<!-- only -->", "1:14: the document has no root element"},
    {"text<a/>", "1:1: text must not stand before the root element"},
    {"&amp;<a/>", "1:1: text must not stand before the root element"},
    {"</a>", "1:1: an end tag must not stand before the root element"},
    {"<![CDATA[x]]><a/>", "1:1: a CDATA section must not stand before the root element"},
    {"<!x><a/>", "1:1: \"<!\" begins nothing that may stand before the root element"},
    {"<a/>text", "1:5: text must not stand behind the root element"},
    {"<a/>\n\n<b/>", "3:1: <b> must not stand behind the root element"},
    {"<a/></a>", "1:5: an end tag must not stand behind the root element"},
    {"<a/><![CDATA[]]>", "1:5: a CDATA section must not stand behind the root element"},
    {"<a/><!DOCTYPE a>", "1:5: a document type must stand before the root element, once"},
    {"<!DOCTYPE a><!DOCTYPE a><a/>", "1:13: a document type must stand before the root element, once"},
    {"<a/><", "1:6: a name must follow \"<\""},
    // Inside an element.
    {"<a><!DOCTYPE a></a>", "1:4: a document type must stand before the root element, once"},
    {"<a><!x></a>", "1:4: \"<!\" begins nothing that may stand inside an element"},
    {"<a>]]></a>", "1:4: \"]]>\" must not stand in text"},
    {"<a>x]]]></a>", "1:6: \"]]>\" must not stand in text"},
    {"<a>", "1:4: the document ends inside <a>, opened at 1:1"},
    {"<a>\n  <b c='d'>\n text", "3:6: the document ends inside <b>, opened at 2:3"},
    {"<a><b/>", "1:8: the document ends inside <a>, opened at 1:1"},
    // Start tags.
    {"<", "1:2: a name must follow \"<\""},
    {"< a/>", "1:2: a name must follow \"<\""},
    {"<1/>", "1:2: a name must follow \"<\""},
    {"<-a/>", "1:2: a name must follow \"<\""},
    {"<a", "1:3: the document ends inside a start tag"},
    {"<a ", "1:4: the document ends inside a start tag"},
    {"<a b='c'", "1:9: the document ends inside a start tag"},
    {"<a/", "1:3: an attribute, \">\" or \"/>\" must stand here"},
    {"<a / >", "1:4: an attribute, \">\" or \"/>\" must stand here"},
    {"<a<b/>", "1:3: an attribute, \">\" or \"/>\" must stand here"},
    {"<a 1='b'/>", "1:4: an attribute, \">\" or \"/>\" must stand here"},
    {"<a$/>", "1:3: an attribute, \">\" or \"/>\" must stand here"},
    // Attributes.
    {"<a b='1'c='2'/>", "1:9: white space must stand before the attribute \"c\""},
    {"<a b/>", "1:5: \"=\" must follow the attribute \"b\""},
    {"<a b", "1:5: \"=\" must follow the attribute \"b\""},
    {"<a b 'c'/>", "1:6: \"=\" must follow the attribute \"b\""},
    {"<a b=c/>", "1:6: the value of the attribute \"b\" must stand in quotes"},
    {"<a b=", "1:6: the value of the attribute \"b\" must stand in quotes"},
    {"<a b='c/>", "1:6: the value of the attribute \"b\" has no closing quote"},
    {"<a b=\"c'/>", "1:6: the value of the attribute \"b\" has no closing quote"},
    {"<a b='<'/>", "1:7: \"<\" must not stand in the value of the attribute \"b\""},
    {"<a b='1'\n c='2'\n b='3'/>", "3:2: the attribute \"b\" appears twice"},
    // End tags.
    {"<a></b>", "1:4: </b> closes <a>"},
    {"<a></A>", "1:4: </A> closes <a>"},
    {"<a></ab>", "1:4: </ab> closes <a>"},
    {"<ab></a>", "1:5: </a> closes <ab>"},
    {"<a:b></a>", "1:6: </a> closes <a:b>"},
    {"<a><b></a></b>", "1:7: </a> closes <b>"},
    {"<a></ a>", "1:6: a name must follow \"</\""},
    {"<a></", "1:6: a name must follow \"</\""},
    {"<a></a", "1:7: \">\" must end the end tag </a"},
    {"<a></a b='c'>", "1:8: \">\" must end the end tag </a"},
    {"<a></a/>", "1:7: \">\" must end the end tag </a"},
    {"<\xC3\xA9></\xC3\xA8>", "1:4: </\xC3\xA8> closes <\xC3\xA9>"},
    {"<a\xC3\xA9></a>", "1:5: </a> closes <a\xC3\xA9>"},
    {"<a></a\xC3\xA9>", "1:4: </a\xC3\xA9> closes <a>"},
};

TEST(Parser, refusesWithPlaceAndSentence) {
    for (const Fault& fault : structureFaults) EXPECT_EQ(faultOf(fault.text), fault.detail) << fault.text;
}

TEST(Parser, namesTheCharacterBeforeAnyOtherFault) {
    const Fault faults[] = {
        {"\x01<a/>", "1:1: the character U+0001 is not allowed in XML"},
        {"<a>\n\x0C</a>", "2:1: the character U+000C is not allowed in XML"},
        {"<a>\0</a>"s, "1:4: the character U+0000 is not allowed in XML"},
        {"<a b='\x1F'/>", "1:7: the character U+001F is not allowed in XML"},
        {"<a b=\x1F/>", "1:6: the character U+001F is not allowed in XML"},
        {"<a\x02/>", "1:3: the character U+0002 is not allowed in XML"},
        {"<\x02/>", "1:2: the character U+0002 is not allowed in XML"},
        {"<a></a\x02>", "1:7: the character U+0002 is not allowed in XML"},
        {"<a>\xEF\xBF\xBE</a>", "1:4: the character U+FFFE is not allowed in XML"},
        {"<a>\xEF\xBF\xBF</a>", "1:4: the character U+FFFF is not allowed in XML"},
        {"<a>\xFF</a>", "1:4: the bytes are no UTF-8"},
        {"<a>\xC3</a>", "1:4: the bytes are no UTF-8"},
        {"<a>\xC0\xAF</a>", "1:4: the bytes are no UTF-8"},
        {"<a>\xED\xA0\x80</a>", "1:4: the bytes are no UTF-8"},
        {"<a>\xF4\x90\x80\x80</a>", "1:4: the bytes are no UTF-8"},
        {"<a b='\x80'/>", "1:7: the bytes are no UTF-8"},
        {"<a \xE2\x82='1'/>", "1:4: the bytes are no UTF-8"},
        {"<a/>\xE2\x82", "1:5: the bytes are no UTF-8"},
        {"<!--\x01--><a/>", "1:5: the character U+0001 is not allowed in XML"},
        {"<?x \x01?><a/>", "1:5: the character U+0001 is not allowed in XML"},
        {"<a><![CDATA[\x01]]></a>", "1:13: the character U+0001 is not allowed in XML"},
        {"<!DOCTYPE a [<!ENTITY b '\x01'>]><a/>", "1:26: the character U+0001 is not allowed in XML"},
    };
    for (const Fault& fault : faults) EXPECT_EQ(faultOf(fault.text), fault.detail) << fault.text;
}

TEST(Parser, countsColumnsInCharactersAndLinesByAnyLineEnd) {
    EXPECT_EQ(faultOf("<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</b>"), "1:7: </b> closes <a>");
    EXPECT_EQ(faultOf("<a>\r\n\r\n </b>"), "3:2: </b> closes <a>");
    EXPECT_EQ(faultOf("<a>\r\r </b>"), "3:2: </b> closes <a>");
    EXPECT_EQ(faultOf("<a>\n\r\n\r\r\n </b>"), "5:2: </b> closes <a>");
    EXPECT_EQ(faultOf("\xEF\xBB\xBF<a></b>"), "1:4: </b> closes <a>") << "a byte order mark is no column";
}

TEST(Parser, acceptsWhatIsWellFormed) {
    const char* const documents[] = {
        "<a/>",
        "<a />",
        "<a></a>",
        "<a\n></a\n\t>",
        "<a b='1'\tc = \"2\"\nd\n=\n'3'/>",
        "<a b='>' c='\"' d=\"'\" e=']]>' f='' g='&lt;&#60;'/>",
        "<a>]]&gt; ]] > ]]x></a>",
        "<a>--> ?> \" ' = / ></a>",
        "<_/>",
        "<:/>",
        "<a:b:c/>",
        "<xml/>",
        "<XMLa xml='1'/>",
        "<a.-_:1\xC2\xB7/>",
        "<\xC3\xA9 \xC3\xA8='x'></\xC3\xA9>",
        "<a>\t\n\r \x7F\xC2\x80</a>",
        "<!--c--><?p?> <!DOCTYPE a> <?p q?><!----><a/><!--d--><?e?>\n",
    };
    for (const char* text : documents) EXPECT_EQ(saved(parsed(text)), text);
    EXPECT_EQ(faultOf("<a \xC3\x97='x'/>"), "1:4: an attribute, \">\" or \"/>\" must stand here")
        << "a multiplication sign is no letter";
}

TEST(Parser, findsADoubledAttributeHoweverManyThereAre) {
    for (const int count : {2, 8, 9, 24, 25, 1000}) {
        std::string tag = "<a";
        for (int i = 0; i < count; ++i) tag += " n" + std::to_string(i) + "='v'";
        EXPECT_EQ(faultOf(tag + "/>"), "accepted") << count;
        for (const int doubled : {0, count / 2, count - 1}) {
            const std::string name = "n" + std::to_string(doubled);
            EXPECT_EQ(
                faultOf(tag + " " + name + "=''/>"),
                "1:" + std::to_string(tag.size() + 2) + ": the attribute \"" + name + "\" appears twice");
        }
    }
    EXPECT_EQ(faultOf("<a b='1'><a b='1'/><a b='2'/></a>"), "accepted") << "each tag has names of its own";
}

TEST(Parser, buildsTheTree) {
    const auto document = parsed("<a x='1'><b>t<c/>u</b><!-- <d/> --><b/><![CDATA[<e/>]]></a>");
    EXPECT_EQ(describeTree(document.get()), "1 a x=[1] \"<e/>\"\n2 b \"tu\"\n3 c\n2 b\n");
}

}  // namespace
