// Encodings: which are read, by which names and marks, and that every document is saved as the bytes it was.

#include "platform/xml/encoding.h"

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;
using namespace std::string_literals;
using xml::Encoding;

/// `text`, which is UTF-8, in `encoding`, its byte order mark in front where 16 bits need one.
std::string encoded(std::string_view text, Encoding encoding) {
    std::string bytes;
    if (encoding == Encoding::utf16LittleEndian) bytes = "\xFF\xFE";
    if (encoding == Encoding::utf16BigEndian) bytes = "\xFE\xFF";
    if (encoding == Encoding::utf8) return std::string(text);
    xml::encodeText(bytes, text, encoding);
    return bytes;
}

std::string declared(std::string_view name) {
    return "<?xml version='1.0' encoding='" + std::string(name) + "'?>";
}

struct Named {
    const char* name;
    Encoding encoding;
};
constexpr Named declarations[] = {
    {"UTF-8", Encoding::utf8},
    {"UTF-16", Encoding::utf16LittleEndian},
    {"utf-16", Encoding::utf16BigEndian},
    {"UTF-16LE", Encoding::utf16LittleEndian},
    {"UTF-16BE", Encoding::utf16BigEndian},
    {"US-ASCII", Encoding::ascii},
    {"ISO-8859-1", Encoding::latin1},
    {"Windows-1252", Encoding::windows1252},
};

TEST(Encoding, savesEveryLineEndInEveryEncodingAsItWas) {
    for (const Named& named : declarations) {
        for (const std::string lineEnd : {"\n", "\r\n", "\r"}) {
            const std::string text = declared(named.name) + lineEnd + "<a b='1' >" + lineEnd + "\t<c/>" +
                                     lineEnd + "</a>" + lineEnd;
            const std::string bytes = encoded(text, named.encoding);
            EXPECT_EQ(saved(parsed(bytes)), bytes) << named.name;
        }
    }
}

TEST(Encoding, readsEveryByteOfEightBits) {
    for (const Named& named : declarations) {
        if (named.encoding < Encoding::ascii) continue;
        for (unsigned byte = 0x80; byte < 0x100; ++byte) {
            const std::string text = declared(named.name) + "<a>" + static_cast<char>(byte) + "</a>";
            const bool isHole = byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
            if (named.encoding == Encoding::ascii || (named.encoding == Encoding::windows1252 && isHole)) {
                EXPECT_NE(faultOf(text), "accepted") << byte;
            } else {
                EXPECT_EQ(saved(parsed(text)), text) << byte;
            }
        }
    }
    const auto latin1 = parsed(declared("ISO-8859-1") + "<a>\xE9\x80</a>");
    EXPECT_EQ(textOf(latin1, zXml_Root(latin1.get())), "\xC3\xA9\xC2\x80");
    const auto windows = parsed(declared("windows-1252") + "<a>\xE9\x80\x9F</a>");
    EXPECT_EQ(textOf(windows, zXml_Root(windows.get())), "\xC3\xA9\xE2\x82\xAC\xC5\xB8");
}

TEST(Encoding, readsTheSignsOfWindows1252) {
    const auto document = parsed(
        declared("windows-1252") +
        "<a>"
        "\x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C"
        "\x9E\x9F\xA0\xFF</a>");
    EXPECT_EQ(textOf(document, zXml_Root(document.get())), "€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ\u00A0ÿ");
}

TEST(Encoding, readsEveryPlaneInSixteenBits) {
    const std::string text =
        "<\xC3\xA9 b='\xE2\x82\xAC'>\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\xEF\xBF\xBD</\xC3\xA9>";
    for (const Encoding encoding : {Encoding::utf16LittleEndian, Encoding::utf16BigEndian}) {
        const std::string bytes = encoded(text, encoding);
        const auto document = parsed(bytes);
        EXPECT_EQ(saved(document), bytes);
        EXPECT_EQ(describeTree(document.get()),
                  "1 \xC3\xA9 b=[\xE2\x82\xAC] \"\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\xEF\xBF\xBD\"\n");
    }
    const auto marked = parsed("\xEF\xBB\xBF<a>\xEF\xBB\xBF</a>");
    EXPECT_EQ(saved(marked), "\xEF\xBB\xBF<a>\xEF\xBB\xBF</a>");
    EXPECT_EQ(textOf(marked, zXml_Root(marked.get())), "\xEF\xBB\xBF") << "only the first is a mark";
}

TEST(Encoding, knowsItsUsualNamesInAnyCase) {
    for (const char* name :
         {"UTF8",   "utf-8",   "csUTF8",      "ascii",      "ISO646-US", "ISO-ir-6",     "us", "IBM367",
          "cp367",  "csASCII", "iso8859-1",   "ISO_8859-1", "latin1",    "Latin-1",      "l1", "iso-ir-100",
          "IBM819", "CP819",   "csISOLatin1", "cp1252",     "cp-1252",   "cswindows1252"})
        EXPECT_EQ(faultOf(declared(name) + "<a/>"), "accepted") << name;
    for (const char* name : {"UTF-16", "utf16", "csUTF16", "UTF-16LE"})
        EXPECT_EQ(faultOf(encoded(declared(name) + "<a/>", Encoding::utf16LittleEndian)), "accepted") << name;
    for (const char* name :
         {"UTF-7", "UTF-32", "ISO-8859-2", "ISO-8859-15", "windows-1251", "Shift_JIS", "x"})
        EXPECT_EQ(faultOf(declared(name) + "<a/>"),
                  "unsupported: 1:31: the encoding \"" + std::string(name) + "\" is not supported");
}

