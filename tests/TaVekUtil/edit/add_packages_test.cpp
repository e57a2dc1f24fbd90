#include "TaVekUtil/edit/add_packages.h"

#include <gmock/gmock.h>

#include "platform/os/os.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/package_fixture.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::CapturedOutput;
using testing::compact;
using testing::document;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsLocated;
using testing::loadedPackage;
using testing::MadeUpPackage;
using testing::Not;
using testing::raised;
using testing::ScratchDirectory;

constexpr const char* operation = "TaVekUtils_AddPackages";

/// An archive of one platform and version 6.1b, packages to add to it, and what adding says.
struct Addition {
    ScratchDirectory scratch;
    ArchiveExtended archive;
    std::vector<AddonPackage> packages;
    CapturedOutput output;

    explicit Addition(const std::string& platform) {
        archive.platform = platform;
        archive.path = scratch.path("host");
        archive.archive = testing::container({{"script.xml", "<S><File/></S>"}});
        archive.manifest = document("<VekAppPackage><BeVersion>6.1b</BeVersion></VekAppPackage>");
        scratch.write("host/keep.txt", "");
    }
    void offer(const MadeUpPackage& package) {
        packages.push_back(loadedPackage(scratch, "pkg" + std::to_string(packages.size()), package));
    }
    int add() { return TaVekUtils_AddPackages(archive, packages); }

    std::string sourceFile(const std::string& source) const { return scratch.path("pkg0/" + source); }
    std::string script() const {
        return compact(testing::memberContent(archive.archive.get(), "script.xml"));
    }
    std::string manifest() const { return compact(archive.manifest.get()); }
    std::vector<std::string> members() const { return testing::memberNames(archive.archive.get()); }
};

std::string entry(const std::string& name, const std::string& source,
                  const std::vector<std::string>& controllers) {
    std::string text = "<File name=\"" + name + "\" source=\"" + source + "\"><Or>";
    for (const auto& model : controllers) text += "<Eq property=\"Controller\" value=\"" + model + "\"/>";
    return text + "</Or></File>";
}

// ---- Sensor archives ------------------------------------------------------------------------------------

TEST(AddPackages, installsTheFilesOfASensorAndSaysSo) {
    const struct {
        const char* platform;
        const char* line;
        std::vector<std::string> controllers;
    } sensors[] = {
        {"linux_arm7", "out: TaVekUtil:    - Loaded file for Linux_Arm7 Sensor: ", {"R2", "R4", "R4-mc"}},
        {"ombix",
         "out: TaVekUtil:    - Loaded file for Linux Arm64 Ombix: ",
         {"TX2", "Xavier NX", "Orin NX", "AGX Orin"}},
        {"linux_arm64", "out: TaVekUtil:    - Loaded file for Linux Arm64 Sensor: ", {"R6", "R8"}},
    };
    for (const auto& sensor : sensors) {
        Addition addition(sensor.platform);
        addition.offer({.name = "app", .files = {{sensor.platform, "bin/lib.so", "/dir/lib.so"}}});
        EXPECT_EQ(addition.add(), 1);
        EXPECT_EQ(addition.script(),
                  "<S><File/>" + entry("/dir/lib.so", "data/12345-lib.so", sensor.controllers) + "</S>");
        EXPECT_EQ(testing::memberContent(addition.archive.archive.get(), "data/12345-lib.so"), "content");
        EXPECT_THAT(addition.output.lines(), ElementsAre(sensor.line + addition.sourceFile("bin/lib.so")));
        EXPECT_THAT(addition.manifest(), HasSubstr("<VekApp name=\"app\"><File type=\"VekApp\">"
                                                   "<Source>bin/lib.so</Source>"
                                                   "<Destination>/dir/lib.so</Destination></File></VekApp>"));
    }
}

TEST(AddPackages, takesTheFilesOfItsPlatformInOrder) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app",
                    .files = {{"linux_arm7", "b.so", "/b"},
                              {"win", "w.dll", "w.dll"},
                              {"linux_arm64", "64.so", "/64"},
                              {"linux_arm7", "a.so", "/a"}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_THAT(addition.members(), ElementsAre("data/12345-b.so", "script.xml", "data/12345-a.so"));
    EXPECT_THAT(addition.output.lines(), ElementsAre(HasSubstr("b.so"), HasSubstr("a.so")));
}

