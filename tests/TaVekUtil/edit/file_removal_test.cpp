#include "TaVekUtil/edit/file_removal.h"

#include <gmock/gmock.h>

#include "platform/os/os.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::CapturedOutput;
using testing::compact;
using testing::document;
using testing::ElementsAre;
using testing::IsLocated;
using testing::raised;
using testing::ScratchDirectory;

constexpr const char* operation = "TaVekUtil_RemoveFile";

// ---- Sensor archives ------------------------------------------------------------------------------------

/// A sensor archive with members data/1 to data/3 and the script entries a, b and c for them.
struct SensorArchive {
    ArchiveExtended archive;
    CapturedOutput output;

    explicit SensorArchive(const std::string& script =
                               "<S><File name='a' source='data/1'/>"
                               "<File name='b' source='data/2'/>"
                               "<File name='c' source='data/3'/></S>") {
        archive.platform = "linux_arm7";
        archive.archive =
            testing::container({{"script.xml", script}, {"data/1", "1"}, {"data/2", "2"}, {"data/3", "3"}});
    }

    void removeFilesOf(const std::string& entry, const char* package = "app") {
        const auto manifest = document(entry);
        TaVekUtil_RemovePackageFiles(archive, manifest.get(), zXml_Root(manifest.get()),
                                     archive.platform.c_str(), package);
    }
    std::string script() const {
        return compact(testing::memberContent(archive.archive.get(), "script.xml"));
    }
    std::vector<std::string> members() const { return testing::memberNames(archive.archive.get()); }
};

TEST(RemoveFile, takesTheScriptEntryAndItsMember) {
    SensorArchive sensor;
    TaVekUtil_RemoveFile(sensor.archive, "b");
    EXPECT_EQ(sensor.script(), "<S><File name='a' source='data/1'/><File name='c' source='data/3'/></S>");
    EXPECT_THAT(sensor.members(), ElementsAre("data/1", "data/3", "script.xml"));
    EXPECT_THAT(sensor.output.lines(), ElementsAre());
}

TEST(RemoveFile, passesOverAnUnknownEntryInSilenceAndRewritesTheScript) {
    SensorArchive sensor;
    TaVekUtil_RemoveFile(sensor.archive, "B");
    EXPECT_THAT(sensor.members(), ElementsAre("data/1", "data/2", "data/3", "script.xml"));
    EXPECT_THAT(sensor.output.lines(), ElementsAre());
}

TEST(RemoveFile, doesNotMissAMemberThatIsGone) {
    SensorArchive sensor("<S><File name='a' source='data/none'/></S>");
    TaVekUtil_RemoveFile(sensor.archive, "a");
    EXPECT_EQ(sensor.script(), "<S/>");
}

TEST(RemoveFile, reportsAScriptThatCannotBeEdited) {
    SensorArchive sensor("<S><File source='data/1'/></S>");
    EXPECT_THAT(raised([&] { TaVekUtil_RemoveFile(sensor.archive, "/user/a"); }),
                IsLocated("TaVekUtils_ScriptXmlRemoveAndGetSource", zStatus_NotFound));
    EXPECT_THAT(sensor.output.lines(),
                ElementsAre("err: TaVekUtil: Failed Removing file from upgrade package: /user/a."));
}

TEST(RemoveFile, reportsAMemberThatCannotBeDeleted) {
    SensorArchive sensor;
    const testing::Fault fault("zArchive_DeleteFile", zStatus_IoError, 2);  // the first is that of the script
    EXPECT_THAT(raised([&] { TaVekUtil_RemoveFile(sensor.archive, "a"); }),
                IsLocated(operation, zStatus_IoError));
    EXPECT_THAT(sensor.output.lines(),
                ElementsAre("err: TaVekUtil: Failed Removing file from upgrade package: a."));
}

TEST(RemovePackageFiles, takesVekAppsAndResourcesInAnyLetterCase) {
    SensorArchive sensor;
    sensor.removeFilesOf(
        "<VekApp><x type='vekapp'><Destination>a</Destination></x>"
        "<y type='RESOURCE'><Destination>b</Destination></y>"
        "<z type='Other'><Destination>c</Destination></z></VekApp>");
    EXPECT_EQ(sensor.script(), "<S><File name='c' source='data/3'/></S>");
    EXPECT_THAT(sensor.members(), ElementsAre("data/3", "script.xml"));
}

TEST(RemovePackageFiles, lendsAChildWithoutATypeThatOfTheChildBefore) {
    SensorArchive sensor;
    sensor.removeFilesOf(
        "<VekApp><x><Destination>a</Destination></x>"
        "<x type='VekApp'><Destination>b</Destination></x>"
        "<x><Destination>c</Destination></x></VekApp>");
    EXPECT_EQ(sensor.script(), "<S><File name='a' source='data/1'/></S>") << "the first has none to borrow";
}

