// The XML declaration and the document type.

#include "platform/xml/prolog.h"

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

struct Fault {
    std::string text;
    std::string detail;
};

TEST(Declaration, isRefusedWithPlaceAndSentence) {
    const Fault faults[] = {
        {"<?xml?>", "1:6: white space must follow <?xml"},
        {"<?xml ?>", "1:7: the XML declaration must begin with the version"},
        {"<?xml encoding='UTF-8'?>", "1:7: the XML declaration must begin with the version"},
        {"<?xml Version='1.0'?>", "1:7: the XML declaration must begin with the version"},
        {"<?xml version '1.0'?>", "1:15: \"=\" must follow version"},
        {"<?xml version=1.0?>", "1:15: the version must stand in quotes"},
        {"<?xml version='1.0\"?>", "1:15: the version has no closing quote"},
        {"<?xml version='2.0'?>", "1:14: the version must be 1.0 (or another 1.x)"},
        {"<?xml version='1.'?>", "1:14: the version must be 1.0 (or another 1.x)"},
        {"<?xml version='1.0a'?>", "1:14: the version must be 1.0 (or another 1.x)"},
        {"<?xml version=' 1.0'?>", "1:14: the version must be 1.0 (or another 1.x)"},
        {"<?xml version='1.0'encoding='UTF-8'?>", "1:20: the XML declaration must end in \"?>\" here"},
        {"<?xml version='1.0' encoding=''?>", "1:31: \"\" is no name of an encoding"},
        {"<?xml version='1.0' encoding='8bit'?>", "1:31: \"8bit\" is no name of an encoding"},
        {"<?xml version='1.0' encoding='a b'?>", "1:31: \"a b\" is no name of an encoding"},
        {"<?xml version='1.0' encoding=UTF-8?>", "1:30: the encoding must stand in quotes"},
        {"<?xml version='1.0' encoding='EBCDIC-US'?>",
         "unsupported: 1:31: the encoding \"EBCDIC-US\" is not supported"},
        {"<?xml version='1.0' encoding='Aaz09._-Z'?>",
         "unsupported: 1:31: the encoding \"Aaz09._-Z\" is not supported"},
        {"<?xml version='1.0' encoding='Z'?>", "unsupported: 1:31: the encoding \"Z\" is not supported"},
        {"<?xml version='1.0' encoding='z'?>", "unsupported: 1:31: the encoding \"z\" is not supported"},
        {"<?xml version='1.0' encoding='a@'?>", "1:31: \"a@\" is no name of an encoding"},
        {"<?xml version='1.0' encoding='a['?>", "1:31: \"a[\" is no name of an encoding"},
        {"<?xml version='1.0' encoding='a`'?>", "1:31: \"a`\" is no name of an encoding"},
        {"<?xml version='1.0' encoding='a{'?>", "1:31: \"a{\" is no name of an encoding"},
        {"<?xml version='1.0' encoding='a/'?>", "1:31: \"a/\" is no name of an encoding"},
        {"<?xml version='1.0' encoding='a:'?>", "1:31: \"a:\" is no name of an encoding"},
        {"<?xml version='1.0' standalone='maybe'?>", "1:33: standalone must be yes or no"},
        {"<?xml version='1.0' standalone='YES'?>", "1:33: standalone must be yes or no"},
        {"<?xml version='1.0' standalone='yes' encoding='UTF-8'?>",
         "1:38: the XML declaration must end in \"?>\" here"},
        {"<?xml version='1.0' other='x'?>", "1:21: the XML declaration must end in \"?>\" here"},
        {"<?xml version='1.0'", "1:20: the XML declaration must end in \"?>\" here"},
        {"<?xml version='1.0' >", "1:21: the XML declaration must end in \"?>\" here"},
        {"<?xml\n version='1.0'\n?a>", "3:1: the XML declaration must end in \"?>\" here"},
    };
    for (const Fault& fault : faults) EXPECT_EQ(faultOf(fault.text + "<a/>"), fault.detail) << fault.text;
}

TEST(Declaration, takesEveryFormThatIsAllowed) {
    const char* const declarations[] = {
        "<?xml version='1.0'?>",
        "<?xml version=\"1.1\" ?>",
        "<?xml version='1.99'?>",
        "<?xml\tversion\n=\r'1.0'\n encoding = \"utf-8\" standalone='no' ?>",
        "<?xml version='1.0' standalone='yes'?>",
    };
    for (const std::string declaration : declarations) {
        const std::string text = declaration + "\n<a/>";
        EXPECT_EQ(saved(parsed(text)), text);
    }
}

