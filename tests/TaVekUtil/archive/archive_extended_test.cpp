#include "TaVekUtil/archive/archive_extended.h"

#include <gtest/gtest.h>

#include "platform/base/failure.h"
#include "platform/os/os.h"
#include "platform/xml/xml.h"
#include "tests/platform/os/pe_image.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::compact;
using testing::document;
using testing::IsFinding;
using testing::IsLocated;
using testing::raised;
using testing::ScratchDirectory;
using testing::writeArchive;

constexpr const char* sensorScript = "<Script><Version value='6.1'/><File name='R6'/></Script>";

ArchiveExtended load(const std::string& path) {
    ArchiveExtended archive;
    archive.Load(path.c_str());
    return archive;
}

/// Makes an installation directory "host" whose executable bears `version`.
std::string installHost(const ScratchDirectory& scratch, const os::FileVersion& version) {
    testing::PeImage image;
    image.resources = {{.version = version}};
    scratch.write("host/bin/win64/TaQor.exe", image.build());
    return scratch.path("host");
}

TEST(ArchiveExtended, loadsAnArchiveWithAFreshManifest) {
    const ScratchDirectory scratch;
    const auto archive = load(writeArchive(scratch.path("a.pkg"), {{"script.xml", sensorScript}}));
    EXPECT_EQ(archive.platform, "linux_arm64");
    EXPECT_EQ(archive.path, scratch.path("a.pkg"));
    EXPECT_FALSE(archive.isInstallation());
    EXPECT_EQ(compact(archive.manifest.get()),
              "<VekAppPackage><BeVersion>6.1</BeVersion><Platform>linux_arm64</Platform></VekAppPackage>");
    EXPECT_FALSE(testing::hasMember(archive.archive.get(), "vekPackages.xml")) << "only in memory";
}

TEST(ArchiveExtended, loadsAnArchiveWithItsOwnManifest) {
    const ScratchDirectory scratch;
    const auto archive = load(writeArchive(
        scratch.path("a.pkg"), {{"script.xml", sensorScript},
                                {"vekPackages.xml", "<VekAppPackage><VekApp name='x'/></VekAppPackage>"}}));
    EXPECT_EQ(compact(archive.manifest.get()), "<VekAppPackage><VekApp name='x'/></VekAppPackage>");
}

TEST(ArchiveExtended, takesAnInstallationDirectoryForAWindowsArchive) {
    const ScratchDirectory scratch;
    const auto archive = load(installHost(scratch, {10, 0, 0, 1}));
    EXPECT_EQ(archive.platform, "win");
    EXPECT_TRUE(archive.isInstallation());
    EXPECT_EQ(archive.path, scratch.path("host"));
    EXPECT_NE(archive.archive.get(), nullptr) << "constructed, though nothing is loaded into it";
    EXPECT_EQ(compact(archive.manifest.get()),
              "<VekAppPackage><BeVersion>10.0.0.1</BeVersion><Platform>win</Platform></VekAppPackage>");
}

TEST(ArchiveExtended, reportsAPathThatNamesNothing) {
    const ScratchDirectory scratch;
    const std::string path = scratch.path("nothing.pkg");
    EXPECT_THAT(raised([&] { load(path); }), IsFinding(zStatus_NotFound, "Path not found: " + path));
}

TEST(ArchiveExtended, reportsAFileThatIsNoArchive) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.pkg", "no archive");
    EXPECT_STREQ(raised([&] { load(path); }).what(), ("Invalid Archive Path: " + path).c_str());
}

TEST(ArchiveExtended, reportsADirectoryWithoutTheHost) {
    const ScratchDirectory scratch;
    scratch.write("host/bin/win64/other.exe", "");
    const std::string path = scratch.path("host");
    EXPECT_STREQ(raised([&] { load(path); }).what(), ("Invalid Archive Path: " + path).c_str());
}

TEST(ArchiveExtended, passesOnWhatTheProbesFind) {
    const ScratchDirectory scratch;
    const auto failureOf = [&](const std::vector<testing::Member>& members) {
        return raised([&] { load(writeArchive(scratch.path("a.pkg"), members)); });
    };
    EXPECT_THAT(failureOf({{"other", "R6"}}), IsLocated("TaVekUtils_GetArchivePlatform", zStatus_NotFound));
    EXPECT_THAT(failureOf({{"script.xml", "<Script/>"}}),
                IsFinding(zStatus_NotFound, "Could not determine platform"));
    EXPECT_THAT(failureOf({{"script.xml", "<Script>R6</Script>"}}),
                IsFinding(zStatus_Unestablished, "Could not retrieve Qor BE version"));
    EXPECT_THAT(failureOf({{"script.xml", "<Script>R6<Version/></Script>"}}),
                IsLocated("TaVekUtils_GetArchiveVersion", zStatus_NotFound));
    EXPECT_THAT(failureOf({{"script.xml", "R6"}, {"vekPackages.xml", "<a>"}}),
                IsLocated("TaVekUtils_GetUnifiedManifest", zStatus_Malformed));
}