TEST(RemovePackageFiles, lendsATypeToAChildWhoseOwnIsTooLong) {
    SensorArchive sensor;
    const std::string tooLong(32, 'x');
    sensor.removeFilesOf("<VekApp><x type='Resource'><Destination>a</Destination></x><x type='" + tooLong +
                         "'><Destination>b</Destination></x><x type='" + tooLong.substr(1) +
                         "'><Destination>c</Destination></x></VekApp>");
    EXPECT_EQ(sensor.script(), "<S><File name='c' source='data/3'/></S>");
}

TEST(RemovePackageFiles, looksForAFileWithoutDestinationUnderThePackagesName) {
    SensorArchive sensor(
        "<S><File name='/user/app' source='data/1'/>"
        "<File name='/user/lib.so' source='data/2'/></S>");
    sensor.removeFilesOf("<VekApp><x type='VekApp'><Source>lib.so</Source><Destination/></x></VekApp>");
    EXPECT_EQ(sensor.script(), "<S><File name='/user/lib.so' source='data/2'/></S>");
}

TEST(RemovePackageFiles, startsEachChildWithAnEmptyDestination) {
    SensorArchive sensor(
        "<S><File name='a' source='data/1'/><File name='a' source='data/2'/>"
        "<File name='/user/app' source='data/3'/></S>");
    const std::string tooLong(512, 'd');
    sensor.removeFilesOf(
        "<VekApp><x type='VekApp'><Destination>a</Destination></x>"
        "<x type='VekApp'/><x type='VekApp'><Destination>" +
        tooLong + "</Destination></x></VekApp>");
    EXPECT_EQ(sensor.script(), "<S><File name='a' source='data/2'/></S>");
}

TEST(RemovePackageFiles, readsDestinationsOfUpTo511Characters) {
    const std::string longest(511, 'd');
    for (const std::string& destination : {longest, longest + "d"}) {
        SensorArchive sensor("<S><File name='/user/app' source='data/1'/></S>");
        sensor.removeFilesOf("<VekApp><x type='VekApp'><Destination>" + destination +
                             "</Destination></x></VekApp>");
        const bool isTaken = destination == longest;
        EXPECT_EQ(sensor.script(), isTaken ? "<S><File name='/user/app' source='data/1'/></S>" : "<S/>");
    }
}

TEST(RemovePackageFiles, findsASecondEntryForASecondFileOfTheSameDestination) {
    const std::string twice =
        "<VekApp><x type='VekApp'><Destination>a</Destination></x>"
        "<x type='VekApp'><Destination>a</Destination></x></VekApp>";
    SensorArchive single;
    single.removeFilesOf(twice);
    EXPECT_THAT(single.members(), ElementsAre("data/2", "data/3", "script.xml"));

    SensorArchive doubled("<S><File name='a' source='data/1'/><File name='a' source='data/2'/></S>");
    doubled.removeFilesOf(twice);
    EXPECT_THAT(doubled.members(), ElementsAre("data/3", "script.xml"));
    EXPECT_EQ(doubled.script(), "<S/>");
}

TEST(RemovePackageFiles, goesOnBehindAFileThatTheScriptDoesNotName) {
    SensorArchive sensor;
    sensor.removeFilesOf(
        "<VekApp><x type='VekApp'><Destination>none</Destination></x>"
        "<x type='VekApp'><Destination>a</Destination></x></VekApp>");
    EXPECT_THAT(sensor.members(), ElementsAre("data/2", "data/3", "script.xml"));
    EXPECT_THAT(sensor.output.lines(), ElementsAre());
}

TEST(RemovePackageFiles, endsAtTheFirstFileThatFails) {
    SensorArchive sensor(
        "<S><File name='a' source='data/1'/><File name='b'/>"
        "<File name='c' source='data/3'/></S>");
    EXPECT_THAT(raised([&] {
                    sensor.removeFilesOf(
                        "<VekApp><x type='VekApp'><Destination>a</Destination></x>"
                        "<x type='VekApp'><Destination>b</Destination></x>"
                        "<x type='VekApp'><Destination>c</Destination></x></VekApp>");
                }),
                IsLocated("TaVekUtils_ScriptXmlRemoveAndGetSource", zStatus_NotFound));
    EXPECT_EQ(sensor.script(), "<S><File name='b'/><File name='c' source='data/3'/></S>");
    EXPECT_THAT(sensor.output.lines(),
                ElementsAre("err: TaVekUtil: Failed Removing file from upgrade package: b."));
}

