#include "TaVekUtil/archive/unified_manifest.h"

#include <gtest/gtest.h>

#include <cstring>

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
using testing::container;
using testing::document;
using testing::Fault;
using testing::IsFinding;
using testing::IsLocated;
using testing::Member;
using testing::raised;
using testing::ScratchDirectory;

constexpr const char* operation = "TaVekUtils_GetUnifiedManifest";
constexpr const char* sensorScript = "<Script><Version value='6.1'/>R4</Script>";

// ---- Obtaining the manifest of an archive ---------------------------------------------------------------

std::string manifestOf(const std::vector<Member>& members) {
    const auto archive = container(members);
    Ta::Object<void*> manifest;
    TaVekUtils_GetUnifiedManifest(archive.get(), "a.pkg", manifest);
    return compact(manifest.get());
}

TEST(ArchiveManifest, isParsedWhenThereIsOne) {
    EXPECT_EQ(manifestOf({{"vekPackages.xml", "<Any><VekApp name='x'/></Any>"}}),
              "<Any><VekApp name='x'/></Any>");
}

TEST(ArchiveManifest, isTextUpToItsFirstZeroByte) {
    EXPECT_EQ(manifestOf({{"vekPackages.xml", std::string("<M/>\0rubbish", 12)}}), "<M/>");
}

TEST(ArchiveManifest, isBuiltFreshWhenThereIsNone) {
    EXPECT_EQ(manifestOf({{"script.xml", sensorScript}, {"VekPackages.xml", "<other/>"}}),
              "<VekAppPackage><BeVersion>6.1</BeVersion><Platform>linux_arm7</Platform></VekAppPackage>");
}

TEST(ArchiveManifest, isBuiltFromThePlatformFirst) {
    // Neither platform nor version can be found; the platform is asked for first.
    EXPECT_THAT(raised([] {
                    manifestOf({{"script.xml", "<Script/>"}});
                }),
                IsFinding(zStatus_NotFound, "Could not determine platform"));
    EXPECT_THAT(raised([] {
                    manifestOf({{"script.xml", "<Script>R4</Script>"}});
                }),
                IsFinding(zStatus_Unestablished, "Could not retrieve Qor BE version"));
    EXPECT_THAT(raised([] { manifestOf({}); }), IsLocated("TaVekUtils_GetArchivePlatform", zStatus_NotFound));
}

TEST(ArchiveManifest, mustBeXml) {
    const auto exception = raised([] { manifestOf({{"vekPackages.xml", "<M>"}}); });
    EXPECT_THAT(exception, IsLocated(operation, zStatus_Malformed));
    EXPECT_THAT(exception.what(), testing::HasSubstr("vekPackages.xml:1:"));
}

TEST(ArchiveManifest, reportsAnArchiveThatCannotBeSearched) {
    const Fault fault("zArchive_Find", zStatus_Malformed);
    EXPECT_THAT(raised([] {
                    manifestOf({{"script.xml", sensorScript}});
                }),
                IsLocated(operation, zStatus_Malformed));
}

TEST(ArchiveManifest, reportsWhateverStepOfItsMakingFails) {
    for (const char* step : {"zXml_Construct", "zXml_AddItem", "zXml_SetItemText"}) {
        const Fault fault(step, zStatus_NoMemory);
        EXPECT_THAT(raised([] {
                        manifestOf({{"script.xml", sensorScript}});
                    }),
                    IsLocated(operation, zStatus_NoMemory))
            << step;
    }
    const Fault fault("zXml_AddItem", zStatus_NoMemory, 3);
    EXPECT_THAT(raised([] {
                    manifestOf({{"script.xml", sensorScript}});
                }),
                IsLocated(operation, zStatus_NoMemory));
}

TEST(ArchiveManifest, isMadeOnceItsContentIsKnown) {
    const Fault fault("zXml_Construct", zStatus_NoMemory);
    EXPECT_THAT(raised([] {
                    manifestOf({{"script.xml", "<Script>R4</Script>"}});
                }),
                IsFinding(zStatus_Unestablished, "Could not retrieve Qor BE version"));
}

