#include "TaVekUtil/edit/script_index.h"

#include <gmock/gmock.h>

#include <random>

#include "TaVekUtil/edit/startup_script.h"
#include "platform/base/file.h"
#include "platform/base/text.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::document;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ScratchDirectory;

// ---- The index alone ------------------------------------------------------------------------------------

struct Indexed {
    Ta::Object<void*> script;
    ScriptIndex index;

    explicit Indexed(const std::string& text) : script(document(text)), index(script.get()) {}

    zXmlItem child(std::size_t position) const {
        return zXml_ChildAt(script.get(), zXml_Root(script.get()), position);
    }
    void remove(zXmlItem item) {
        index.removed(item);
        EXPECT_EQ(zXml_DeleteItem(script.get(), item), zStatus_Success);
    }
    zXmlItem add(const char* element, const char* name) {
        zXmlItem item = nullptr;
        EXPECT_EQ(zXml_AddItem(script.get(), zXml_Root(script.get()), element, &item), zStatus_Success);
        EXPECT_EQ(zXml_SetAttrText(script.get(), item, "name", name), zStatus_Success);
        index.added(item);
        return item;
    }
};

TEST(ScriptIndex, knowsTheFirstFile) {
    Indexed script("<S><Other/><File name='a'/><File name='b'/></S>");
    EXPECT_EQ(script.index.firstFile(), script.child(1));
    script.remove(script.child(2));
    script.remove(script.child(1));
    EXPECT_EQ(script.index.firstFile(), nullptr);
    EXPECT_THAT(script.index.namedFromFirstFile("a"), IsEmpty());
    script.add("Other", "a");
    const zXmlItem file = script.add("File", "c");
    EXPECT_EQ(script.index.firstFile(), file);
    EXPECT_THAT(script.index.namedFromFirstFile("a"), IsEmpty()) << "it stands before the first File";
}

TEST(ScriptIndex, findsNamesFromTheFirstFileOnInDocumentOrder) {
    Indexed script(
        "<S><Other name='a'/><File name='x'/><Other name='A'/><File name='b'/><File name='a'/></S>");
    EXPECT_THAT(script.index.namedFromFirstFile("a"), ElementsAre(script.child(2), script.child(4)));
    const zXmlItem added = script.add("File", "a");
    EXPECT_THAT(script.index.namedFromFirstFile("A"), ElementsAre(script.child(2), script.child(4), added));
    script.remove(script.child(2));
    EXPECT_THAT(script.index.namedFromFirstFile("a"), ElementsAre(script.child(3), added));
}

TEST(ScriptIndex, stopsASearchAtTheMatchOrAnUnreadableNameBeforeIt) {
    Indexed script("<S><Other/><File name='a'/><File/><File name='b'/></S>");
    EXPECT_EQ(script.index.fileSearchStop("a"), script.child(1));
    EXPECT_EQ(script.index.fileSearchStop("b"), script.child(2));
    EXPECT_EQ(script.index.fileSearchStop("none"), script.child(2));
    script.remove(script.child(2));
    EXPECT_EQ(script.index.fileSearchStop("b"), script.child(2));
    EXPECT_EQ(script.index.fileSearchStop("none"), nullptr);
}

TEST(ScriptIndex, indexesADocumentWithoutEntries) {
    Indexed script("<S/>");
    EXPECT_EQ(script.index.firstFile(), nullptr);
    EXPECT_EQ(script.index.fileSearchStop("a"), nullptr);
    EXPECT_THAT(script.index.namedFromFirstFile("a"), IsEmpty());
}

// ---- Against plain walks --------------------------------------------------------------------------------