TEST(RemovePackageFiles, isRefusedOnAComputeModuleForAFileWithoutDestination) {
    SensorArchive sensor;
    sensor.archive.platform = "ombix";
    EXPECT_EQ(raised([&] { sensor.removeFilesOf("<VekApp><x type='VekApp'/></VekApp>"); }).status(),
              zStatus_Unestablished);
    EXPECT_THAT(sensor.output.lines(), ElementsAre()) << "no file has been asked for yet";
}

TEST(RemovePackageFiles, doesNothingForAnEntryWithoutFiles) {
    SensorArchive sensor;
    sensor.removeFilesOf("<VekApp/>");
    EXPECT_THAT(sensor.members(), ElementsAre("script.xml", "data/1", "data/2", "data/3"));
}

// ---- Installation directories ---------------------------------------------------------------------------

/// An installation directory with the files a.dll and sub/b.dll.
struct Installation {
    ScratchDirectory scratch;
    ArchiveExtended archive;
    CapturedOutput output;

    Installation() {
        scratch.write("a.dll", "");
        scratch.write("sub/b.dll", "");
        archive.platform = "win";
        archive.path = scratch.path();
    }
    void removeFilesOf(const std::string& entry) {
        const auto manifest = document(entry);
        TaVekUtil_RemovePackageFiles(archive, manifest.get(), zXml_Root(manifest.get()), "win", "app");
    }
};

TEST(RemoveInstalledFile, deletesItBelowTheInstallationDirectory) {
    Installation host;
    TaVekUtil_RemoveFile(host.archive, "\\sub\\b.dll");
    EXPECT_FALSE(host.scratch.exists("sub/b.dll"));
    EXPECT_TRUE(host.scratch.exists("a.dll"));
    EXPECT_THAT(host.output.lines(), ElementsAre());
}

TEST(RemoveInstalledFile, saysThatOneIsGoneAndGoesOn) {
    Installation host;
    host.removeFilesOf(
        "<VekApp><x type='VekApp'><Destination>none/c.dll</Destination></x>"
        "<x type='VekApp'><Destination>a.dll</Destination></x></VekApp>");
    EXPECT_FALSE(host.scratch.exists("a.dll"));
    EXPECT_THAT(host.output.lines(), ElementsAre("out: Skipping File: " + host.scratch.path() +
                                                 os::pathSeparator + "none/c.dll - Not Found"));
}

TEST(RemoveInstalledFile, reportsWhatCannotBeDeleted) {
    Installation host;
    EXPECT_THAT(raised([&] { TaVekUtil_RemoveFile(host.archive, "sub"); }),
                IsLocated(operation, zStatus_IoError))
        << "a directory";
    EXPECT_THAT(host.output.lines(),
                ElementsAre("err: TaVekUtil: Failed Removing file from upgrade package: sub."));
}

TEST(RemoveInstalledFile, reportsWhateverExceptionComes) {
    Installation host;
    const testing::Fault fault("zFile_Delete", std::bad_alloc());
    EXPECT_THROW(TaVekUtil_RemoveFile(host.archive, "a.dll"), std::bad_alloc);
    EXPECT_THAT(host.output.lines(),
                ElementsAre("err: TaVekUtil: Failed Removing file from upgrade package: a.dll."));
}

TEST(RemoveInstalledFile, takesPathsOfUpTo511Characters) {
    Installation host;
    const std::string fits = "none/" + std::string(511 - host.scratch.path().size() - 6, 'a');
    TaVekUtil_RemoveFile(host.archive, fits.c_str());
    EXPECT_THAT(host.output.out(), testing::HasSubstr("Skipping File: "));
    EXPECT_THAT(raised([&] { TaVekUtil_RemoveFile(host.archive, (fits + 'a').c_str()); }),
                IsLocated(operation, zStatus_DoesNotFit));
}

TEST(RemoveInstalledFile, isNotSupportedWithoutADestination) {
    Installation host;
    const auto exception = raised([&] {
        host.removeFilesOf(
            "<VekApp><x type='VekApp'><Destination/></x>"
            "<x type='VekApp'><Destination>a.dll</Destination></x></VekApp>");
    });
    EXPECT_STREQ(exception.what(), "Default Destination for Windows Platform is Not Supported");
    EXPECT_TRUE(host.scratch.exists("a.dll")) << "the walk has ended";
}

TEST(RemoveFile, takesThePlatformForWindowsOnlyByItsExactKey) {
    Installation host;
    host.archive.platform = "Win";
    host.archive.archive = testing::container({{"script.xml", "<S/>"}});
    TaVekUtil_RemoveFile(host.archive, "a.dll");
    EXPECT_TRUE(host.scratch.exists("a.dll"));
}

}  // namespace
