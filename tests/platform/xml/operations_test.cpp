// Handles, buffers and capacities: what every operation answers when it is called as it should not be.

#include "platform/xml/operations.h"

#include "platform/base/list.h"
#include "tests/platform/xml/xml_documents.h"

namespace {

using namespace testing;

constexpr const char* noDocument = "the handle is that of no XML document";
constexpr const char* noItem = "the item is no living element of the document";

std::string detail() {
    return std::string(failure::detailOf(zStatus_BadArgument));
}

TEST(Capacity, countsTheTerminatorOfAnAttribute) {
    for (const std::size_t capacity : {1u, 2u, 32u, 128u, 256u, 512u}) {
        const std::string fits(capacity - 1, 'x');
        const auto document = parsed("<a b='" + fits + "' c='" + fits + "y'/>");
        std::string buffer(capacity + 1, '#');
        EXPECT_EQ(zXml_AttrText(document.get(), zXml_Root(document.get()), "b", buffer.data(), capacity),
                  zStatus_Success);
        EXPECT_EQ(buffer, fits + '\0' + '#') << "nothing is written behind the capacity";
        const std::string before = buffer;
        EXPECT_EQ(zXml_AttrText(document.get(), zXml_Root(document.get()), "c", buffer.data(), capacity),
                  zStatus_DoesNotFit);
        EXPECT_EQ(failure::detailOf(zStatus_DoesNotFit), "the attribute \"c\" of <a> needs " +
                                                             std::to_string(capacity) + " bytes, " +
                                                             std::to_string(capacity - 1) + " are allowed");
        EXPECT_EQ(buffer, before) << "a failure leaves the buffer as it was";
    }
}

TEST(Capacity, countsTheTerminatorOfAText) {
    for (const std::size_t capacity : {1u, 32u, 128u, 256u, 512u}) {
        const std::string fits(capacity - 1, 'x');
        const auto document = parsed("<r><a>" + fits + "</a><b>" + fits + "y</b></r>");
        std::string buffer(capacity + 1, '#');
        EXPECT_EQ(zXml_ItemText(document.get(), itemAt(document, "r/a"), buffer.data(), capacity),
                  zStatus_Success);
        EXPECT_EQ(buffer, fits + '\0' + '#');
        EXPECT_EQ(zXml_ItemText(document.get(), itemAt(document, "r/b"), buffer.data(), capacity),
                  zStatus_DoesNotFit);
        EXPECT_EQ(failure::detailOf(zStatus_DoesNotFit), "the text of <b> needs " + std::to_string(capacity) +
                                                             " bytes, " + std::to_string(capacity - 1) +
                                                             " are allowed");
        EXPECT_STREQ(buffer.c_str(), "") << "a failure leaves the buffer empty";
    }
}

TEST(Capacity, countsWhatIsReadNotWhatIsWritten) {
    const auto document = parsed("<a b='&#x20AC;&amp;'>&lt;<![CDATA[&]]></a>");
    char buffer[5];
    EXPECT_EQ(zXml_AttrText(document.get(), zXml_Root(document.get()), "b", buffer, 5), zStatus_Success);
    EXPECT_STREQ(buffer, "\xE2\x82\xAC&");
    EXPECT_EQ(zXml_AttrText(document.get(), zXml_Root(document.get()), "b", buffer, 4), zStatus_DoesNotFit);
    EXPECT_EQ(zXml_ItemText(document.get(), zXml_Root(document.get()), buffer, 3), zStatus_Success);
    EXPECT_STREQ(buffer, "<&");
}

TEST(ChildText, readsTheFirstChildOfTheName) {
    const auto document = parsed("<a><b>1</b><c/><b>2</b></a>");
    zXmlItem root = zXml_Root(document.get());
    char buffer[8] = "old";
    EXPECT_EQ(zXml_ChildText(document.get(), root, "b", buffer, sizeof buffer), zStatus_Success);
    EXPECT_STREQ(buffer, "1");
    EXPECT_EQ(zXml_ChildText(document.get(), root, "c", buffer, sizeof buffer), zStatus_Success);
    EXPECT_STREQ(buffer, "");
}

TEST(ChildText, leavesAnEmptyTextWhenItFails) {
    const auto document = parsed("<a><b>long text</b></a>");
    zXmlItem root = zXml_Root(document.get());
    char buffer[8] = "old";
    EXPECT_EQ(zXml_ChildText(document.get(), root, "x", buffer, sizeof buffer), zStatus_NotFound);
    EXPECT_STREQ(buffer, "");
    buffer[0] = '#';
    EXPECT_EQ(zXml_ChildText(document.get(), root, "b", buffer, sizeof buffer), zStatus_DoesNotFit);
    EXPECT_STREQ(buffer, "");
    buffer[0] = '#';
    EXPECT_EQ(zXml_ChildText(document.get(), root, nullptr, buffer, sizeof buffer), zStatus_BadArgument);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(detail(), "the path must not be null");
}

TEST(AttrText, saysWhichAttributeIsMissing) {
    const auto document = parsed("<a b='1'/>");
    char buffer[8] = "old";
    EXPECT_EQ(zXml_AttrText(document.get(), zXml_Root(document.get()), "c", buffer, sizeof buffer),
              zStatus_NotFound);
    EXPECT_EQ(failure::detailOf(zStatus_NotFound), "<a> has no attribute \"c\"");
    EXPECT_STREQ(buffer, "old");
}

TEST(Buffers, mustHaveRoom) {
    const auto document = parsed("<a b='1'><c/></a>");
    zXmlItem root = zXml_Root(document.get());
    char buffer[4] = "old";
    const auto refused = [&](zStatus status) {
        EXPECT_EQ(status, zStatus_BadArgument);
        EXPECT_EQ(detail(), "the buffer has no room for a text");
        EXPECT_STREQ(buffer, "old");
    };
    refused(zXml_ItemText(document.get(), root, nullptr, 4));
    refused(zXml_ItemText(document.get(), root, buffer, 0));
    refused(zXml_ChildText(document.get(), root, "c", nullptr, 4));
    refused(zXml_ChildText(document.get(), root, "c", buffer, 0));
    refused(zXml_AttrText(document.get(), root, "b", nullptr, 4));
    refused(zXml_AttrText(document.get(), root, "b", buffer, 0));
}

TEST(Arguments, mustNotBeNull) {
    const auto document = parsed("<a b='1'/>");
    zXmlItem root = zXml_Root(document.get());
    char buffer[4];
    EXPECT_EQ(zXml_AttrText(document.get(), root, nullptr, buffer, 4), zStatus_BadArgument);
    EXPECT_EQ(detail(), "the name must not be null");
    EXPECT_EQ(zXml_AddItem(document.get(), root, nullptr, nullptr), zStatus_BadArgument);
    EXPECT_EQ(detail(), "the name must not be null");
    EXPECT_EQ(zXml_SetItemText(document.get(), root, nullptr), zStatus_BadArgument);
    EXPECT_EQ(detail(), "the text must not be null");
    EXPECT_EQ(zXml_SetAttrText(document.get(), root, nullptr, "x"), zStatus_BadArgument);
    EXPECT_EQ(detail(), "the name must not be null");
    EXPECT_EQ(zXml_SetAttrText(document.get(), root, "b", nullptr), zStatus_BadArgument);
    EXPECT_EQ(detail(), "the text must not be null");
    EXPECT_EQ(saved(document), "<a b='1'/>");
}

/// Calls everything with `document` and `item`; each must answer a failure with `reason`, null or 0.
void expectRefused(zHandle document, zXmlItem item, const char* reason) {
    char buffer[8] = "old";
    const auto refused = [&](zStatus status) {
        EXPECT_EQ(status, zStatus_BadArgument);
        EXPECT_EQ(detail(), reason);
    };
    EXPECT_EQ(zXml_FirstChild(document, item), nullptr);
    EXPECT_EQ(zXml_NextSibling(document, item), nullptr);
    EXPECT_EQ(zXml_ChildCount(document, item), 0u);
    EXPECT_EQ(zXml_ChildAt(document, item, 0), nullptr);
    EXPECT_EQ(zXml_ItemName(document, item), nullptr);
    refused(zXml_AttrText(document, item, "b", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "old");
    EXPECT_EQ(zXml_ItemText(document, item, buffer, sizeof buffer), zStatus_BadArgument);
    EXPECT_STREQ(buffer, "");
    refused(zXml_SetItemText(document, item, "x"));
    refused(zXml_SetAttrText(document, item, "b", "x"));
    refused(zXml_DeleteItem(document, item));
    if (item == nullptr) return;  // which stands for the top of a document here
    zXmlItem found = item;
    refused(zXml_FindChild(document, item, "c", &found));
    EXPECT_EQ(found, nullptr);
    refused(zXml_ChildText(document, item, "c", buffer, sizeof buffer));
    found = item;
    refused(zXml_AddItem(document, item, "c", &found));
    EXPECT_EQ(found, nullptr);
}

TEST(Handles, ofDeletedItemsAreDead) {
    const auto document = parsed("<a><b b='1'><c b='2'>t</c></b></a>");
    zXmlItem b = itemAt(document, "a/b");
    zXmlItem c = itemAt(document, "a/b/c");
    zXmlItem d = added(document, b, "d");
    ASSERT_EQ(zXml_DeleteItem(document.get(), b), zStatus_Success);
    for (zXmlItem dead : {b, c, d}) expectRefused(document.get(), dead, noItem);
    EXPECT_EQ(saved(document), "<a></a>");
}

TEST(Handles, ofOtherDocumentsAreRefused) {
    const auto document = parsed("<a><b/></a>");
    const auto other = parsed("<a><b/></a>");
    expectRefused(document.get(), itemAt(other, "a/b"), noItem);
    auto* inside = reinterpret_cast<zXmlItem>(reinterpret_cast<char*>(zXml_Root(document.get())) + (1 << 20));
    expectRefused(document.get(), inside, noItem);
    expectRefused(document.get(), nullptr, noItem);
}

TEST(Handles, ofNoDocumentAreRefused) {
    const auto document = parsed("<a/>");
    Ta::Object<zHandle> list;
    ASSERT_EQ(zArrayList_Construct(list.out(), zItemType_String, 0, nullptr), zStatus_Success);
    for (zHandle handle : {static_cast<zHandle>(nullptr), list.get()}) {
        zXmlItem root = zXml_Root(document.get());
        EXPECT_EQ(zXml_Root(handle), nullptr);
        EXPECT_EQ(zXml_FindRoot(handle, &root), zStatus_BadArgument);
        EXPECT_EQ(detail(), noDocument);
        EXPECT_EQ(root, nullptr);
        EXPECT_EQ(zXml_FindChild(handle, nullptr, "a", &root), zStatus_BadArgument);
        EXPECT_EQ(detail(), noDocument);
        EXPECT_EQ(zXml_AddItem(handle, nullptr, "a", nullptr), zStatus_BadArgument);
        EXPECT_EQ(detail(), noDocument);
        EXPECT_EQ(zXml_DeleteItem(handle, zXml_Root(document.get())), zStatus_BadArgument);
        EXPECT_EQ(detail(), noDocument);
        void* bytes = &root;
        std::size_t size = 1;
        EXPECT_EQ(zXml_SaveBytes(handle, &bytes, &size, nullptr), zStatus_BadArgument);
        EXPECT_EQ(detail(), noDocument);
        EXPECT_EQ(bytes, nullptr);
        EXPECT_EQ(size, 0u);
        EXPECT_EQ(zXml_Save(handle, "never written"), zStatus_BadArgument);
    }
}

}  // namespace