// ---- Obtaining the manifest of an installation directory ------------------------------------------------

std::string manifestOf(const ScratchDirectory& installation) {
    Ta::Object<void*> manifest;
    TaVekUtils_GetUnifiedManifest(installation.path(), manifest);
    return compact(manifest.get());
}

void installHost(const ScratchDirectory& scratch) {
    testing::PeImage image;
    image.resources = {{.version = {6, 1, 2, 57}}};
    scratch.write("bin/win64/TaQor.exe", image.build());
}

TEST(InstalledManifest, isTheFileInTheDirectory) {
    const ScratchDirectory scratch;
    scratch.write("vekPackages.xml", "<M><VekApp name='x'/></M>");
    EXPECT_EQ(manifestOf(scratch), "<M><VekApp name='x'/></M>");
}

TEST(InstalledManifest, isBuiltFreshWhenThereIsNone) {
    const ScratchDirectory scratch;
    installHost(scratch);
    EXPECT_EQ(manifestOf(scratch),
              "<VekAppPackage><BeVersion>6.1.2.57</BeVersion><Platform>win</Platform></VekAppPackage>");
    EXPECT_FALSE(scratch.exists("vekPackages.xml")) << "only in memory";
}

TEST(InstalledManifest, needsTheHostVersionWhenBuiltFresh) {
    const ScratchDirectory scratch;
    EXPECT_THAT(raised([&] { manifestOf(scratch); }),
                IsFinding(zStatus_NotFound, "TaQor version could not be established"));
}

TEST(InstalledManifest, isMadeOnceTheHostVersionIsKnown) {
    const ScratchDirectory scratch;
    const Fault fault("zXml_Construct", zStatus_NoMemory);
    EXPECT_THAT(raised([&] { manifestOf(scratch); }),
                IsFinding(zStatus_NotFound, "TaQor version could not be established"));
    installHost(scratch);
    EXPECT_THAT(raised([&] { manifestOf(scratch); }), IsLocated(operation, zStatus_NoMemory));
}

TEST(InstalledManifest, mustBeXml) {
    const ScratchDirectory scratch;
    installHost(scratch);
    scratch.write("vekPackages.xml", "<M>");
    EXPECT_THAT(raised([&] { manifestOf(scratch); }), IsLocated(operation, zStatus_Malformed));
}

TEST(InstalledManifest, liesBehindOneBackslash) {
    EXPECT_EQ(installedManifestPath("C:\\host"), "C:\\host\\vekPackages.xml");
    EXPECT_EQ(installedManifestPath("C:\\host\\"), "C:\\host\\\\vekPackages.xml");
    EXPECT_EQ(installedManifestPath("/opt/host/"), "/opt/host/\\vekPackages.xml");
}

// ---- Merging a package ----------------------------------------------------------------------------------

/// A manifest that packages are merged into.
struct Merge {
    Ta::Object<void*> unified = document("<VekAppPackage><BeVersion>6.1</BeVersion></VekAppPackage>");

    Merge() = default;
    explicit Merge(const std::string& text) : unified(document(text)) {}

    zStatus merge(const std::string& package, const char* platform = "linux_arm7") {
        return TaVekUtils_MergeVekApp(document(package).get(), unified.get(), platform);
    }
    zStatus remove(const std::string& name) {
        return TaVekUtils_RemoveVekAppEntries(unified.get(), name.c_str());
    }
    /// The root's content behind BeVersion.
    std::string entries() const {
        std::string text = compact(unified.get());
        for (const char* frame : {"<VekAppPackage>", "<BeVersion>6.1</BeVersion>", "</VekAppPackage>"}) {
            if (const auto at = text.find(frame); at != std::string::npos) text.erase(at, std::strlen(frame));
        }
        return text == "<VekAppPackage/>" ? "" : text;
    }
};