const Fault documentTypeFaults[] = {
    {"<!DOCTYPE>", "1:10: white space must follow <!DOCTYPE"},
    {"<!DOCTYPEa>", "1:10: white space must follow <!DOCTYPE"},
    {"<!DOCTYPE >", "1:11: a name must follow <!DOCTYPE"},
    {"<!DOCTYPE 1>", "1:11: a name must follow <!DOCTYPE"},
    {"<!doctype a>", "1:1: \"<!\" begins nothing that may stand before the root element"},
    {"<!DOCTYPE a", "1:12: the document type must end in \">\" here"},
    {"<!DOCTYPE a b>", "1:13: the document type must end in \">\" here"},
    {"<!DOCTYPE a []b>", "1:15: the document type must end in \">\" here"},
    {"<!DOCTYPE a system 's'>", "1:13: the document type must end in \">\" here"},
    {"<!DOCTYPE a SYSTEM>", "1:19: white space must follow SYSTEM"},
    {"<!DOCTYPE a SYSTEM's'>", "1:19: white space must follow SYSTEM"},
    {"<!DOCTYPE a SYSTEM s>", "1:20: the system identifier must stand in quotes"},
    {"<!DOCTYPE a SYSTEM 's>", "1:20: the system identifier has no closing quote"},
    {"<!DOCTYPE a PUBLIC>", "1:19: white space must follow PUBLIC"},
    {"<!DOCTYPE a PUBLIC 'p'>", "1:23: white space must follow the public identifier"},
    {"<!DOCTYPE a PUBLIC 'p' >", "1:24: the system identifier must stand in quotes"},
    {"<!DOCTYPE a PUBLIC 'p''s'>", "1:23: white space must follow the public identifier"},
    {"<!DOCTYPE a PUBLIC 'p{}' 's'>", "1:22: this character must not stand in a public identifier"},
    {"<!DOCTYPE a PUBLIC \"p\tq\" 's'>", "1:22: this character must not stand in a public identifier"},
    {"<!DOCTYPE a [", "1:13: the document type's \"[\" is not closed"},
    {"<!DOCTYPE a [\n<!--", "2:1: the comment is not closed"},
    {"<!DOCTYPE a [<?b", "1:14: the processing instruction is not closed"},
    {"<!DOCTYPE a [<?xml version='1.0'?>]>",
     "1:14: the XML declaration must stand at the very beginning, once"},
    {"<!DOCTYPE a [text]>", "1:14: only declarations may stand between the document type's brackets"},
    {"<!DOCTYPE a [<b/>]>", "1:14: only declarations may stand between the document type's brackets"},
    {"<!DOCTYPE a [%]>", "1:15: a name must follow \"%\""},
    {"<!DOCTYPE a [%p]>", "1:16: \";\" must end the reference to a parameter entity"},
    {"<!DOCTYPE a [<!OTHER b>]>", "1:14: this is no declaration that a document type may hold"},
    {"<!DOCTYPE a [<![IGNORE[]]>]>", "1:14: this is no declaration that a document type may hold"},
    {"<!DOCTYPE a [<!ELEMENT>]>", "1:23: white space must follow <!ELEMENT"},
    {"<!DOCTYPE a [<!ENTITYb 'c'>]>", "1:22: white space must follow <!ENTITY"},
    {"<!DOCTYPE a [<!ENTITY b 'c]>", "1:25: the literal has no closing quote"},
    {"<!DOCTYPE a [<!ENTITY b <c>]>", "1:25: \"<\" must not stand in a declaration"},
    {"<!DOCTYPE a [<!ENTITY b [c>]>", "1:25: \"[\" must not stand in a declaration"},
    {"<!DOCTYPE a [<!ENTITY b ]>]>", "1:25: \"]\" must not stand in a declaration"},
    {"<!DOCTYPE a [<!ATTLIST b", "1:14: the declaration is not closed"},
};

TEST(DocumentType, isRefusedWithPlaceAndSentence) {
    // Those that are cut off go to the end of the document; the others have a root behind them.
    for (const Fault& fault : documentTypeFaults) {
        const bool isClosed = fault.text.ends_with('>');
        EXPECT_EQ(faultOf(fault.text + (isClosed ? "<a/>" : "")), fault.detail) << fault.text;
    }
}

TEST(DocumentType, isKeptAsItStands) {
    const char* const types[] = {
        "<!DOCTYPE a>",
        "<!DOCTYPE\n a\t>",
        "<!DOCTYPE a[]>",
        "<!DOCTYPE a SYSTEM 'http://example.org/\"a\".dtd' >",
        "<!DOCTYPE a SYSTEM \"\" [ ] >",
        "<!DOCTYPE a PUBLIC \"-//X 'Y'//Z\" 's'[%p;]>",
        "<!DOCTYPE a [<!-- ] > --> <?b ] > ?>\n<!ELEMENT a (#PCDATA|b)*><!ATTLIST a b CDATA '>]'>]>",
        "<!DOCTYPE a [\n<!ENTITY e \"<x>]\"><!ENTITY % p SYSTEM 's'><!NOTATION n PUBLIC 'x'> %p; ]>",
    };
    for (const std::string type : types) EXPECT_EQ(saved(parsed(type + "<a/>")), type + "<a/>");
}

TEST(DocumentType, declaresNothing) {
    const auto document = parsed("<!DOCTYPE a [<!ATTLIST a b CDATA 'c' n NMTOKEN #IMPLIED>]><a n=' x  y '/>");
    EXPECT_EQ(describeTree(document.get()), "1 a n=[ x  y ]\n")
        << "no default value, and the declared type changes nothing";
}

}  // namespace
