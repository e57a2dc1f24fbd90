#include "TaVekUtil/cli/inject_library.h"

#include <gmock/gmock.h>

#include <iostream>

#include "tests/testing/archive_fixture.h"
#include "tests/testing/broken_stream.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/living_objects.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::CapturedOutput;
using testing::compact;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Fault;
using testing::IsEmpty;
using testing::memberContent;
using testing::memberNames;
using testing::ScratchDirectory;
using testing::StartsWith;

constexpr const char* failure = "err: TaVekUtil: Failed to inject library to archive. Error: ";

/// An archive "a.pkg" and a library to put into it.
struct Injection {
    ScratchDirectory scratch;
    std::string archive = testing::writeArchive(
        scratch.path("a.pkg"), {{"script.xml", "<S><File name='host'/></S>"}, {"host", "own"}});
    std::string before = scratch.read("a.pkg");
    CapturedOutput output;

    int inject(const std::string& library) {
        return injectLibToArchiveFile(scratch.write(library, "library").c_str(), archive.c_str());
    }
    std::string script() const { return compact(memberContent(archive, "script.xml")); }

    /// Expects a failure of `operation` at `line` that leaves the archive as it is.
    void expectFailedAt(int line, const std::string& library = "lib.so",
                        const std::string& operation = "injectLibToArchiveFile") {
        EXPECT_EQ(injectLibToArchiveFile(library.c_str(), archive.c_str()), 1);
        EXPECT_EQ(scratch.read("a.pkg"), before);
        EXPECT_THAT(testing::livingObjects(), IsEmpty());
        ASSERT_FALSE(output.lines().empty());
        EXPECT_THAT(output.lines().back(), AllOf(StartsWith(failure + operation + ": "),
                                                 EndsWith(", TaVekUtil:" + std::to_string(line) + ")")));
    }
};

std::string added(const std::string& file, const std::vector<std::string>& controllers) {
    std::string text = "<S><File name='host'/><File name=\"vekapp" + file + "\" source=\"data/12345-vekapp" +
                       file + "\"><Or>";
    for (const auto& model : controllers) text += "<Eq property=\"Controller\" value=\"" + model + "\"/>";
    return text + "</Or></File></S>";
}

TEST(InjectLibrary, savesTheArchiveOverItself) {
    Injection injection;
    EXPECT_EQ(injection.inject("plugin.zext"), 0);
    EXPECT_THAT(memberNames(injection.archive),
                ElementsAre("host", "script.xml", "data/12345-vekappplugin.zext"));
    EXPECT_EQ(memberContent(injection.archive, "data/12345-vekappplugin.zext"), "library");
    EXPECT_THAT(injection.output.lines(), IsEmpty()) << "success says nothing";
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(InjectLibrary, choosesTheControllersByTheExtension) {
    Injection arm7;
    EXPECT_EQ(arm7.inject("plugin.zext"), 0);
    EXPECT_EQ(arm7.script(), added("plugin.zext", {"R2", "R4", "R4-mc"}));

    Injection others;
    EXPECT_EQ(others.inject("libfoo.so"), 0);
    EXPECT_EQ(others.script(), added("libfoo.so", {"R6", "R8", "TX2", "Xavier NX", "Orin NX", "AGX Orin"}));
}

TEST(InjectLibrary, listsNoControllerForAnyOtherExtension) {
    for (const std::string library : {"tool.dll", "PLUGIN.ZEXT", "lib.SO", "lib.so.1", "lib.sox", "lib.s",
                                      "plugin.zext2", "plugin.zex", "plain", ".so"}) {
        Injection injection;
        EXPECT_EQ(injection.inject("deep/er/" + library), 0);
        const std::string entry =
            "<File name=\"vekapp" + library + "\" source=\"data/12345-vekapp" + library + "\"><Or/></File>";
        EXPECT_EQ(injection.script(), "<S><File name='host'/>" + entry + "</S>");
    }
}

TEST(InjectLibrary, reportsNamesThatDoNotFit) {
    const std::string prefix = "data/12345-vekapp";
    Injection().expectFailedAt(493, "lib." + std::string(512, 's'), "TaVekUtil_GetArmControllerNames");
    Injection().expectFailedAt(1300, "lib." + std::string(511, 's'));
    Injection().expectFailedAt(1300, std::string(512, 'l'));
    Injection().expectFailedAt(1301, std::string(511, 'l'));
    Injection().expectFailedAt(1301, std::string(512 - prefix.size(), 'l'));
    Injection fits;
    EXPECT_EQ(injectLibToArchiveFile(std::string(511 - prefix.size(), 'l').c_str(), fits.archive.c_str()), 1);
    EXPECT_THAT(fits.output.lines(),
                ElementsAre("err: TaVekUtil: Failed injecting files into upgrade package.",
                            StartsWith(std::string(failure) + "TaVekUtil_InjectFile: ")))
        << "no such file, that is";
}

TEST(InjectLibrary, reportsTheStepThatFailed) {
    {
        Injection injection;
        const Fault fault("zStrPrintf", zStatus_DoesNotFit, 2);
        injection.expectFailedAt(1302);
    }
    {
        Injection injection;
        const Fault fault("zArchive_Construct", zStatus_NoMemory);
        injection.expectFailedAt(1304);
    }
    {
        Injection injection;
        const Fault fault("zArchive_Save", zStatus_IoError);
        const std::string library = injection.scratch.write("lib.so", "library");
        injection.expectFailedAt(1309, library);
    }
}

TEST(InjectLibrary, reportsAnArchiveThatIsNotThere) {
    const ScratchDirectory scratch;
    const CapturedOutput output;
    const std::string archive = scratch.path("none.pkg");
    EXPECT_EQ(injectLibToArchiveFile(scratch.write("l.so", "").c_str(), archive.c_str()), 1);
    EXPECT_THAT(output.lines(), ElementsAre(failure + ("injectLibToArchiveFile: " + archive +
                                                       ": No such file or directory (not found, status -999, "
                                                       "TaVekUtil:1305)")));
    EXPECT_THAT(scratch.entries(), ElementsAre("l.so"));
}

TEST(InjectLibrary, reportsALibraryThatIsNotThere) {
    Injection injection;
    EXPECT_EQ(injectLibToArchiveFile("none.so", injection.archive.c_str()), 1);
    EXPECT_THAT(injection.output.lines(),
                ElementsAre("err: TaVekUtil: Failed injecting files into upgrade package.",
                            StartsWith(failure + std::string("TaVekUtil_InjectFile: none.so: No such file or "
                                                             "directory (not found, status -999, "))));
    EXPECT_EQ(injection.scratch.read("a.pkg"), injection.before);
}

TEST(InjectLibrary, letsForeignExceptionsPass) {
    Injection injection;
    {
        const testing::BrokenStream broken(std::cerr);
        EXPECT_THROW(injectLibToArchiveFile("none.so", injection.archive.c_str()), std::logic_error)
            << "the first line of that failure cannot be written";
    }
    EXPECT_THAT(injection.output.lines(), IsEmpty());
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
    EXPECT_EQ(injection.scratch.read("a.pkg"), injection.before);
}

}  // namespace
