#include "TaVekUtil/edit/startup_script.h"

#include <gmock/gmock.h>

#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/script_fixture.h"

namespace {

using testing::callsOf;
using testing::ElementsAre;
using testing::Fault;
using testing::fileEntry;
using testing::IsLocated;
using testing::raised;
using testing::Script;

constexpr const char* injection = "TaVekUtil_InjectFile";
constexpr const char* deletion = "TaVekUtil_DeletePreviousFiles";
constexpr const char* failureLine = "err: TaVekUtil: Failed injecting files into upgrade package.";

// What the fixture names unless it is told otherwise.
const std::string listedControllers =
    "<Or><Eq property=\"Controller\" value=\"R6\"/>"
    "<Eq property=\"Controller\" value=\"R8\"/></Or>";

// ---- Injection ------------------------------------------------------------------------------------------

TEST(InjectFile, appendsTheEntryAndStoresTheFile) {
    Script script("<S><File name='x'/><Version value='1'/></S>", {{"other", ""}});
    script.inject("vekapplib.so", "data/12345-vekapplib.so", "bytes");
    EXPECT_EQ(script.text(),
              "<S><File name='x'/><Version value='1'/>"
              "<File name=\"vekapplib.so\" source=\"data/12345-vekapplib.so\">" +
                  listedControllers + "</File></S>");
    EXPECT_EQ(script.member("data/12345-vekapplib.so"), "bytes");
    EXPECT_THAT(script.members(), ElementsAre("other", "script.xml", "data/12345-vekapplib.so"));
    EXPECT_THAT(script.output.lines(), ElementsAre());
}

TEST(InjectFile, writesAnEmptyOrForAnEmptyListOfControllers) {
    Script script("<S><File/></S>");
    script.inject("a", "data/a", "", {});
    EXPECT_EQ(script.text(), "<S><File/><File name=\"a\" source=\"data/a\"><Or/></File></S>");
}

TEST(InjectFile, leavesOneEntryAndOneMemberWhenRepeated) {
    Script script("<S><File/><Last/></S>");
    script.inject("a", "data/a", "old");
    script.inject("a", "data/a", "new");
    EXPECT_EQ(script.text(),
              "<S><File/><Last/><File name=\"a\" source=\"data/a\">" + listedControllers + "</File></S>");
    EXPECT_EQ(script.member("data/a"), "new");
    EXPECT_THAT(script.members(), ElementsAre("script.xml", "data/a"));
}

TEST(InjectFile, replacesEntriesOfAnyLetterCaseWithTheirMembers) {
    Script script("<S>" + fileEntry("LIB.so", "data/1") + fileEntry("lib2.so", "data/2") +
                      fileEntry("Lib.SO", "data/3") + "</S>",
                  {{"data/1", ""}, {"data/2", ""}, {"data/3", ""}});
    script.inject("lib.so", "data/4");
    EXPECT_EQ(script.text(), "<S>" + fileEntry("lib2.so", "data/2") +
                                 "<File name=\"lib.so\" source=\"data/4\">" + listedControllers +
                                 "</File></S>");
    EXPECT_THAT(script.members(), ElementsAre("data/2", "script.xml", "data/4"));
}

TEST(InjectFile, takesEveryElementBehindTheFirstFileForAnEntry) {
    Script script("<S><Other name='a' source='data/1'/><File name='x'/><Other name='A' source='data/2'/></S>",
                  {{"data/1", ""}, {"data/2", ""}});
    script.inject("a", "data/3", "", {});
    EXPECT_EQ(script.text(),
              "<S><Other name='a' source='data/1'/><File name='x'/>"
              "<File name=\"a\" source=\"data/3\"><Or/></File></S>");
    EXPECT_THAT(script.members(), ElementsAre("data/1", "script.xml", "data/3"));
}

TEST(InjectFile, needsAFileElementInTheScript) {
    Script script("<S><Other name='a' source='data/1'/></S>", {{"data/1", ""}});
    EXPECT_THAT(raised([&] { script.inject("a", "data/2"); }), IsLocated(deletion, zStatus_NotFound));
    EXPECT_THAT(script.output.lines(), ElementsAre(failureLine));
    EXPECT_THAT(script.members(), ElementsAre("script.xml", "data/1"));
}

TEST(InjectFile, leavesEntriesWithoutAReadableNameOrSource) {
    const std::string name(511, 'n');
    const std::string source(511, 's');
    const std::string unreadable = "<File source='data/1'/><File name='" + name +
                                   "n' source='data/1'/><File name='" + name + "'/><File name='" + name +
                                   "' source='" + source + "s'/>";
    Script script("<S>" + unreadable + "<File name='" + name + "' source='" + source + "'/></S>",
                  {{"data/1", ""}, {source, ""}});
    script.inject(name, "data/2", "", {});
    EXPECT_EQ(script.text(),
              "<S>" + unreadable + "<File name=\"" + name + "\" source=\"data/2\"><Or/></File></S>");
    EXPECT_THAT(script.members(), ElementsAre("data/1", "script.xml", "data/2"));
}

TEST(InjectFile, removesAStaleEntryWhoseMemberIsGone) {
    Script script("<S>" + fileEntry("a", "data/none") + fileEntry("b", "") + fileEntry("B", "") + "</S>");
    script.inject("a", "data/1", "", {});
    script.inject("b", "data/2", "", {});
    EXPECT_EQ(script.text(),
              "<S><File name=\"a\" source=\"data/1\"><Or/></File>"
              "<File name=\"b\" source=\"data/2\"><Or/></File></S>");
}

TEST(InjectFile, keepsTheScriptThroughAnEntryThatNamesIt) {
    Script script("<S><File/>" + fileEntry("a", "script.xml") + "</S>");
    script.inject("a", "data/a", "", {});
    EXPECT_EQ(script.text(), "<S><File/><File name=\"a\" source=\"data/a\"><Or/></File></S>");
    EXPECT_THAT(script.members(), ElementsAre("script.xml", "data/a"));
}

TEST(InjectFile, needsAScript) {
    Script script("<S><File/></S>");
    script.archive = testing::container({{"Script.xml", "<S><File/></S>"}});
    EXPECT_THAT(raised([&] { script.inject("a", "data/a"); }), IsLocated(injection, zStatus_NotFound));
    EXPECT_THAT(script.output.lines(), ElementsAre(failureLine));
}

TEST(InjectFile, needsAScriptThatIsXmlInItsWholeSize) {
    Script broken("<S>\n<File>");
    const auto exception = raised([&] { broken.inject("a", "data/a"); });
    EXPECT_THAT(exception, IsLocated(injection, zStatus_Malformed));
    EXPECT_THAT(exception.what(), testing::HasSubstr("script.xml:2:"));
    Script zero(std::string("<S><File/></S>\0", 15));
    EXPECT_THAT(raised([&] { zero.inject("a", "data/a"); }), IsLocated(injection, zStatus_Malformed));
}

TEST(InjectFile, needsTheFile) {
    Script script("<S><File/></S>");
    EXPECT_THAT(raised([&] {
                    TaVekUtil_InjectFile(script.scratch.path("none").c_str(), "data/a", "a", {},
                                         script.archive.get());
                }),
                IsLocated(injection, zStatus_NotFound));
    EXPECT_THAT(script.output.lines(), ElementsAre(failureLine));
    EXPECT_EQ(script.text(), "<S><File/></S>");
}

TEST(InjectFile, looksForTheScriptBeforeTheFile) {
    Script script("<S>");
    EXPECT_THAT(raised([&] { TaVekUtil_InjectFile("none", "data/a", "a", {}, script.archive.get()); }),
                IsLocated(injection, zStatus_Malformed));
}

TEST(InjectFile, readsTheFileBeforeItLooksForEntries) {
    Script script("<S/>");
    EXPECT_THAT(raised([&] { TaVekUtil_InjectFile("none", "data/a", "a", {}, script.archive.get()); }),
                IsLocated(injection, zStatus_NotFound));
}

TEST(InjectFile, reportsWhateverStepFails) {
    const struct {
        const char* step;
        std::size_t call;
        const char* operation;
    } faults[] = {
        {"zXml_AddItem", 1, injection},         // File
        {"zXml_AddItem", 2, injection},         // Or
        {"zXml_AddItem", 3, injection},         // Eq
        {"zXml_SetAttrText", 1, injection},     // name
        {"zXml_SetAttrText", 2, injection},     // source
        {"zXml_SetAttrText", 3, injection},     // property
        {"zXml_SetAttrText", 4, injection},     // value
        {"zXml_DeleteItem", 1, deletion},       // the earlier entry
        {"zArchive_DeleteFile", 1, deletion},   // its member
        {"zArchive_DeleteFile", 2, injection},  // the script
        {"zArchive_AddLive", 1, injection},     // the script again
        {"zArchive_AddData", 1, injection},     // the file
    };
    for (const auto& [step, call, operation] : faults) {
        Script script("<S>" + fileEntry("a", "data/1") + "</S>", {{"data/1", ""}});
        const Fault fault(step, zStatus_NoMemory, call);
        EXPECT_THAT(raised([&] { script.inject("a", "data/2"); }), IsLocated(operation, zStatus_NoMemory))
            << step << ' ' << call;
        EXPECT_THAT(script.output.lines(), ElementsAre(failureLine)) << step << ' ' << call;
    }
}

TEST(InjectFile, reportsWhateverExceptionComes) {
    Script script("<S><File/></S>");
    const Fault fault("zXml_AddItem", std::bad_alloc());
    EXPECT_THROW(script.inject("a", "data/a"), std::bad_alloc);
    EXPECT_THAT(script.output.lines(), ElementsAre(failureLine));
}

TEST(InjectFile, sharesAMemberBetweenEntriesOfTheSameBytes) {
    for (const char* content : {"same", ""}) {
        Script script("<S><File/></S>");
        script.inject("a", "data/lib", content);
        script.inject("b", "data/lib", content);
        EXPECT_EQ(script.member("data/lib"), content);
        EXPECT_THAT(script.members(), ElementsAre("data/lib", "script.xml"));
    }
}

TEST(InjectFile, refusesOtherBytesUnderATakenMemberName) {
    Script script("<S><File/></S>");
    script.inject("a", "data/lib", "one");
    EXPECT_THAT(raised([&] { script.inject("b", "data/lib", "two"); }),
                IsLocated(injection, zStatus_BadArgument));
    EXPECT_THAT(script.output.lines(), ElementsAre(failureLine));
}

// ---- The live script ------------------------------------------------------------------------------------

TEST(StartupScript, reportsAFailedSerialisationWhenSomebodyLooks) {
    Script script("<S><File/></S>");
    script.inject("a", "data/a");
    const Fault fault("zXml_SaveBytes", zStatus_NoMemory);
    EXPECT_FALSE(script.holds("script.xml"));
}

/// A script of `count` entries.
std::string scriptOf(int count) {
    std::string text = "<S>";
    for (int i = 0; i < count; ++i) text += fileEntry("/user/" + std::to_string(i), "data/host");
    return text + "</S>";
}

/// Injects `count` files, every other in the place of an entry of the script, and looks into the script after
/// each `every`. Answers the saved bytes.
std::string injectedBytes(int entries, int count, int every) {
    Script script(scriptOf(entries), {{"before", "1"}, {"behind", "2"}});
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        script.inject((i % 2 == 0 ? "/USER/" : "/new/") + number, "data/12345-" + number, number);
        const bool looks = i % every == 0;
        EXPECT_TRUE(!looks || !script.member("script.xml").empty());
    }
    return testing::savedBytes(script.archive.get());
}