std::string packageOf(const std::string& name, const std::string& platforms) {
    return "<VekAppPackage><VekApp name=\"" + name + "\">" + platforms + "</VekApp></VekAppPackage>";
}

TEST(MergeVekApp, appendsTheFileEntriesOfThePlatform) {
    Merge manifest;
    const std::string file =
        "<F type=\"VekApp\" extra=\"1\"><Source>a</Source><Destination/><More>text</More></F>";
    EXPECT_EQ(manifest.merge(packageOf("app", "<P name='win'><G/></P><P name='linux_arm7'>" + file +
                                                  "<H/></P><P name='ombix'><I/></P>")),
              zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"app\">" + file + "<H/></VekApp>");
}

TEST(MergeVekApp, takesEveryPlatformElementWhoseNameBeginsWithThePlatform) {
    Merge manifest;
    EXPECT_EQ(manifest.merge(packageOf("app",
                                       "<P name='linux_arm7x'><A/></P><P name='linux_arm'><B/></P>"
                                       "<Q name='linux_arm7'><C/></Q><P name='Linux_Arm7'><D/></P>"
                                       "<P name='linux_arm7'><E/></P>")),
              zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"app\"><A/><C/><E/></VekApp>");
}

TEST(MergeVekApp, passesOverPlatformElementsWithoutAReadableName) {
    Merge manifest;
    const std::string longest = "linux_arm7" + std::string(21, 'x');
    EXPECT_EQ(manifest.merge(packageOf("app", "<P name='linux_arm7'><A/></P><P><B/></P><P name='" + longest +
                                                  "'><C/></P><P name='" + longest + "x'><D/></P>")),
              zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"app\"><A/><C/></VekApp>");
}

TEST(MergeVekApp, recordsAPackageWithoutFilesForThePlatform) {
    Merge manifest;
    EXPECT_EQ(manifest.merge(packageOf("app", "<P name='win'><A/></P>")), zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"app\"/>");
}

TEST(MergeVekApp, replacesThePackageAndPutsItLast) {
    Merge manifest;
    ASSERT_EQ(manifest.merge(packageOf("app", "<P name='linux_arm7'><Old/></P>")), zStatus_Success);
    ASSERT_EQ(manifest.merge(packageOf("other", "")), zStatus_Success);
    ASSERT_EQ(manifest.merge(packageOf("app", "<P name='linux_arm7'><New/></P>")), zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"other\"/><VekApp name=\"app\"><New/></VekApp>");
}

TEST(MergeVekApp, replacesEntriesWhoseNameItsOwnBeginsWith) {
    Merge manifest;
    for (const char* name : {"abc", "abcdefg", "bc"}) {
        ASSERT_EQ(manifest.merge(packageOf(name, "")), zStatus_Success);
    }
    ASSERT_EQ(manifest.merge(packageOf("abcdef", "")), zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"abcdefg\"/><VekApp name=\"bc\"/><VekApp name=\"abcdef\"/>");
}

TEST(MergeVekApp, needsThePackageUnderItsRoot) {
    Merge manifest;
    EXPECT_EQ(manifest.merge("<Package><VekApp name='app'/></Package>"), zStatus_NotFound);
    EXPECT_EQ(manifest.merge("<VekAppPackage><vekapp name='app'/></VekAppPackage>"), zStatus_NotFound);
    EXPECT_EQ(manifest.entries(), "");
}

TEST(MergeVekApp, needsAPackageNameOfUpTo127Characters) {
    Merge manifest;
    EXPECT_EQ(manifest.merge("<VekAppPackage><VekApp/></VekAppPackage>"), zStatus_NotFound);
    const std::string longest(127, 'n');
    EXPECT_EQ(manifest.merge(packageOf(longest + 'n', "")), zStatus_DoesNotFit);
    EXPECT_EQ(manifest.entries(), "");
    EXPECT_EQ(manifest.merge(packageOf(longest, "")), zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"" + longest + "\"/>");
}