/// Script editing without an index: each edit parses the script, walks it, and writes it back.
namespace plain {

Ta::Object<void*> parse(zHandle archive, const char* operation) {
    std::int64_t index = 0;
    Ta::Check(zArchive_Find(archive, "script.xml", &index), operation);
    Ta::Object<void*> script;
    Ta::Check(zXml_LoadBytes(script.out(), zArchive_FileData(archive, index),
                             static_cast<std::size_t>(zArchive_FileSize(archive, index)), nullptr),
              operation);
    return script;
}

void write(zHandle archive, zHandle script, const char* operation) {
    Ta::Buffer bytes;
    Ta::Check(zXml_SaveBytes(script, bytes.data(), bytes.size(), nullptr), operation);
    Ta::Check(zArchive_DeleteFile(archive, "script.xml"), operation);
    Ta::Check(zArchive_AddData(archive, bytes.bytes(), bytes.byteCount(), "script.xml", 0), operation);
}

void deletePrevious(zHandle script, zHandle archive, const char* name) {
    constexpr const char* operation = "TaVekUtil_DeletePreviousFiles";
    zXmlItem first = nullptr;
    Ta::Check(zXml_FindChild(script, zXml_Root(script), "File", &first), operation);
    std::vector<zXmlItem> matches;
    for (zXmlItem item = first; item != nullptr; item = zXml_NextSibling(script, item)) {
        char entryName[512] = {};
        char source[512] = {};
        if (zXml_AttrText(script, item, "name", entryName, sizeof entryName) != zStatus_Success) continue;
        if (zStrCompareLower(entryName, name) != 0) continue;
        if (zXml_AttrText(script, item, "source", source, sizeof source) != zStatus_Success) continue;
        Ta::Check(zArchive_DeleteFile(archive, source), operation);
        matches.push_back(item);
    }
    for (zXmlItem item : matches) Ta::Check(zXml_DeleteItem(script, item), operation);
}

void append(zHandle script, const char* name, const char* source, const std::vector<std::string>& models,
            const char* operation) {
    zXmlItem file = nullptr;
    zXmlItem anyOf = nullptr;
    Ta::Check(zXml_AddItem(script, zXml_Root(script), "File", &file), operation);
    Ta::Check(zXml_SetAttrText(script, file, "name", name), operation);
    Ta::Check(zXml_SetAttrText(script, file, "source", source), operation);
    Ta::Check(zXml_AddItem(script, file, "Or", &anyOf), operation);
    for (const std::string& model : models) {
        zXmlItem equal = nullptr;
        Ta::Check(zXml_AddItem(script, anyOf, "Eq", &equal), operation);
        Ta::Check(zXml_SetAttrText(script, equal, "property", "Controller"), operation);
        Ta::Check(zXml_SetAttrText(script, equal, "value", model.c_str()), operation);
    }
}

void inject(const char* path, const char* source, const char* name, const std::vector<std::string>& models,
            zHandle archive) {
    constexpr const char* operation = "TaVekUtil_InjectFile";
    const auto script = parse(archive, operation);
    Ta::Buffer file;
    Ta::Check(zFile_Load(path, file.data(), file.size(), nullptr), operation);
    deletePrevious(script.get(), archive, name);
    append(script.get(), name, source, models, operation);
    write(archive, script.get(), operation);
    const std::string bytes(static_cast<const char*>(file.bytes()), file.byteCount());
    // Equal files share a member.
    if (testing::hasMember(archive, source) && testing::memberContent(archive, source) == bytes) return;
    Ta::Check(zArchive_AddData(archive, file.bytes(), file.byteCount(), source, 0), operation);
}

void remove(zHandle archive, const char* name, char* sourceOut, std::size_t capacity) {
    constexpr const char* operation = "TaVekUtils_ScriptXmlRemoveAndGetSource";
    const auto script = parse(archive, operation);
    const zXmlItem root = zXml_Root(script.get());
    for (std::size_t i = 0; i < zXml_ChildCount(script.get(), root); ++i) {
        const zXmlItem item = zXml_ChildAt(script.get(), root, i);
        if (!zStrEquals(zXml_ItemName(script.get(), item), "File")) continue;
        char entryName[256] = {};
        Ta::Check(zXml_AttrText(script.get(), item, "name", entryName, sizeof entryName), operation);
        if (!zStrEquals(name, entryName)) continue;
        char source[256] = {};
        Ta::Check(zXml_AttrText(script.get(), item, "source", source, sizeof source), operation);
        Ta::Check(zStrCopy(sourceOut, capacity, source), operation);
        Ta::Check(zXml_DeleteItem(script.get(), item), operation);
        break;
    }
    write(archive, script.get(), operation);
}

}  // namespace plain