TEST(ArchiveExtended, reportsAContainerThatCannotBeConstructed) {
    const testing::Fault fault("zArchive_Construct", zStatus_NoMemory);
    ArchiveExtended archive;
    EXPECT_THAT(raised([&] { archive.Load("a.pkg"); }), IsLocated("ArchiveExtended::Load", zStatus_NoMemory));
    EXPECT_EQ(archive.path, "a.pkg") << "the path is set in any case";
    EXPECT_EQ(archive.archive.get(), nullptr);
}

TEST(ArchiveExtended, reportsAFileNameThatDoesNotFitUnderTheManifestsName) {
    const ScratchDirectory scratch;
    const std::string path = writeArchive(scratch.path("a.pkg"), {{"script.xml", sensorScript}});
    // No file system here takes a name of 256 characters.
    const testing::Fault fault("zPath_FileName", zStatus_DoesNotFit);
    EXPECT_THAT(raised([&] { load(path); }), IsLocated("TaVekUtils_GetUnifiedManifest", zStatus_DoesNotFit));
}

TEST(ArchiveExtended, keepsThePathOfAFailedLoad) {
    ArchiveExtended archive;
    raised([&] { archive.Load("no/such.pkg"); });
    EXPECT_EQ(archive.path, "no/such.pkg");
    EXPECT_EQ(archive.platform, "");
    EXPECT_EQ(archive.manifest.get(), nullptr);
}

TEST(ArchiveExtended, sharesItsContainerAndManifestWithItsCopies) {
    const ScratchDirectory scratch;
    const auto archive = load(writeArchive(scratch.path("a.pkg"), {{"script.xml", sensorScript}}));
    {
        const ArchiveExtended copy = archive;
        EXPECT_EQ(copy.archive.get(), archive.archive.get());
        zXmlItem item = nullptr;
        ASSERT_EQ(zXml_AddItem(copy.manifest.get(), zXml_Root(copy.manifest.get()), "VekApp", &item),
                  zStatus_Success);
    }
    EXPECT_THAT(compact(archive.manifest.get()), testing::HasSubstr("<VekApp/>"));
}

TEST(ArchiveExtendedOutput, isNeverTheArchiveItself) {
    const ScratchDirectory scratch;
    const auto archive = load(writeArchive(scratch.path("a.pkg"), {{"script.xml", sensorScript}}));
    const std::string otherName = scratch.path("Custom-a.pkg");
    EXPECT_EQ(archive.CheckOutput(otherName.c_str()), zStatus_Success) << "yet to be made";
    EXPECT_EQ(archive.CheckOutput(scratch.write("b.pkg", "older").c_str()), zStatus_Success);

    ASSERT_FALSE(os::createHardLink(archive.path, otherName));
    EXPECT_EQ(archive.CheckOutput(otherName.c_str()), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), otherName + ": that is the archive itself");
}

TEST(ArchiveExtendedVersion, isTheBeVersionOfTheManifest) {
    ArchiveExtended archive;
    archive.manifest = document("<AnyRoot><BeVersion>6.1.2</BeVersion><BeVersion>7</BeVersion></AnyRoot>");
    EXPECT_EQ(archive.Version(), "6.1.2");
}

TEST(ArchiveExtendedVersion, hasUpTo127Characters) {
    ArchiveExtended archive;
    const std::string longest(127, '1');
    archive.manifest = document("<M><BeVersion>" + longest + "</BeVersion></M>");
    EXPECT_EQ(archive.Version(), longest);
    archive.manifest = document("<M><BeVersion>" + longest + "1</BeVersion></M>");
    EXPECT_THAT(raised([&] { archive.Version(); }),
                IsLocated("ArchiveExtended::Version", zStatus_DoesNotFit));
}

TEST(ArchiveExtendedVersion, mustBeThere) {
    ArchiveExtended archive;
    archive.manifest = document("<M><Platform>win</Platform></M>");
    EXPECT_THAT(raised([&] { archive.Version(); }), IsLocated("ArchiveExtended::Version", zStatus_NotFound));
}

}  // namespace