TEST(MergeVekApp, answersTheStatusOfARefusedRemoval) {
    Merge manifest("<Other/>");
    EXPECT_EQ(manifest.merge(packageOf("app", "")), zStatus_NotFound);
    EXPECT_EQ(compact(manifest.unified.get()), "<Other/>");
}

TEST(MergeVekApp, answersTheStatusOfAFailingStepAndLeavesWhatWasDone) {
    const std::string package = packageOf("app", "<P name='linux_arm7'><A/><B/></P><P name='linux_arm7'/>");
    const std::pair<const char*, const char*> steps[] = {
        {"zXml_AddItem", ""}, {"zXml_SetAttrText", "<VekApp/>"}, {"zXml_CopyItem", "<VekApp name=\"app\"/>"}};
    for (const auto& [step, left] : steps) {
        Merge manifest;
        const Fault fault(step, zStatus_NoMemory);
        EXPECT_EQ(manifest.merge(package), zStatus_NoMemory) << step;
        EXPECT_EQ(manifest.entries(), left) << step;
    }
    Merge manifest;
    const Fault fault("zXml_CopyItem", zStatus_NoMemory, 2);
    EXPECT_EQ(manifest.merge(package), zStatus_NoMemory);
    EXPECT_EQ(manifest.entries(), "<VekApp name=\"app\"><A/></VekApp>");
}

// ---- Dropping entries -----------------------------------------------------------------------------------

TEST(RemoveVekAppEntries, dropsEveryEntryThatTheNameBeginsWith) {
    Merge manifest(
        "<VekAppPackage><VekApp name=''/><VekApp name='a'/><VekApp name='A'/><VekApp name='ab'/>"
        "<VekApp name='abc'/><vekapp name='ab'/><Other/></VekAppPackage>");
    EXPECT_EQ(manifest.remove("ab"), zStatus_Success);
    EXPECT_EQ(manifest.entries(), "<VekApp name='A'/><VekApp name='abc'/><vekapp name='ab'/><Other/>");
}

TEST(RemoveVekAppEntries, needsTheRootByItsName) {
    Merge manifest("<Other><VekApp name='a'/></Other>");
    EXPECT_EQ(manifest.remove("a"), zStatus_NotFound);
    EXPECT_EQ(compact(manifest.unified.get()), "<Other><VekApp name='a'/></Other>");
}

TEST(RemoveVekAppEntries, removesNothingWhenANameCannotBeRead) {
    const std::string tooLong(128, 'a');
    Merge missing("<VekAppPackage><VekApp name='a'/><VekApp/></VekAppPackage>");
    EXPECT_EQ(missing.remove("a"), zStatus_NotFound);
    EXPECT_EQ(missing.entries(), "<VekApp name='a'/><VekApp/>");
    Merge longer("<VekAppPackage><VekApp name='a'/><VekApp name='" + tooLong + "'/></VekAppPackage>");
    EXPECT_EQ(longer.remove("a"), zStatus_DoesNotFit);
    EXPECT_THAT(longer.entries(), testing::StartsWith("<VekApp name='a'/>"));
}

TEST(RemoveVekAppEntries, readsNamesOfUpTo127Characters) {
    const std::string longest(127, 'a');
    Merge manifest("<VekAppPackage><VekApp name='" + longest + "'/></VekAppPackage>");
    EXPECT_EQ(manifest.remove(longest), zStatus_Success);
    EXPECT_EQ(manifest.entries(), "");
}

TEST(RemoveVekAppEntries, stopsAtAFailingDeletion) {
    Merge manifest(
        "<VekAppPackage><VekApp name='a'/><VekApp name='a' n='2'/><VekApp name='a' n='3'/>"
        "</VekAppPackage>");
    const Fault fault("zXml_DeleteItem", zStatus_BadArgument, 2);
    EXPECT_EQ(manifest.remove("a"), zStatus_BadArgument);
    EXPECT_EQ(manifest.entries(), "<VekApp name='a' n='2'/><VekApp name='a' n='3'/>");
}

}  // namespace
