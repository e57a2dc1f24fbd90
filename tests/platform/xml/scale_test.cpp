// Documents of absurd shapes: each is read, edited and saved without a call stack's worth of depth. Every
// test would run for minutes if anything in it cost more than linear time.

#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

/// How often things are repeated.
constexpr std::size_t scale = 100'000;

TEST(Scale, nestsAMillionDeep) {
    const std::size_t depth = 10 * scale;
    const std::string text = repeated("<a>", depth) + repeated("</a>", depth);
    const auto document = parsed(text);
    EXPECT_EQ(saved(document), text);
    zXmlItem item = zXml_Root(document.get());
    for (zXmlItem child = item; child != nullptr; child = zXml_FirstChild(document.get(), item)) item = child;
    ASSERT_EQ(zXml_SetAttrText(document.get(), item, "b", "1"), zStatus_Success);
    EXPECT_EQ(saved(document), repeated("<a>", depth - 1) + "<a b=\"1\">" + repeated("</a>", depth));
    const auto target = parsed("<x/>");
    ASSERT_EQ(zXml_CopyItem(target.get(), zXml_Root(target.get()), nullptr, document.get(),
                            zXml_Root(document.get()), nullptr),
              zStatus_Success);
    ASSERT_EQ(zXml_DeleteItem(document.get(), zXml_FirstChild(document.get(), zXml_Root(document.get()))),
              zStatus_Success);
    EXPECT_EQ(saved(document), "<a></a>");
    EXPECT_EQ(zXml_SetItemText(document.get(), item, "x"), zStatus_BadArgument)
        << "it is buried with the rest";
    EXPECT_EQ(faultOf(repeated("<a>", depth)),
              "1:" + std::to_string(3 * depth + 1) +
                  ": the document ends inside <a>, opened at 1:" + std::to_string(3 * depth - 2));
}

TEST(Scale, tellsManyAttributesApart) {
    const std::size_t count = scale;
    std::string tag = "<a";
    for (std::size_t i = 0; i < count; ++i) tag += " n" + std::to_string(i) + "=''";
    const auto document = parsed(tag + "/>");
    EXPECT_EQ(saved(document), tag + "/>");
    EXPECT_EQ(valueOf(document, zXml_Root(document.get()), ("n" + std::to_string(count - 1)).c_str()), "");
    EXPECT_EQ(faultOf(tag + " n7=''/>"),
              "1:" + std::to_string(tag.size() + 2) + ": the attribute \"n7\" appears twice");
}

TEST(Scale, takesHugeNamesTextsAndMarkup) {
    const std::string name = repeated("\xC3\xA9x", 5 * scale);
    const std::string text = "<" + name + " " + name + "='" + name + "'><!--" + name + "-->" + name + "<?" +
                             name + "?></" + name + ">";
    const auto document = parsed(text);
    EXPECT_EQ(saved(document), text);
    zXmlItem root = zXml_Root(document.get());
    ASSERT_EQ(zXml_AddItem(document.get(), root, name.c_str(), nullptr), zStatus_Success);
    ASSERT_EQ(zXml_SetAttrText(document.get(), root, name.c_str(), ""), zStatus_Success);
    EXPECT_EQ(saved(document).size(), text.size() - name.size() + name.size() + 3);
    EXPECT_STREQ(zXml_ItemName(document.get(), root), name.c_str());
}

TEST(Scale, readsLongRunsOfEveryKind) {
    const std::size_t count = scale;
    for (const char* part :
         {"&amp;", "&#65;", "]", "]]", "<!---->", "<?p?>", "<![CDATA[]]>", "\r", " ", "\xC3\xA9"}) {
        const std::string text = "<a>" + repeated(part, count) + "</a>";
        EXPECT_EQ(saved(parsed(text)), text) << part;
    }
    for (const char* part : {" ", "<!---->", "<?p?>"}) {
        const std::string text = repeated(part, count) + "<a" + std::string(count, '\n') + "/>";
        EXPECT_EQ(saved(parsed(text)), text) << part;
    }
    const std::string subset = "<!DOCTYPE a [" + repeated("%p;<!ENTITY e '<'>", count / 4) + "]><a/>";
    EXPECT_EQ(saved(parsed(subset)), subset);
    for (const char* part : {"<!--", "<?p ", "<![CDATA[", "&", "]]", "<a b='", "<a></"})
        EXPECT_NE(faultOf("<a>" + repeated(part, count)), "accepted") << part;
}