TEST(StartupScript, isTheSameWhetherSomebodyLooksAfterEachEditOrNever) {
    const std::string unseen = injectedBytes(200, 120, 1000);
    EXPECT_EQ(unseen, injectedBytes(200, 120, 1));
}

TEST(StartupScript, isSerialisedOncePerSaveHoweverManyFilesAreInjected) {
    constexpr int entries = 5000;
    constexpr int files = 2000;
    Script script(scriptOf(entries));
    const std::string file = script.scratch.write("file", "content");
    const std::size_t before = callsOf("zXml_SaveBytes");
    for (int i = 0; i < files; ++i) {
        const std::string number = std::to_string(i);
        TaVekUtil_InjectFile(file.c_str(), ("data/12345-" + number).c_str(), ("/new/" + number).c_str(),
                             {"R6"}, script.archive.get());
    }
    EXPECT_EQ(callsOf("zXml_SaveBytes") - before, 0u);
    const std::string saved = testing::savedBytes(script.archive.get());
    EXPECT_EQ(callsOf("zXml_SaveBytes") - before, 1u);
    EXPECT_EQ(testing::savedBytes(script.archive.get()), saved);
}

TEST(StartupScript, isParsedOnceHoweverManyEntriesAreRemoved) {
    Script script(scriptOf(50));
    for (int i = 0; i < 50; ++i) EXPECT_EQ(script.remove("/user/" + std::to_string(i)), "data/host");
    EXPECT_EQ(script.text(), "<S/>");
}

}  // namespace
