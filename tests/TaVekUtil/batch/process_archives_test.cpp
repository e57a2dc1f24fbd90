#include "TaVekUtil/batch/process_archives.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "platform/os/os.h"
#include "tests/platform/os/pe_image.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/living_objects.h"
#include "tests/testing/package_fixture.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/xml_fixture.h"

namespace {

using testing::CapturedOutput;
using testing::compact;
using testing::ElementsAre;
using testing::Fault;
using testing::IsEmpty;
using testing::IsLocatedAt;
using testing::memberContent;
using testing::memberNames;
using testing::raised;
using testing::ScratchDirectory;
using testing::StartsWith;

constexpr const char* operation = "TaVekUtil_ModifyVekPkgs";
constexpr const char* script = "<S><Version value='6.1'/><File name='host' source='R6'/></S>";
constexpr const char* injectionFailure = "err: TaVekUtil: Failed injecting files into upgrade package.";
constexpr const char* processFailure = "err: TaVekUtil: Failed process upgrade package.";

/// Archives to process under the prefix "P".
struct Processing {
    ScratchDirectory scratch;
    BuildConfig config;
    CapturedOutput output;

    Processing() { setPrefix("P"); }
    void setPrefix(const std::string& prefix) {
        EXPECT_EQ(zStrCopy(config.outputPrefix.data(), config.outputPrefix.capacity(), prefix.c_str()),
                  zStatus_Success);
    }
    std::string archive(const std::string& name, const std::string& manifest = "") {
        std::vector<testing::Member> members{{"script.xml", script}, {"host", "own"}};
        if (!manifest.empty()) members.push_back({"vekPackages.xml", manifest});
        return testing::writeArchive(scratch.path(name), members);
    }
    void addArchive(const std::string& name) { config.stockPackages.push_back(archive(name)); }
    /// An installation directory of the host software.
    std::string installation() {
        testing::PeImage image;
        image.resources = {{.version = {6, 1, 0, 0}}};
        scratch.write("host/bin/win64/TaQor.exe", image.build());
        return scratch.path("host");
    }
    void offerPackage() {
        config.addonPackages.push_back(testing::loadedPackage(
            scratch, "pkg",
            {.name = "app", .files = {{"linux_arm64", "a.so", "/a"}, {"win", "w.dll", "w.dll"}}}));
    }
    void modify(const std::string& path) {
        TaVekUtil_ModifyVekPkgs(config.addonPackages, config.vekPkgsToRemove, path.c_str(), config);
    }
    std::string processing(const std::string& name) const {
        return "out: TaVekUtil: Processing Archive: " + scratch.path(name);
    }
    std::string loaded() const {
        return "out: TaVekUtil:    - Loaded file for Linux Arm64 Sensor: " + scratch.path("pkg/a.so");
    }
    std::string saving(const std::string& name) const {
        return "out: TaVekUtil:    - Saving new package as: " + scratch.path() + os::pathSeparator + name;
    }
    std::string unchanged(const std::string& name) const {
        return "out: TaVekUtil:    - No libraries were loaded for: " + scratch.path(name);
    }
};

TEST(ModifyPackages, savesTheArchiveUnderThePrefix) {
    Processing processing;
    processing.offerPackage();
    const std::string path = processing.archive("sensor.pkg");
    const std::string before = testing::readFile(path);
    processing.modify(path);
    EXPECT_THAT(processing.output.lines(),
                ElementsAre("out: ", processing.processing("sensor.pkg"), processing.loaded(),
                            processing.saving("P-sensor.pkg")));
    EXPECT_EQ(testing::readFile(path), before);
    const std::string saved = processing.scratch.path("P-sensor.pkg");
    EXPECT_THAT(memberNames(saved), ElementsAre("host", "script.xml", "data/12345-a.so", "vekPackages.xml"));
    EXPECT_THAT(compact(memberContent(saved, "vekPackages.xml")),
                StartsWith("<VekAppPackage><BeVersion>6.1</BeVersion><Platform>linux_arm64</Platform>"
                           "<VekApp name=\"app\">"));
    EXPECT_THAT(testing::livingObjects(), ElementsAre("XML document")) << "that of the package alone";
}

TEST(ModifyPackages, replacesTheManifestOfTheArchive) {
    Processing processing;
    processing.offerPackage();
    const std::string own = "<VekAppPackage><BeVersion>6.1</BeVersion><VekApp name='x'/></VekAppPackage>";
    processing.modify(processing.archive("sensor.pkg", own));
    const std::string saved = processing.scratch.path("P-sensor.pkg");
    EXPECT_THAT(memberNames(saved), ElementsAre("host", "script.xml", "data/12345-a.so", "vekPackages.xml"));
    EXPECT_THAT(compact(memberContent(saved, "vekPackages.xml")), testing::HasSubstr("<VekApp name='x'/>"));
}

TEST(ModifyPackages, savesNothingWithoutAChange) {
    Processing processing;
    processing.modify(processing.archive("sensor.pkg"));
    EXPECT_THAT(processing.output.lines(), ElementsAre("out: ", processing.processing("sensor.pkg"),
                                                       processing.unchanged("sensor.pkg")));
    EXPECT_THAT(processing.scratch.entries(), ElementsAre("sensor.pkg"));
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(ModifyPackages, removesBeforeItAdds) {
    Processing processing;
    processing.offerPackage();
    processing.config.vekPkgsToRemove = {"app"};
    const std::string own = "<VekAppPackage><BeVersion>6.1</BeVersion><VekApp name='app'/></VekAppPackage>";
    processing.modify(processing.archive("sensor.pkg", own));
    EXPECT_THAT(processing.output.lines(),
                ElementsAre("out: ", processing.processing("sensor.pkg"),
                            "out: ", "out: \tTaVekUtil: Remove Package: app", processing.loaded(),
                            processing.saving("P-sensor.pkg")));
}

TEST(ModifyPackages, savesWhatRemovingAloneHasChanged) {
    Processing processing;
    processing.config.vekPkgsToRemove = {"app"};
    processing.modify(processing.archive(
        "sensor.pkg", "<VekAppPackage><BeVersion>6.1</BeVersion><VekApp name='app'/></VekAppPackage>"));
    EXPECT_EQ(compact(memberContent(processing.scratch.path("P-sensor.pkg"), "vekPackages.xml")),
              "<VekAppPackage><BeVersion>6.1</BeVersion></VekAppPackage>");
}

TEST(ModifyPackages, writesTheManifestOfAnInstallationAlone) {
    for (const char* end : {"", "\\", "/"}) {
        Processing processing;
        processing.offerPackage();
        const std::string path = processing.installation() + end;
        processing.modify(path);
        EXPECT_THAT(processing.output.lines(),
                    ElementsAre("out: ", "out: TaVekUtil: Processing Archive: " + path,
                                "out: TaVekUtil:    - Loaded file for Windows: w.dll"));
        EXPECT_THAT(compact(processing.scratch.read("host/vekPackages.xml")),
                    StartsWith("<VekAppPackage><BeVersion>6.1.0.0</BeVersion><Platform>win</Platform>"));
        EXPECT_THAT(processing.scratch.entries(), ElementsAre("host", "pkg"));
    }
}

// ---- Failures -------------------------------------------------------------------------------------------

void expectFailed(Processing& processing, const std::string& path, int line, zStatus status) {
    EXPECT_THAT(raised([&] { processing.modify(path); }), IsLocatedAt(operation, status, line));
    EXPECT_EQ(processing.output.lines().back(), injectionFailure);
    EXPECT_FALSE(processing.scratch.exists("P-sensor.pkg"));
}

TEST(ModifyPackages, refusesPathsThatDoNotFit) {
    const struct {
        std::string path;
        int line;
    } paths[] = {{std::string(512, 'd') + "/a.pkg", 959}, {std::string(512, 'a'), 960}};
    for (const auto& [path, line] : paths) {
        Processing processing;
        expectFailed(processing, path, line, zStatus_DoesNotFit);
        EXPECT_THAT(processing.output.lines(),
                    ElementsAre("out: ", "out: TaVekUtil: Processing Archive: " + path, injectionFailure));
    }
}

TEST(SplitPath, takesPartsOfUpTo511Characters) {
    const std::string directory(511, 'd');
    const std::string fileName(511, 'f');
    const ArchivePlace place = TaVekUtil_SplitPath((directory + '/' + fileName).c_str());
    EXPECT_EQ(place.directory.c_str(), directory);
    EXPECT_EQ(place.fileName.c_str(), fileName);
}

TEST(OutputPath, takesNamesAndPathsOfUpTo511Characters) {
    Processing processing;
    const auto outputPath = [&](std::size_t directory, std::size_t fileName) {
        ArchivePlace place;
        std::fill_n(place.directory.data(), directory, 'd');
        std::fill_n(place.fileName.data(), fileName, 'f');
        return std::string(TaVekUtil_OutputPath(place, processing.config).c_str());
    };
    EXPECT_EQ(outputPath(0, 509), "P-" + std::string(509, 'f'));
    EXPECT_THAT(raised([&] { outputPath(0, 510); }), IsLocatedAt(operation, zStatus_DoesNotFit, 981));
    EXPECT_EQ(outputPath(255, 253), std::string(255, 'd') + os::pathSeparator + "P-" + std::string(253, 'f'));
    EXPECT_THAT(raised([&] { outputPath(255, 254); }), IsLocatedAt(operation, zStatus_DoesNotFit, 982));
}

TEST(ModifyPackages, saysAtWhichStepSavingFailed) {
    const struct {
        const char* step;
        std::size_t call;
        int line;
    } steps[] = {
        {"zXml_SaveBytes", 1, 976},   {"zArchive_DeleteFile", 2, 977},
        {"zArchive_AddData", 2, 978}, {"zStrPrintf", 2, 981},  // the first makes the member's name
        {"zArchive_Save", 1, 983},
    };
    for (const auto& [step, call, line] : steps) {
        Processing processing;
        processing.offerPackage();
        const std::string path = processing.archive("sensor.pkg");
        const Fault fault(step, zStatus_IoError, call);
        expectFailed(processing, path, line, zStatus_IoError);
    }
}

TEST(ModifyPackages, givesUpOnAnOutputPathThatDoesNotFit) {
    Processing processing;
    processing.offerPackage();
    std::string directory = "d";
    while (processing.scratch.path(directory + "/s.pkg").size() < 256) directory += "/d";
    processing.scratch.write(directory + "/x", "");
    const std::string path = processing.archive(directory + "/s.pkg");
    processing.setPrefix(std::string(255, 'p'));
    expectFailed(processing, path, 982, zStatus_DoesNotFit);
}

TEST(ModifyPackages, saysThatAnInstallationsManifestCannotBeSaved) {
    Processing processing;
    processing.offerPackage();
    const std::string path = processing.installation();
    const Fault fault("zXml_Save", zStatus_IoError);
    expectFailed(processing, path, 989, zStatus_IoError);
}

TEST(ModifyPackages, keepsNothingOfAFailedArchive) {
    Processing processing;
    const std::string path = processing.archive("sensor.pkg");
    processing.config.vekPkgsToRemove = {"none"};
    EXPECT_THAT(raised([&] { processing.modify(path); }),
                testing::IsFinding(zStatus_Unestablished, "Package none not found in archive"));
    EXPECT_THAT(processing.scratch.entries(), ElementsAre("sensor.pkg"));
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

// ---- All archives ---------------------------------------------------------------------------------------

TEST(ProcessStockPackages, processesEachInOrder) {
    Processing processing;
    processing.addArchive("b.pkg");
    processing.addArchive("a.pkg");
    TaVekUtil_ProcessStockPackages(processing.config);
    EXPECT_THAT(processing.output.lines(),
                ElementsAre("out: ", processing.processing("b.pkg"), processing.unchanged("b.pkg"),
                            "out: ", processing.processing("a.pkg"), processing.unchanged("a.pkg")));
}

TEST(ProcessStockPackages, doesNothingWithoutArchives) {
    Processing processing;
    TaVekUtil_ProcessStockPackages(processing.config);
    EXPECT_THAT(processing.output.lines(), IsEmpty());
}

TEST(ProcessStockPackages, stopsAtTheFirstFailure) {
    Processing processing;
    processing.offerPackage();
    processing.addArchive("first.pkg");
    processing.config.stockPackages.push_back(processing.scratch.write("second.pkg", "no archive"));
    processing.addArchive("third.pkg");
    EXPECT_STREQ(raised([&] { TaVekUtil_ProcessStockPackages(processing.config); }).what(),
                 ("Invalid Archive Path: " + processing.scratch.path("second.pkg")).c_str());
    EXPECT_THAT(processing.output.lines(),
                ElementsAre("out: ", processing.processing("first.pkg"), processing.loaded(),
                            processing.saving("P-first.pkg"), "out: ", processing.processing("second.pkg"),
                            injectionFailure, processFailure));
    EXPECT_THAT(processing.scratch.entries(),
                ElementsAre("P-first.pkg", "first.pkg", "pkg", "second.pkg", "third.pkg"));
}

}  // namespace