TEST(Encoding, mustAgreeWithTheByteOrderMark) {
    EXPECT_EQ(faultOf("\xEF\xBB\xBF" + declared("UTF-8") + "<a/>"), "accepted");
    EXPECT_EQ(faultOf("\xEF\xBB\xBF" + declared("ISO-8859-1") + "<a/>"),
              "1:31: the declaration says ISO-8859-1, the byte order mark UTF-8");
    EXPECT_EQ(faultOf("\xEF\xBB\xBF" + declared("UTF-16") + "<a/>"),
              "1:31: the declaration says UTF-16, the byte order mark UTF-8");
    EXPECT_EQ(faultOf(encoded(declared("UTF-8") + "<a/>", Encoding::utf16LittleEndian)),
              "1:31: the declaration says UTF-8, the byte order mark UTF-16LE");
    EXPECT_EQ(faultOf(encoded(declared("UTF-16BE") + "<a/>", Encoding::utf16LittleEndian)),
              "1:31: the declaration says UTF-16BE, the byte order mark UTF-16LE");
    EXPECT_EQ(faultOf(declared("UTF-16") + "<a/>"),
              "1:31: the declaration says UTF-16, which the document is not");
}

TEST(Encoding, refusesWhatItDoesNotRead) {
    const std::pair<std::string, const char*> documents[] = {
        {"\xFF\xFE\0\0<\0\0\0"s, "unsupported: 1:1: UTF-32 is not supported"},
        {"\0\0\xFE\xFF\0\0\0<"s, "unsupported: 1:1: UTF-32 is not supported"},
        {"<\0a\0/\0>\0"s, "unsupported: 1:1: text of 16 or 32 bits a character needs a byte order mark"},
        {"\0<\0a\0/\0>"s, "unsupported: 1:1: text of 16 or 32 bits a character needs a byte order mark"},
        {"\0\0\0<"s, "unsupported: 1:1: text of 16 or 32 bits a character needs a byte order mark"},
        {"\x4C\x6F\xA7\x94\x93", "unsupported: 1:1: EBCDIC is not supported"},
    };
    for (const auto& [bytes, detail] : documents) EXPECT_EQ(faultOf(bytes), detail);
}

TEST(Encoding, namesThePlaceWhereBytesBreakIt) {
    EXPECT_EQ(faultOf(declared("US-ASCII") + "\n<a>\x80</a>"), "2:4: the byte 0x80 is none of US-ASCII");
    EXPECT_EQ(faultOf(declared("windows-1252") + "\n<a>\xE9\x81</a>"),
              "2:5: the byte 0x81 is none of Windows-1252");
    EXPECT_EQ(faultOf("\xFF\xFE<\0a"s), "1:2: the last character is cut in half");
    EXPECT_EQ(faultOf("\xFF\xFE<\0a\0>\0\0\xD8<\0"s), "1:4: half a surrogate pair stands alone");
    EXPECT_EQ(faultOf("\xFF\xFE<\0a\0>\0\0\xDC\0\xD8"s), "1:4: half a surrogate pair stands alone");
    EXPECT_EQ(faultOf("\xFE\xFF\0<\0a\0>\xD8\0"s), "1:4: half a surrogate pair stands alone");
    EXPECT_EQ(faultOf(encoded("<a>\n</b>", Encoding::utf16BigEndian)), "2:1: </b> closes <a>");
}

TEST(Encoding, holdsWhatIsWrittenIntoIt) {
    for (const Named& named : declarations) {
        const auto document = parsed(encoded(declared(named.name) + "<a>\n</a>", named.encoding));
        const char* text = "e\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
        zXmlItem root = zXml_Root(document.get());
        EXPECT_EQ(zXml_SetAttrText(document.get(), root, "v", text), zStatus_Success);
        EXPECT_EQ(zXml_SetItemText(document.get(), added(document, root, "t"), text), zStatus_Success);
        const auto again = parsed(saved(document));
        EXPECT_EQ(describeTree(again.get()),
                  "1 a v=[" + std::string(text) + "]\n2 t \"" + std::string(text) + "\"\n")
            << named.name;
    }
}

TEST(Encoding, turnsWhatItCannotHoldIntoReferences) {
    const auto document = parsed(declared("windows-1252") + "<a/>");
    ASSERT_EQ(zXml_SetItemText(document.get(), zXml_Root(document.get()),
                               "\xC3\xA9\xE2\x82\xAC\xE2\x88\x9E\xC2\x81"),
              zStatus_Success);
    EXPECT_EQ(saved(document), declared("windows-1252") + "<a>\xE9\x80&#8734;&#129;</a>");
}

TEST(Encoding, refusesNamesItCannotHold) {
    const auto document = parsed(declared("US-ASCII") + "<a/>");
    zXmlItem root = zXml_Root(document.get());
    EXPECT_EQ(zXml_AddItem(document.get(), root, "\xC3\xA9", nullptr), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the name \"\xC3\xA9\" cannot be written in US-ASCII");
    EXPECT_EQ(zXml_SetAttrText(document.get(), root, "\xC3\xA9", "x"), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the name \"\xC3\xA9\" cannot be written in US-ASCII");
    EXPECT_EQ(saved(document), declared("US-ASCII") + "<a/>");
}

}  // namespace