TEST(Scale, addsManyChildren) {
    const std::size_t count = scale;
    const auto document = parsed("<a>\n</a>\n");
    zXmlItem root = zXml_Root(document.get());
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_EQ(zXml_SetAttrText(document.get(), added(document, root, "b"), "c", "1"), zStatus_Success);
    EXPECT_EQ(saved(document), "<a>\n" + repeated("  <b c=\"1\"/>\n", count) + "</a>\n");
    const auto copy = parsed("<a/>");
    const auto source = parsed("<b/>");
    for (std::size_t i = 0; i < count; ++i) {
        zXmlItem first = i % 2 == 0 ? nullptr : zXml_FirstChild(copy.get(), zXml_Root(copy.get()));
        ASSERT_EQ(zXml_CopyItem(copy.get(), zXml_Root(copy.get()), first, source.get(),
                                zXml_Root(source.get()), nullptr),
                  zStatus_Success);
    }
    EXPECT_EQ(saved(copy), "<a>\n" + repeated("  <b/>\n", count) + "</a>");
}

enum class Order { forward, backward, everySecond };

/// Deletes children in a walk by index that reads the count anew each time.
void deleteByIndex(zHandle document, zXmlItem root, Order order) {
    if (order == Order::backward) {
        while (zXml_ChildCount(document, root) > 0)
            ASSERT_EQ(
                zXml_DeleteItem(document, zXml_ChildAt(document, root, zXml_ChildCount(document, root) - 1)),
                zStatus_Success);
        return;
    }
    for (std::size_t i = 0; i < zXml_ChildCount(document, root);) {
        ASSERT_EQ(zXml_DeleteItem(document, zXml_ChildAt(document, root, i)), zStatus_Success);
        if (order == Order::everySecond) ++i;
    }
}

TEST(Scale, deletesManyChildren) {
    const std::size_t count = scale;
    const std::string text = "<a>\n" + repeated("  <b>t</b>\n", count) + "</a>\n";
    for (const Order order : {Order::forward, Order::backward, Order::everySecond}) {
        const auto document = parsed(text);
        deleteByIndex(document.get(), zXml_Root(document.get()), order);
        const std::size_t left = order == Order::everySecond ? count / 2 : 0;
        EXPECT_EQ(saved(document), "<a>\n" + repeated("  <b>t</b>\n", left) + "</a>\n");
    }
    const auto mixed = parsed("<a>" + repeated("]<b/>", count) + "</a>");
    deleteByIndex(mixed.get(), zXml_Root(mixed.get()), Order::forward);
    const auto again = parsed(saved(mixed));
    std::string buffer(count + 1, '?');
    ASSERT_EQ(zXml_ItemText(again.get(), zXml_Root(again.get()), buffer.data(), buffer.size()),
              zStatus_Success);
    EXPECT_EQ(buffer.substr(0, count), std::string(count, ']'));
}

TEST(Scale, setsOneAttributeOverAndOver) {
    const auto document = parsed("<a><b/></a>");
    for (std::size_t i = 0; i < scale; ++i)
        ASSERT_EQ(zXml_SetAttrText(document.get(), itemAt(document, "a/b"), "c", std::to_string(i).c_str()),
                  zStatus_Success);
    EXPECT_EQ(saved(document), "<a><b c=\"" + std::to_string(scale - 1) + "\"/></a>");
}

}  // namespace