TEST(AddPackages, derivesAMissingDestinationFromTheFileName) {
    Addition addition("linux_arm64");
    addition.offer({.name = "app", .files = {{"linux_arm64", "bin/lib.so", ""}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_THAT(addition.script(), HasSubstr("<File name=\"/user/lib.so\""));
}

TEST(AddPackages, cannotDeriveOneForAComputeModule) {
    Addition addition("ombix");
    addition.offer({.name = "app", .files = {{"ombix", "lib.so", ""}}});
    EXPECT_EQ(raised([&] { addition.add(); }).status(), zStatus_Unestablished);
    EXPECT_THAT(addition.manifest(), Not(HasSubstr("VekApp name")));
    EXPECT_THAT(addition.output.lines(), IsEmpty());
}

TEST(AddPackages, findsNoPlaceForAPlatformThatOnlyBeginsWithTheArchives) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"linux_arm7x", "lib.so", "/lib.so"}}});
    EXPECT_EQ(addition.add(), 0);
    EXPECT_EQ(addition.script(), "<S><File/></S>");
    EXPECT_THAT(addition.output.lines(), IsEmpty());
}

TEST(AddPackages, letsThroughAPlatformThatBeginsWithTheArchives) {
    // The file passes the filter of the archive's platform, so its missing destination is asked for.
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"linux_arm7x", "lib.so", ""}}});
    EXPECT_EQ(raised([&] { addition.add(); }).status(), zStatus_Unestablished);
    Addition other("linux_arm7");
    other.offer({.name = "app", .files = {{"linux_arm", "lib.so", ""}, {"Linux_Arm7", "lib.so", ""}}});
    EXPECT_EQ(other.add(), 0);
}

TEST(AddPackages, recordsAPackageWithoutAFileForThePlatform) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"win", "w.dll", "w.dll"}}});
    EXPECT_EQ(addition.add(), 0);
    EXPECT_EQ(addition.manifest(),
              "<VekAppPackage><BeVersion>6.1b</BeVersion><VekApp name=\"app\"/></VekAppPackage>");
}

TEST(AddPackages, countsAFileWhateverComesBehindIt) {
    Addition addition("linux_arm7");
    addition.offer(
        {.name = "app",
         .files = {{"linux_arm7", "a.so", "/a"}, {"linux_arm7x", "a.so", "/x"}, {"win", "w.dll", "w.dll"}}});
    addition.offer({.name = "without"});
    addition.offer({.name = "other", .beVersion = "7", .files = {{"linux_arm7", "b.so", "/b"}}});
    EXPECT_EQ(addition.add(), 1);
}

TEST(AddPackages, replacesAFileOfTheSameNameAndDestination) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app",
                    .files = {{"linux_arm7", "one/lib.so", "/lib.so", "VekApp", "1"},
                              {"linux_arm7", "two/lib.so", "/lib.so", "VekApp", "2"}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_EQ(addition.script(),
              "<S><File/>" + entry("/lib.so", "data/12345-lib.so", {"R2", "R4", "R4-mc"}) + "</S>");
    EXPECT_EQ(testing::memberContent(addition.archive.archive.get(), "data/12345-lib.so"), "2");
}

TEST(AddPackages, doesNothingWithoutPackages) {
    Addition addition("linux_arm7");
    addition.archive.manifest = document("<NoVersion/>");
    EXPECT_EQ(addition.add(), 0);
    EXPECT_THAT(addition.output.lines(), IsEmpty());
}

TEST(AddPackages, ignoresTheResourceTypeOnASensor) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"linux_arm7", "a.txt", "deep/a.txt", "Resource"}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_FALSE(addition.scratch.exists("host/deep"));
}

// ---- Versions -------------------------------------------------------------------------------------------

TEST(AddPackages, goesWithTheVersionOrAnyForAStar) {
    for (const char* version : {"6.1b", "*"}) {
        Addition addition("linux_arm7");
        addition.offer({.name = "app", .beVersion = version, .files = {{"linux_arm7", "a.so", "/a"}}});
        EXPECT_EQ(addition.add(), 1) << version;
    }
}