/// How an edit ended: "done", or which exception came.
template <typename Edit>
std::string outcome(Edit edit) {
    try {
        edit();
    } catch (const Ta::Exception& exception) {
        return exception.operation() + ' ' + std::to_string(static_cast<int>(exception.status()));
    }
    return "done";
}

/// Draws scripts and edits in which the odd cases are frequent.
class Dice {
  public:
    explicit Dice(unsigned seed) : random_(seed) {}

    bool oneIn(std::size_t count) { return below(count) == 0; }
    std::size_t below(std::size_t count) { return random_() % count; }

    std::string name() {
        static const std::vector<std::string> names{"a",
                                                    "A",
                                                    "b",
                                                    "/user/Lib.so",
                                                    "/user/lib.so",
                                                    "",
                                                    text(255, 'n'),
                                                    text(255, 'N'),
                                                    text(256, 'n'),
                                                    text(256, 'N'),
                                                    text(511, 'n'),
                                                    text(511, 'N'),
                                                    text(512, 'n')};
        // Short ones more often, so that entries meet.
        return names[oneIn(2) ? below(5) : below(names.size())];
    }
    std::string source() {
        static const std::vector<std::string> sources{
            "data/1", "data/2",       "data/3",       "data/4",       "script.xml",
            "",       text(255, 's'), text(256, 's'), text(511, 's'), text(512, 's')};
        return sources[oneIn(2) ? below(4) : below(sources.size())];
    }
    std::string script() {
        // One element a line: emptying a root written in one line depends on when it was parsed.
        std::string text = "<S>\n";
        for (std::size_t count = below(12); count > 0; --count) {
            static const std::vector<std::string> elements{"File", "File", "File", "Other", "file"};
            text += "  <" + elements[below(elements.size())];
            if (!oneIn(8)) text += " name='" + name() + '\'';
            if (!oneIn(8)) text += " source='" + source() + '\'';
            text += "/>\n";
        }
        return text + "</S>";
    }

  private:
    static std::string text(std::size_t size, char character) { return std::string(size, character); }

    std::mt19937 random_;
};

/// Runs one random edit on both archives and compares how it ended.
void editBoth(Dice& dice, const ScratchDirectory& scratch, zHandle indexed, zHandle walked) {
    const std::string name = dice.name();
    if (dice.oneIn(2)) {
        char expected[512] = "untouched";
        char source[512] = "untouched";
        const std::string end = outcome([&] { plain::remove(walked, name.c_str(), expected, 512); });
        EXPECT_EQ(outcome([&] {
                      TaVekUtils_ScriptXmlRemoveAndGetSource(indexed, name.c_str(), source, 512, nullptr);
                  }),
                  end);
        EXPECT_STREQ(source, expected);
        return;
    }
    const std::string member = dice.source();
    const std::string file = scratch.path(dice.oneIn(20) ? "none" : dice.oneIn(2) ? "one" : "two");
    const std::vector<std::string> models(dice.below(3), "R6");
    const std::string end =
        outcome([&] { plain::inject(file.c_str(), member.c_str(), name.c_str(), models, walked); });
    EXPECT_EQ(
        outcome([&] { TaVekUtil_InjectFile(file.c_str(), member.c_str(), name.c_str(), models, indexed); }),
        end);
}

TEST(ScriptEditing, isThatOfPlainWalks) {
    const ScratchDirectory scratch;
    scratch.write("one", "1");
    scratch.write("two", "2");
    for (unsigned seed = 1; seed <= 60 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const testing::CapturedOutput output;
        Dice dice(seed);
        const std::vector<testing::Member> members{
            {"script.xml", dice.script()}, {"data/1", "1"}, {"data/2", "2"}, {"other", ""}};
        const auto indexed = testing::container(members);
        const auto walked = testing::container(members);
        for (int edit = 0; edit < 20; ++edit) {
            editBoth(dice, scratch, indexed.get(), walked.get());
            if (dice.oneIn(4)) {
                EXPECT_EQ(testing::memberContent(indexed.get(), "script.xml"),
                          testing::memberContent(walked.get(), "script.xml"));
            }
        }
        EXPECT_EQ(testing::savedBytes(indexed.get()), testing::savedBytes(walked.get()));
    }
}

}  // namespace
