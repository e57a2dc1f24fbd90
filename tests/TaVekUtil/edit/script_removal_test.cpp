#include "TaVekUtil/edit/startup_script.h"

#include <gmock/gmock.h>

#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/script_fixture.h"

namespace {

using testing::compact;
using testing::ElementsAre;
using testing::Fault;
using testing::fileEntry;
using testing::IsLocated;
using testing::raised;
using testing::Script;

constexpr const char* deletion = "TaVekUtil_DeletePreviousFiles";
constexpr const char* removal = "TaVekUtils_ScriptXmlRemoveAndGetSource";

// ---- Deleting earlier entries ---------------------------------------------------------------------------

struct Deletion {
    Ta::Object<void*> archive;
    std::shared_ptr<StartupScript> script;

    explicit Deletion(const std::string& text)
        : archive(testing::container({{"script.xml", text}, {"data/1", ""}, {"data/2", ""}})),
          script(StartupScript::of(archive.get(), "test")) {}
    zStatus run(const char* name, bool ignoreCase) {
        return TaVekUtil_DeletePreviousFiles(*script, archive.get(), name, ignoreCase);
    }
    std::string text() const { return compact(script->document()); }
};

TEST(DeletePreviousFiles, regardsLetterCaseWhenAskedTo) {
    const std::string text = "<S>" + fileEntry("A", "data/1") + fileEntry("a", "data/2") + "</S>";
    Deletion exact(text);
    EXPECT_EQ(exact.run("a", false), zStatus_Success);
    EXPECT_EQ(exact.text(), "<S>" + fileEntry("A", "data/1") + "</S>");
    EXPECT_TRUE(testing::hasMember(exact.archive.get(), "data/1"));

    Deletion any(text);
    EXPECT_EQ(any.run("a", true), zStatus_Success);
    EXPECT_EQ(any.text(), "<S/>");
    EXPECT_FALSE(testing::hasMember(any.archive.get(), "data/1"));
}

TEST(DeletePreviousFiles, succeedsWhenNothingMatches) {
    Deletion none("<S><File/></S>");
    EXPECT_EQ(none.run("a", true), zStatus_Success);
    EXPECT_EQ(none.text(), "<S><File/></S>");
}

TEST(DeletePreviousFiles, deletesElementsOnlyAfterTheWalk) {
    Deletion twice("<S>" + fileEntry("a", "data/1") + fileEntry("a", "data/2") + "</S>");
    const Fault fault("zArchive_DeleteFile", zStatus_IoError, 2);
    EXPECT_THAT(raised([&] { static_cast<void>(twice.run("a", true)); }),
                IsLocated(deletion, zStatus_IoError));
    EXPECT_FALSE(testing::hasMember(twice.archive.get(), "data/1")) << "members go at once";
    EXPECT_EQ(twice.text(), "<S>" + fileEntry("a", "data/1") + fileEntry("a", "data/2") + "</S>");
}

// ---- Removal --------------------------------------------------------------------------------------------

TEST(RemoveEntry, takesTheFirstOfThatExactNameAndAnswersItsSource) {
    Script script(
        "<S>" + fileEntry("A", "data/0") + fileEntry("a", "data/1") + fileEntry("a", "data/2") + "</S>",
        {{"data/1", "stays"}});
    EXPECT_EQ(script.remove("a"), "data/1");
    EXPECT_EQ(script.text(), "<S>" + fileEntry("A", "data/0") + fileEntry("a", "data/2") + "</S>");
    EXPECT_THAT(script.members(), ElementsAre("data/1", "script.xml"));
    EXPECT_THAT(script.output.lines(), ElementsAre());
}

TEST(RemoveEntry, rewritesTheScriptAndLeavesTheBufferAloneWhenNothingMatches) {
    Script script("<S>" + fileEntry("a", "data/1") + "</S>", {{"data/1", ""}});
    EXPECT_EQ(script.remove("A"), "(untouched)");
    EXPECT_EQ(script.text(), "<S>" + fileEntry("a", "data/1") + "</S>");
    EXPECT_THAT(script.members(), ElementsAre("data/1", "script.xml")) << "written anew";
}

TEST(RemoveEntry, looksAtFileElementsAlone) {
    Script script(
        "<S><Other name='a' source='data/1'/><file name='a' source='data/2'/>"
        "<File name='a' source='data/3'/></S>");
    EXPECT_EQ(script.remove("a"), "data/3");
    EXPECT_EQ(script.remove("a"), "(untouched)");
}

TEST(RemoveEntry, worksOnAScriptWithoutEntries) {
    Script script("<S/>");
    EXPECT_EQ(script.remove("a"), "(untouched)");
    EXPECT_EQ(script.text(), "<S/>");
}

TEST(RemoveEntry, endsAtAnUnreadableNameBeforeTheMatch) {
    const std::string tooLong(256, 'n');
    for (const std::string& unreadable : {std::string("<File/>"), "<File name='" + tooLong + "'/>",
                                          "<File name='" + tooLong + tooLong + "'/>"}) {
        const zStatus status = unreadable == "<File/>" ? zStatus_NotFound : zStatus_DoesNotFit;
        Script before("<S>" + unreadable + fileEntry("a", "data/1") + "</S>");
        EXPECT_THAT(raised([&] { before.remove("a"); }), IsLocated(removal, status));
        EXPECT_EQ(before.text(), "<S>" + compact(unreadable) + fileEntry("a", "data/1") + "</S>");
        EXPECT_THAT(before.output.lines(), ElementsAre()) << "the caller speaks";

        Script behind("<S>" + fileEntry("a", "data/1") + unreadable + "</S>");
        EXPECT_EQ(behind.remove("a"), "data/1");
        EXPECT_THAT(raised([&] { behind.remove("a"); }), IsLocated(removal, status));
    }
}

TEST(RemoveEntry, readsNamesAndSourcesOfUpTo255Characters) {
    const std::string longest(255, 'n');
    Script script("<S>" + fileEntry(longest, longest) + fileEntry("a", longest + "n") + "</S>");
    EXPECT_EQ(script.remove(longest), longest);
    EXPECT_THAT(raised([&] { script.remove("a"); }), IsLocated(removal, zStatus_DoesNotFit));

    Script longer("<S>" + fileEntry(longest + "n", "data/1") + "</S>");
    EXPECT_THAT(raised([&] { longer.remove(longest + "n"); }), IsLocated(removal, zStatus_DoesNotFit));
}

TEST(RemoveEntry, needsASource) {
    Script script("<S><File name='a'/></S>");
    EXPECT_THAT(raised([&] { script.remove("a"); }), IsLocated(removal, zStatus_NotFound));
}

TEST(RemoveEntry, needsAScriptThatIsXml) {
    Script broken("<S>");
    EXPECT_THAT(raised([&] { broken.remove("a"); }), IsLocated(removal, zStatus_Malformed));
    broken.archive = testing::container({});
    EXPECT_THAT(raised([&] { broken.remove("a"); }), IsLocated(removal, zStatus_NotFound));
}

TEST(RemoveEntry, reportsWhateverStepFails) {
    for (const char* step : {"zXml_DeleteItem", "zArchive_DeleteFile", "zArchive_AddLive"}) {
        Script script("<S>" + fileEntry("a", "data/1") + "</S>");
        const Fault fault(step, zStatus_NoMemory);
        EXPECT_THAT(raised([&] { script.remove("a"); }), IsLocated(removal, zStatus_NoMemory)) << step;
    }
    for (const char* step : {"zArchive_DeleteFile", "zArchive_AddLive"}) {
        Script script("<S/>");
        const Fault fault(step, zStatus_NoMemory);
        EXPECT_THAT(raised([&] { script.remove("none"); }), IsLocated(removal, zStatus_NoMemory)) << step;
    }
}

TEST(RemoveEntry, needsRoomForTheSource) {
    Script script("<S>" + fileEntry("a", "data/1") + "</S>");
    char source[1] = {'x'};
    EXPECT_THAT(raised([&] {
                    TaVekUtils_ScriptXmlRemoveAndGetSource(script.archive.get(), "a", source, 0, nullptr);
                }),
                IsLocated(removal, zStatus_BadArgument));
}

}  // namespace