TEST(AddPackages, skipsAPackageOfAnotherVersionWithTwoLines) {
    for (const std::string version : {"6.1B", "6.1", "6.1b.0", "**", ""}) {
        Addition addition("linux_arm7");
        addition.offer({.name = "app", .beVersion = version, .files = {{"linux_arm7", "a.so", "/a"}}});
        addition.offer({.name = "next", .files = {{"linux_arm7", "b.so", "/b"}}});
        EXPECT_EQ(addition.add(), 1);
        EXPECT_THAT(addition.output.lines(),
                    ElementsAre("err: TaVekUtil: ERROR - Version for Upgrade package != Vek Package ",
                                "err: TaVekUtil: ERROR - 6.1b != app(" + version + ")",
                                "out: TaVekUtil:    - Loaded file for Linux_Arm7 Sensor: " +
                                    addition.scratch.path("pkg1/b.so")));
        EXPECT_THAT(addition.manifest(), Not(HasSubstr("\"app\"")));
        EXPECT_THAT(addition.manifest(), HasSubstr("\"next\""));
    }
}

TEST(AddPackages, answersZeroWhenEveryPackageIsSkipped) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .beVersion = "7", .files = {{"linux_arm7", "a.so", "/a"}}});
    EXPECT_EQ(addition.add(), 0);
}

TEST(AddPackages, readsTheVersionEvenForAStar) {
    Addition addition("linux_arm7");
    addition.archive.manifest = document("<VekAppPackage/>");
    addition.offer({.name = "app"});
    EXPECT_THAT(raised([&] { addition.add(); }), IsLocated("ArchiveExtended::Version", zStatus_NotFound));
}

// ---- Installation directories ---------------------------------------------------------------------------

