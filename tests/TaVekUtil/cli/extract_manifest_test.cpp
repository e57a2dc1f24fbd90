#include "TaVekUtil/cli/extract_manifest.h"

#include <gmock/gmock.h>

#include <iostream>

#include "tests/platform/os/pe_image.h"
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
using testing::IsEmpty;
using testing::ScratchDirectory;
using testing::writeArchive;

constexpr const char* script = "<S><Version value='6.1'/><File name='R6'/></S>";
constexpr const char* failure = "err: TaVekUtil: Failed to extract manifest file. Error: ";

struct Extraction {
    ScratchDirectory scratch;
    CapturedOutput output;

    int extract(const std::string& archive, const std::string& name = "m.xml") {
        return extractManifest(scratch.path(archive).c_str(), scratch.path(name));
    }
};

TEST(ExtractManifest, savesAFreshOneAndLeavesTheArchive) {
    Extraction extraction;
    writeArchive(extraction.scratch.path("a.pkg"), {{"script.xml", script}});
    const std::string before = extraction.scratch.read("a.pkg");
    EXPECT_EQ(extraction.extract("a.pkg"), 0);
    EXPECT_EQ(compact(extraction.scratch.read("m.xml")),
              "<VekAppPackage><BeVersion>6.1</BeVersion><Platform>linux_arm64</Platform></VekAppPackage>");
    EXPECT_EQ(extraction.scratch.read("a.pkg"), before);
    EXPECT_THAT(extraction.output.lines(),
                ElementsAre("out: Manifest saved at " + extraction.scratch.path("m.xml")));
}

TEST(ExtractManifest, savesTheOneOfTheArchive) {
    Extraction extraction;
    const std::string own = "<VekAppPackage><VekApp name='x'/></VekAppPackage>";
    writeArchive(extraction.scratch.path("a.pkg"), {{"script.xml", script}, {"vekPackages.xml", own}});
    EXPECT_EQ(extraction.extract("a.pkg"), 0);
    EXPECT_EQ(extraction.scratch.read("m.xml"), own);
}

TEST(ExtractManifest, savesTheOneOfAnInstallationDirectory) {
    Extraction extraction;
    testing::PeImage image;
    image.resources = {{.version = {6, 1, 2, 57}}};
    extraction.scratch.write("host/bin/win64/TaQor.exe", image.build());
    EXPECT_EQ(extraction.extract("host"), 0);
    EXPECT_EQ(compact(extraction.scratch.read("m.xml")),
              "<VekAppPackage><BeVersion>6.1.2.57</BeVersion><Platform>win</Platform></VekAppPackage>");

    const std::string own = "<VekAppPackage><Platform>win</Platform></VekAppPackage>";
    extraction.scratch.write("host/vekPackages.xml", own);
    EXPECT_EQ(extraction.extract("host"), 0);
    EXPECT_EQ(extraction.scratch.read("m.xml"), own);
}

TEST(ExtractManifest, reportsAnArchiveThatCannotBeOpened) {
    Extraction extraction;
    EXPECT_EQ(extraction.extract("a.pkg"), 1);
    EXPECT_FALSE(extraction.scratch.exists("m.xml"));
    EXPECT_THAT(extraction.output.lines(),
                ElementsAre(failure + ("Path not found: " + extraction.scratch.path("a.pkg"))));
}

TEST(ExtractManifest, reportsAFileThatCannotBeSaved) {
    Extraction extraction;
    writeArchive(extraction.scratch.path("a.pkg"), {{"script.xml", script}});
    EXPECT_EQ(extraction.extract("a.pkg", "missing/m.xml"), 1);
    EXPECT_THAT(extraction.output.lines(),
                ElementsAre(failure + ("extractManifest: " + extraction.scratch.path("missing/m.xml") +
                                       ": No such file or directory (not found, status -999, "
                                       "TaVekUtil:1329)")));
}

TEST(ExtractManifest, keepsNothingOpen) {
    Extraction extraction;
    writeArchive(extraction.scratch.path("a.pkg"), {{"script.xml", script}});
    EXPECT_EQ(extraction.extract("a.pkg"), 0);
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
    const testing::Fault fault("zXml_Save", zStatus_IoError);
    EXPECT_EQ(extraction.extract("a.pkg"), 1);
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(ExtractManifest, letsForeignExceptionsPass) {
    Extraction extraction;
    writeArchive(extraction.scratch.path("a.pkg"), {{"script.xml", script}});
    {
        const testing::BrokenStream broken(std::cout);
        EXPECT_THROW(extraction.extract("a.pkg"), std::logic_error)
            << "the line of success cannot be written";
    }
    EXPECT_THAT(extraction.output.lines(), IsEmpty());
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(ExtractManifest, neverWritesOverTheArchive) {
    Extraction extraction;
    const std::string archive = writeArchive(extraction.scratch.path("a.pkg"), {{"script.xml", script}});
    const std::string before = extraction.scratch.read("a.pkg");
    EXPECT_EQ(extraction.extract("a.pkg", "a.pkg"), 1);
    EXPECT_EQ(extraction.scratch.read("a.pkg"), before);
    EXPECT_THAT(extraction.output.lines(),
                ElementsAre(failure + ("extractManifest: " + archive) +
                            ": that is the archive itself (invalid argument, status -22, TaVekUtil:1329)"));
}

}  // namespace
