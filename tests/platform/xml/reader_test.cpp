// References, comments, instructions and CDATA sections.

#include "platform/xml/reader.h"

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

struct Fault {
    const char* text;
    const char* detail;
};

void expectFaults(std::initializer_list<Fault> faults) {
    for (const Fault& fault : faults) EXPECT_EQ(faultOf(fault.text), fault.detail) << fault.text;
}

TEST(Reference, isRefusedWithPlaceAndSentence) {
    expectFaults({
        {"<a>&</a>", "1:4: \"&\" begins no reference; a plain ampersand is written &amp;"},
        {"<a>a & b</a>", "1:6: \"&\" begins no reference; a plain ampersand is written &amp;"},
        {"<a>&;</a>", "1:4: \"&\" begins no reference; a plain ampersand is written &amp;"},
        {"<a b='&'/>", "1:7: \"&\" begins no reference; a plain ampersand is written &amp;"},
        {"<a>&lt</a>", "1:4: the reference &lt has no \";\""},
        {"<a>&lt ;</a>", "1:4: the reference &lt has no \";\""},
        {"<a b='&lt'/>", "1:7: the reference &lt has no \";\""},
        {"<a>&nbsp;</a>", "1:4: the entity &nbsp; is not known"},
        {"<a>&LT;</a>", "1:4: the entity &LT; is not known"},
        {"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", "1:34: the entity &e; is not known"},
        {"<a>&#</a>", "1:4: a character reference needs a number, as in &#65; or &#x41;"},
        {"<a>&#;</a>", "1:4: a character reference needs a number, as in &#65; or &#x41;"},
        {"<a>&#x;</a>", "1:4: a character reference needs a number, as in &#65; or &#x41;"},
        {"<a>&#X41;</a>", "1:4: a character reference needs a number, as in &#65; or &#x41;"},
        {"<a>&#xg;</a>", "1:4: a character reference needs a number, as in &#65; or &#x41;"},
        {"<a>&#65</a>", "1:4: the reference &#65 has no \";\""},
        {"<a>&#65a;</a>", "1:4: the reference &#65 has no \";\""},
        {"<a>&#x41g;</a>", "1:4: the reference &#x41 has no \";\""},
        {"<a>&#0;</a>", "1:4: &#0; is no character that XML allows"},
        {"<a>&#8;</a>", "1:4: &#8; is no character that XML allows"},
        {"<a>&#xD800;</a>", "1:4: &#xD800; is no character that XML allows"},
        {"<a>&#xDFFF;</a>", "1:4: &#xDFFF; is no character that XML allows"},
        {"<a>&#xFFFE;</a>", "1:4: &#xFFFE; is no character that XML allows"},
        {"<a>&#x110000;</a>", "1:4: &#x110000; is no character that XML allows"},
        {"<a>&#x10FFFF0;</a>", "1:4: &#x10FFFF0; is no character that XML allows"},
        {"<a>&#11141110;</a>", "1:4: &#11141110; is no character that XML allows"},
        {"<a>&#4294967361;</a>", "1:4: &#4294967361; is no character that XML allows"},
        {"<a>&#x1000000000000000000041;</a>",
         "1:4: &#x1000000000000000000041; is no character that XML allows"},
    });
}

TEST(Reference, standsForItsCharacter) {
    const auto document = parsed(
        "<a>&lt;&gt;&amp;&quot;&apos;&#65;&#x41;&#x4a;&#x4A;&#0065;&#9;&#10;&#13;&#xE9;&#x20AC;&#x1F600;"
        "&#x10FFFF;&#xD7FF;&#xE000;&#xFFFD;</a>");
    EXPECT_EQ(textOf(document, zXml_Root(document.get())),
              "<>&\"'AAJJA\t\n\r\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\xED\x9F\xBF\xEE\x80\x80"
              "\xEF\xBF\xBD");
}

TEST(Comment, isRefusedWithPlaceAndSentence) {
    expectFaults({
        {"<!-- a -- b --><a/>", "1:8: \"--\" must not stand inside a comment"},
        {"<!-- a ---><a/>", "1:8: \"--\" must not stand inside a comment"},
        {"<a><!-----></a>", "1:8: \"--\" must not stand inside a comment"},
        {"<a>\n<!-- a </a>", "2:1: the comment is not closed"},
        {"<a><!--></a>", "1:4: the comment is not closed"},
        {"<a><!---></a>", "1:4: the comment is not closed"},
        {"<a><!--x--", "1:9: \"--\" must not stand inside a comment"},
        {"<a/><!--", "1:5: the comment is not closed"},
        {"<a><!- x --></a>", "1:4: \"<!\" begins nothing that may stand inside an element"},
    });
}

TEST(Instruction, isRefusedWithPlaceAndSentence) {
    expectFaults({
        {"<?\?><a/>", "1:3: a name must follow \"<?\""},
        {"<? a?><a/>", "1:3: a name must follow \"<?\""},
        {"<?a", "1:1: the processing instruction is not closed"},
        {"<a><?b ></a>", "1:4: the processing instruction is not closed"},
        {"<?b?\?><a/>", "1:4: white space must follow the target b"},
        {"<a><?b? ></a>", "1:7: white space must follow the target b"},
        {"<a><?b$ ?></a>", "1:7: white space must follow the target b"},
        {"<a><?xml version='1.0'?></a>", "1:4: the XML declaration must stand at the very beginning, once"},
        {" <?xml version='1.0'?><a/>", "1:2: the XML declaration must stand at the very beginning, once"},
        {"<?xml version='1.0'?><?xml version='1.0'?><a/>",
         "1:22: the XML declaration must stand at the very beginning, once"},
        {"<a/><?XML x?>", "1:5: the target XML is reserved"},
        {"<?xMl?><a/>", "1:1: the target xMl is reserved"},
    });
}

TEST(CData, isRefusedWithPlaceAndSentence) {
    expectFaults({
        {"<a><![CDATA[x]]</a>", "1:4: the CDATA section is not closed"},
        {"<a>\n <![CDATA[", "2:2: the CDATA section is not closed"},
        {"<a><![cdata[x]]></a>", "1:4: \"<!\" begins nothing that may stand inside an element"},
        {"<a><![CDATA x]]></a>", "1:4: \"<!\" begins nothing that may stand inside an element"},
        {"<a><![CDATA[x]]>]]></a>", "1:17: \"]]>\" must not stand in text"},
    });
}

TEST(Markup, holdsWhatLooksLikeItsEnd) {
    const char* const documents[] = {
        "<a><!-- - -> > ]]> ?> &x; <b> --></a>",    "<a><!----></a>",
        "<a><?b ? > ]]> --> &x; <b> ?></a>",        "<a><?b?><?b ?\?><?xmlx?><?xm?></a>",
        "<a><![CDATA[]] ] > &x; <b> --> ?>]]></a>", "<a><![CDATA[]]><![CDATA[]]]]></a>",
    };
    for (const char* text : documents) EXPECT_EQ(saved(parsed(text)), text);
}

}  // namespace