TEST(AddPackages, copiesFilesIntoAnInstallation) {
    Addition addition("win");
    addition.offer({.name = "app", .files = {{"win", "tool.dll", "tool.dll"}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_EQ(addition.scratch.read("host/tool.dll"), "content");
    EXPECT_THAT(addition.output.lines(),
                ElementsAre("out: TaVekUtil:    - Loaded file for Windows: tool.dll"));
    EXPECT_EQ(addition.script(), "<S><File/></S>");
}

TEST(AddPackages, countsAnInstallationThatSkippedItsFile) {
    Addition addition("win");
    addition.offer({.name = "app", .files = {{"win", "tool.dll", "none/tool.dll"}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_THAT(addition.output.lines(), ElementsAre(HasSubstr("Directory does not exists")));
    EXPECT_FALSE(addition.scratch.exists("host/none"));
}

TEST(AddPackages, makesTheDirectoryOfAResource) {
    for (const char* type : {"Resource", "resource", "RESOURCE"}) {
        Addition addition("win");
        addition.offer({.name = "app", .files = {{"win", "a.txt", "deep/er/a.txt", type}}});
        EXPECT_EQ(addition.add(), 1);
        EXPECT_EQ(addition.scratch.read("host/deep/er/a.txt"), "content") << type;
    }
}

TEST(AddPackages, usesTheDirectoryOfAResourceThatIsThere) {
    Addition addition("win");
    addition.offer({.name = "app", .files = {{"win", "a.txt", "a.txt", "Resource"}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_EQ(addition.scratch.read("host/a.txt"), "content");
}

TEST(AddPackages, needsADestinationOnWindows) {
    Addition addition("win");
    addition.offer({.name = "app", .files = {{"win", "tool.dll", ""}}});
    EXPECT_STREQ(raised([&] { addition.add(); }).what(),
                 "Default Destination for Windows Platform is Not Supported");
}

TEST(AddPackages, takesAPlatformThatBeginsWithWinForWindows) {
    Addition addition("win");
    addition.offer({.name = "app", .files = {{"win64", "tool.dll", "tool.dll"}}});
    EXPECT_EQ(addition.add(), 1);
    EXPECT_TRUE(addition.scratch.exists("host/tool.dll"));
}

// ---- Lengths and failures -------------------------------------------------------------------------------

TEST(AddPackages, takesResourcePathsOfUpTo255Characters) {
    const auto resource = [](Addition& addition, std::size_t length) {
        const std::size_t used = addition.archive.path.size() + 1;
        // Directories of one letter, so that no single name is too long for the file system.
        std::string destination;
        while (used + destination.size() + 3 < length) destination += "d/";
        destination += std::string(length - used - destination.size(), 'f');
        addition.offer({.name = "app", .files = {{"win", "a.txt", destination, "Resource"}}});
        return destination;
    };
    Addition fits("win");
    const std::string destination = resource(fits, 255);
    EXPECT_EQ(fits.add(), 1);
    EXPECT_TRUE(fits.scratch.exists("host/" + destination));

    Addition longer("win");
    resource(longer, 256);
    EXPECT_THAT(raised([&] { longer.add(); }), IsLocated(operation, zStatus_DoesNotFit));
}

TEST(AddPackages, takesMemberNamesOfUpTo511Characters) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"linux_arm7", "a", "/a"}}});
    PackageFile& file = addition.packages[0].files[0];
    const std::string name(511 - std::string("data/12345-").size() + 1, 'n');
    ASSERT_EQ(zStrCopy(file.path.data(), file.path.capacity(), name.c_str()), zStatus_Success);
    EXPECT_THAT(raised([&] { addition.add(); }), IsLocated(operation, zStatus_DoesNotFit));
    ASSERT_EQ(zStrCopy(file.path.data(), file.path.capacity(), name.substr(1).c_str()), zStatus_Success);
    EXPECT_EQ(raised([&] { addition.add(); }).operation(), "TaVekUtil_InjectFile") << "no such file, that is";
}

TEST(AddPackages, formsTheMemberNameBeforeItMissesADestination) {
    for (const char* platform : {"win", "ombix"}) {
        Addition addition(platform);
        addition.offer({.name = "app", .files = {{platform, "a", ""}}});
        PackageFile& file = addition.packages[0].files[0];
        const std::string name(511, 'n');
        ASSERT_EQ(zStrCopy(file.path.data(), file.path.capacity(), name.c_str()), zStatus_Success);
        EXPECT_THAT(raised([&] { addition.add(); }), IsLocated(operation, zStatus_DoesNotFit)) << platform;
    }
}

TEST(AddPackages, reportsAFileNameThatCannotBeTaken) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"linux_arm7", "a.so", "/a"}}});
    const testing::Fault fault("zPath_FileName", zStatus_DoesNotFit);
    EXPECT_THAT(raised([&] { addition.add(); }), IsLocated(operation, zStatus_DoesNotFit));
    EXPECT_EQ(addition.script(), "<S><File/></S>");
}

TEST(AddPackages, passesOnAResourceDirectoryThatCannotBeMade) {
    Addition addition("win");
    addition.offer({.name = "app", .files = {{"win", "a.txt", "keep.txt/a.txt", "Resource"}}});
    EXPECT_EQ(raised([&] { addition.add(); }).operation(), operation) << "a file is in the way";
}

TEST(AddPackages, passesOnAFailedInjection) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"linux_arm7", "a.so", "/a"}}});
    addition.archive.archive = testing::container({{"script.xml", "<S/>"}});
    EXPECT_THAT(raised([&] { addition.add(); }),
                IsLocated("TaVekUtil_DeletePreviousFiles", zStatus_NotFound));
    EXPECT_THAT(addition.output.lines(),
                ElementsAre("err: TaVekUtil: Failed injecting files into upgrade package."));
    EXPECT_THAT(addition.manifest(), Not(HasSubstr("\"app\""))) << "only what went in is recorded";
}

TEST(AddPackages, reportsAFailedMerge) {
    Addition addition("linux_arm7");
    addition.offer({.name = "app", .files = {{"linux_arm7", "a.so", "/a"}}});
    addition.packages[0].manifest = document("<OtherRoot><VekApp name='app'/></OtherRoot>");
    EXPECT_THAT(raised([&] { addition.add(); }), IsLocated(operation, zStatus_NotFound));
    EXPECT_THAT(addition.members(), ElementsAre("script.xml", "data/12345-a.so")) << "files go in first";
}

}  // namespace
