// Constructing, loading and saving.

#include "platform/xml/xml.h"

#include "tests/platform/xml/xml_documents.h"
#include "tests/testing/scratch_directory.h"

namespace {

using namespace testing;

int outstanding = 0;
bool isExhausted = false;

const zAllocator counting{[](std::size_t size) -> void* {
                              if (isExhausted) return nullptr;
                              ++outstanding;
                              return std::malloc(size);
                          },
                          [](void* block) {
                              if (block != nullptr) --outstanding;
                              std::free(block);
                          }};

TEST(Construct, makesAnEmptyDocument) {
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_Construct(document.out(), nullptr), zStatus_Success);
    Ta::Buffer buffer;
    EXPECT_EQ(zXml_SaveBytes(document.get(), buffer.data(), buffer.size(), nullptr), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument),
              "the document has no root element, without which it is none");
}

TEST(Load, readsAFile) {
    const ScratchDirectory directory;
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_Load(document.out(), directory.write("a.xml", "<a>t</a>").c_str(), nullptr),
              zStatus_Success);
    EXPECT_EQ(textOf(document, zXml_Root(document.get())), "t");
}

TEST(Load, tellsMissingFromMalformed) {
    const ScratchDirectory directory;
    zHandle document = &outstanding;
    EXPECT_EQ(zXml_Load(&document, directory.path("none.xml").c_str(), nullptr), zStatus_NotFound);
    EXPECT_EQ(static_cast<int>(zStatus_NotFound), -999);
    EXPECT_EQ(document, nullptr);
    const std::string broken = directory.write("broken.xml", "<a>\n  <b></a>");
    document = &outstanding;
    EXPECT_EQ(zXml_Load(&document, broken.c_str(), nullptr), zStatus_Malformed);
    EXPECT_EQ(failure::detailOf(zStatus_Malformed), broken + ":2:6: </a> closes <b>");
    EXPECT_EQ(document, nullptr);
    const std::string other = directory.write("other.xml", "<?xml version='1.0' encoding='KOI8-R'?><a/>");
    EXPECT_EQ(zXml_Load(&document, other.c_str(), nullptr), zStatus_Unsupported);
    EXPECT_EQ(failure::detailOf(zStatus_Unsupported),
              other + ":1:31: the encoding \"KOI8-R\" is not supported");
    EXPECT_EQ(zXml_Load(&document, directory.path().c_str(), nullptr), zStatus_IoError);
    EXPECT_EQ(zXml_Load(&document, directory.write("empty.xml", "").c_str(), nullptr), zStatus_Malformed);
}

TEST(LoadBytes, needsNoZeroBehindTheBytes) {
    const std::string text = "<a>t</a>";
    for (std::size_t size = 0; size <= text.size(); ++size) {
        const std::vector<char> exact(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
        Ta::Object<zHandle> document;
        EXPECT_EQ(zXml_LoadBytes(document.out(), exact.data(), size, nullptr),
                  size == text.size() ? zStatus_Success : zStatus_Malformed);
    }
}

TEST(LoadBytes, copiesThem) {
    std::string text = "<a>t</a>";
    const auto document = parsed(text);
    text.assign(text.size(), '#');
    EXPECT_EQ(saved(document), "<a>t</a>");
}

TEST(LoadBytes, refusesNull) {
    zHandle document = &outstanding;
    EXPECT_EQ(zXml_LoadBytes(&document, nullptr, 1, nullptr), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the bytes must not be null");
    EXPECT_EQ(document, nullptr);
    EXPECT_EQ(zXml_LoadBytes(&document, nullptr, 0, nullptr), zStatus_Malformed) << "an empty document";
    EXPECT_EQ(zXml_FromText(&document, nullptr, nullptr), zStatus_Malformed);
}

TEST(FromText, endsAtTheZero) {
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_FromText(document.out(), "<a/>\0<b/>", nullptr), zStatus_Success);
    EXPECT_EQ(saved(document), "<a/>");
}

TEST(Save, replacesAFile) {
    const ScratchDirectory directory;
    const std::string path = directory.write("a.xml", "old and longer than what replaces it");
    const auto document = parsed("<a/>");
    EXPECT_EQ(zXml_Save(document.get(), path.c_str()), zStatus_Success);
    EXPECT_EQ(directory.read("a.xml"), "<a/>");
    EXPECT_EQ(directory.entries(), std::vector<std::string>{"a.xml"});
}

TEST(Save, leavesTheFileWhenItFails) {
    const ScratchDirectory directory;
    const std::string path = directory.write("a.xml", "old");
    Ta::Object<zHandle> empty;
    ASSERT_EQ(zXml_Construct(empty.out(), nullptr), zStatus_Success);
    EXPECT_EQ(zXml_Save(empty.get(), path.c_str()), zStatus_BadArgument);
    EXPECT_EQ(directory.read("a.xml"), "old");
    EXPECT_NE(zXml_Save(parsed("<a/>").get(), directory.path("none/a.xml").c_str()), zStatus_Success);
    EXPECT_EQ(directory.entries(), std::vector<std::string>{"a.xml"});
}

TEST(Allocator, givesTheTextAndTakesItBack) {
    Ta::Object<zHandle> document;
    ASSERT_EQ(zXml_FromText(document.out(), "<a/>", &counting), zStatus_Success);
    EXPECT_GT(outstanding, 0);
    void* bytes = nullptr;
    std::size_t size = 0;
    ASSERT_EQ(zXml_SaveBytes(document.get(), &bytes, &size, &counting), zStatus_Success);
    zAllocator_Release(&counting, bytes);
    document = nullptr;
    EXPECT_EQ(outstanding, 0);
    EXPECT_EQ(zXml_FromText(document.out(), "<a>", &counting), zStatus_Malformed);
    EXPECT_EQ(zXml_FromText(document.out(), "<?xml version='1.0' encoding='l1'?><a>\xE9</a>", &counting),
              zStatus_Success);
    document = nullptr;
    EXPECT_EQ(outstanding, 0);
}

TEST(Allocator, mayHaveNothingLeft) {
    const auto document = parsed("<a/>");
    isExhausted = true;
    Ta::Object<zHandle> none;
    EXPECT_EQ(zXml_Construct(none.out(), &counting), zStatus_NoMemory);
    EXPECT_EQ(zXml_FromText(none.out(), "<a/>", &counting), zStatus_NoMemory);
    void* bytes = &outstanding;
    std::size_t size = 1;
    EXPECT_EQ(zXml_SaveBytes(document.get(), &bytes, &size, &counting), zStatus_NoMemory);
    EXPECT_EQ(bytes, nullptr);
    isExhausted = false;
    EXPECT_EQ(outstanding, 0);
}

}  // namespace
