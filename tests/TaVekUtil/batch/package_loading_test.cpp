#include "TaVekUtil/batch/package_loading.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "platform/os/os.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/living_objects.h"
#include "tests/testing/package_fixture.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/xml_fixture.h"

namespace {

namespace fs = std::filesystem;
using testing::CapturedOutput;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsLocated;
using testing::raised;
using testing::ScratchDirectory;

constexpr const char* manifestFailure =
    "err: TaVekUtil: Failed to load vek manifest file from vek package(s).";
constexpr const char* filesFailure = "err: TaVekUtil: Failed to load vekapp platform files.";
constexpr const char* manifestOperation = "TaVekUtil_Load_VekPkg_Manifest";
constexpr const char* filesOperation = "TaVekUtil_Load_VekPkg_Files";

/// Packages to load for a platform.
struct Packages {
    ScratchDirectory scratch;
    BuildConfig config;
    CapturedOutput output;

    explicit Packages(const char* platform = "all") {
        EXPECT_EQ(zStrCopy(config.platform.data(), config.platform.capacity(), platform), zStatus_Success);
    }
    std::string add(const testing::MadeUpPackage& package) {
        const std::string name = "pkg" + std::to_string(config.vekPkgsToLoad.size());
        return config.vekPkgsToLoad.emplace_back(testing::writePackage(scratch, name, package));
    }
    void addManifest(const std::string& text) {
        scratch.write("own/vek_manifest.xml", text);
        config.vekPkgsToLoad.push_back(scratch.path("own"));
    }
    const std::vector<AddonPackage>& load() {
        TaVekUtil_Load_VekPkg_Manifest(config);
        return config.addonPackages;
    }
};

std::string manifestOf(const std::string& platforms, const std::string& beVersion = "*",
                       const std::string& name = "app") {
    return "<VekAppPackage><BeVersion>" + beVersion + "</BeVersion><VekApp name='" + name + "'>" + platforms +
           "</VekApp></VekAppPackage>";
}

std::string fileElement(const std::string& type, const std::string& source, const std::string& destination) {
    return "<File type='" + type + "'><Source>" + source + "</Source><Destination>" + destination +
           "</Destination></File>";
}

std::vector<std::string> sourcesOf(const AddonPackage& package) {
    std::vector<std::string> sources;
    for (const PackageFile& file : package.files) sources.emplace_back(file.source.c_str());
    return sources;
}

// ---- Packages that are directories ----------------------------------------------------------------------

TEST(LoadPackage, readsAllThatTheManifestTells) {
    Packages packages;
    const std::string directory =
        packages.add({.name = "app",
                      .beVersion = "6.1",
                      .files = {{"linux_arm7", "lib/a.zext", "/a", "Resource"}, {"win", "b.dll", ""}}});
    ASSERT_EQ(packages.load().size(), 1);
    const AddonPackage& package = packages.config.addonPackages[0];
    EXPECT_STREQ(package.name.c_str(), "app");
    EXPECT_STREQ(package.beVersion.c_str(), "6.1");
    ASSERT_EQ(package.files.size(), 2);
    EXPECT_STREQ(package.files[0].platform.c_str(), "linux_arm7");
    EXPECT_STREQ(package.files[0].type.c_str(), "Resource");
    EXPECT_STREQ(package.files[0].source.c_str(), "lib/a.zext");
    EXPECT_STREQ(package.files[0].destination.c_str(), "/a");
    EXPECT_EQ(package.files[0].path.c_str(), directory + os::pathSeparator + "lib/a.zext");
    EXPECT_STREQ(package.files[1].platform.c_str(), "win");
    EXPECT_STREQ(package.files[1].destination.c_str(), "") << "the default, for whoever installs it";
    EXPECT_THAT(testing::compact(package.manifest.get()), HasSubstr("<VekApp name=\"app\">"));
    EXPECT_THAT(packages.output.lines(), IsEmpty());
}

TEST(LoadPackage, loadsSeveralInOrder) {
    Packages packages;
    packages.add({.name = "one", .files = {{"win", "1", "/1"}}});
    packages.add({.name = "two", .files = {{"win", "2", "/2"}}});
    ASSERT_EQ(packages.load().size(), 2);
    EXPECT_STREQ(packages.load()[0].name.c_str(), "one");
    EXPECT_THAT(sourcesOf(packages.load()[1]), ElementsAre("2")) << "each starts afresh";
}

TEST(LoadPackage, keepsEachManifestAsLongAsItsPackage) {
    {
        Packages packages;
        packages.add({.name = "app", .files = {{"win", "1", "/1"}}});
        packages.add({.name = "none"});
        packages.load();
        const std::vector<AddonPackage> copies = packages.config.addonPackages;
        packages.config.addonPackages.clear();
        EXPECT_THAT(testing::compact(copies[0].manifest.get()), HasSubstr("app"));
        EXPECT_THAT(testing::livingObjects(), ElementsAre("XML document")) << "copies share it";
    }
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(LoadPackage, takesTheFilesOfThePlatform) {
    const testing::MadeUpPackage package{.name = "app",
                                         .files = {{"linux_arm7", "7", "/7"},
                                                   {"win", "w", "w"},
                                                   {"linux_arm7x", "7x", "/7x"},
                                                   {"Win", "W", "W"},
                                                   {"all", "a", "a"},
                                                   {"linux_arm7", "8", "/8"}}};
    Packages all;
    all.add(package);
    EXPECT_THAT(sourcesOf(all.load().at(0)), ElementsAre("7", "w", "7x", "W", "a", "8"));
    Packages windows("win");
    windows.add(package);
    EXPECT_THAT(sourcesOf(windows.load().at(0)), ElementsAre("w"));
    Packages arm7("linux_arm7");
    arm7.add(package);
    EXPECT_THAT(sourcesOf(arm7.load().at(0)), ElementsAre("7", "8"));
}

TEST(LoadPackage, dropsAPackageWithoutFilesForThePlatform) {
    Packages packages("ombix");
    packages.add({.name = "app", .files = {{"win", "w", "w"}}});
    EXPECT_THAT(packages.load(), IsEmpty());
    EXPECT_THAT(packages.output.lines(), IsEmpty());
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(LoadPackage, takesTheRootAndTheFilesWhateverTheirNames) {
    Packages packages;
    packages.addManifest("<Any><BeVersion>1</BeVersion><VekApp name='app'><P name='win'>" +
                         fileElement("t", "s", "d") + "</P></VekApp><VekApp name='other'/></Any>");
    EXPECT_STREQ(packages.load().at(0).name.c_str(), "app");
}

TEST(LoadPackage, takesTheFirstElementOfAName) {
    Packages packages;
    packages.addManifest(
        "<R><BeVersion>1</BeVersion><BeVersion>2</BeVersion><VekApp name='app'><P name='win'><File type='t'>"
        "<Source>s</Source><Source>x</Source><Destination>d</Destination><Destination>x</Destination>"
        "</File></P></VekApp><VekApp name='other'/></R>");
    const AddonPackage& package = packages.load().at(0);
    EXPECT_STREQ(package.beVersion.c_str(), "1");
    EXPECT_STREQ(package.files.at(0).source.c_str(), "s");
    EXPECT_STREQ(package.files.at(0).destination.c_str(), "d");
}

TEST(LoadPackage, doesNotCheckElementsOfOtherPlatforms) {
    Packages packages("win");
    packages.addManifest(
        manifestOf("<P name='ombix'><File/></P><P name='win'>" + fileElement("t", "s", "d") + "</P>"));
    EXPECT_THAT(sourcesOf(packages.load().at(0)), ElementsAre("s"));
}

TEST(LoadPackage, cutsPlatformNames) {
    Packages packages;
    packages.addManifest(
        manifestOf("<P name='" + std::string(511, 'p') + "'>" + fileElement("t", "s", "d") + "</P>"));
    EXPECT_EQ(packages.load().at(0).files.at(0).platform.c_str(), std::string(31, 'p'));
}

TEST(LoadPackage, takesTextsUpToTheirCapacities) {
    Packages packages;
    // Short enough beside the package directory that their path fits as well.
    packages.addManifest(manifestOf(
        "<P name='win'>" + fileElement(std::string(31, 't'), std::string(300, 's'), std::string(511, 'd')) +
            "</P>",
        std::string(31, 'v'), std::string(255, 'n')));
    const AddonPackage& package = packages.load().at(0);
    EXPECT_EQ(package.beVersion.c_str(), std::string(31, 'v'));
    EXPECT_EQ(package.name.c_str(), std::string(255, 'n'));
    EXPECT_EQ(package.files.at(0).type.c_str(), std::string(31, 't'));
    EXPECT_EQ(package.files.at(0).destination.c_str(), std::string(511, 'd'));
}

// ---- Packages that are tar files ------------------------------------------------------------------------

/// Packages beside a program whose tar.exe unpacks nothing, but notes what it was given.
struct TarFiles : Packages {
    testing::ApplicationDirectory program{scratch.path("bin")};

    TarFiles() {
        std::string tests;
        EXPECT_FALSE(os::applicationDirectory(tests));
        end(0);
        const std::string helper = tests + "/process_helper" + (os::pathSeparator == '\\' ? ".exe" : "");
        fs::copy_file(helper, scratch.path("bin/tar.exe"));
    }
    void end(int status) { scratch.write("bin/status.txt", std::to_string(status)); }
    std::string untar(const std::string& entry) {
        char directory[512] = "(untouched)";
        TaVekUtil_Untar_VekApp(entry, directory, sizeof directory);
        return directory;
    }
    bool tarRan() const { return scratch.exists("bin/words.txt"); }
};

TEST(UntarPackage, leavesOtherEntriesAlone) {
    TarFiles files;
    for (const char* entry : {"", "dir", "APP.TAR", "app.Tar", "tar", "app.ta"}) {
        EXPECT_EQ(files.untar(entry), "") << entry;
    }
    EXPECT_FALSE(files.tarRan());
}

TEST(UntarPackage, unpacksBesideTheArchive) {
    TarFiles files;
    for (const std::string stem : {"app", "app.tar", "x.tar.d"}) {
        const std::string archive = files.scratch.path(stem + (stem == "app.tar" ? ".gz" : ".tar"));
        files.scratch.write(stem + "/vek_manifest.xml", "");
        EXPECT_EQ(files.untar(archive), files.scratch.path(stem));
        const std::string words = files.scratch.read("bin/words.txt");
        EXPECT_THAT(words, HasSubstr("-C\n" + files.scratch.path(stem) + '\n'));
        EXPECT_THAT(words, HasSubstr("-xvf\n" + archive + '\n'));
    }
}

TEST(UntarPackage, makesTheDirectory) {
    TarFiles files;
    EXPECT_EQ(files.untar(files.scratch.path("deep/app.tar")), "") << "for there is no manifest in it";
    EXPECT_TRUE(fs::is_directory(files.scratch.path("deep/app")));
    EXPECT_TRUE(files.tarRan());
}

TEST(UntarPackage, findsNoManifestFurtherDown) {
    TarFiles files;
    files.scratch.write("app/deep/vek_manifest.xml", "");
    EXPECT_EQ(files.untar(files.scratch.path("app.tar")), "");
}

TEST(UntarPackage, reportsTheResultOfAFailedRun) {
    TarFiles files;
    files.end(3);
    const std::string archive = files.scratch.path("app.tar");
    const auto exception = raised([&] { files.untar(archive); });
    EXPECT_EQ(exception.status(), zStatus_Failure);
    EXPECT_STREQ(exception.what(), "failure (status 0)");
    EXPECT_EQ(exception.line(), 0) << "not located";
    EXPECT_THAT(files.output.lines(),
                ElementsAre("err: TaVekUtil: Failed to untar: " + archive, "err: TaVekUtil: Result: 3"));
}

TEST(UntarPackage, raisesWhateverElseFails) {
    TarFiles files;
    const char* operation = "TaVekUtil_Untar_VekApp";
    const std::string archive = files.scratch.path("app.tar");
    {
        const testing::Fault fault("zDirectory_Application", zStatus_IoError);
        EXPECT_THAT(raised([&] { files.untar(archive); }), IsLocated(operation, zStatus_IoError));
        EXPECT_FALSE(files.scratch.exists("app"));
    }
    EXPECT_THAT(raised([&] { files.untar(std::string(512, 'd') + ".tar"); }),
                IsLocated(operation, zStatus_DoesNotFit));
    EXPECT_FALSE(files.tarRan());

    files.scratch.write("app", "a file in the directory's place");
    EXPECT_EQ(raised([&] { files.untar(archive); }).operation(), operation);
    fs::remove(files.scratch.path("app"));

    files.scratch.write("app/vek_manifest.xml", "");
    char tooSmall[4];
    EXPECT_THAT(raised([&] { TaVekUtil_Untar_VekApp(archive, tooSmall, sizeof tooSmall); }),
                IsLocated(operation, zStatus_DoesNotFit));
}

TEST(LoadPackage, loadsATarFileFromWhereItWasUnpacked) {
    TarFiles files;
    testing::writePackage(files.scratch, "app", {.name = "app", .files = {{"win", "w.dll", "w"}}});
    files.config.vekPkgsToLoad = {files.scratch.path("app.tar")};
    EXPECT_EQ(files.load().at(0).files.at(0).path.c_str(),
              files.scratch.path("app") + os::pathSeparator + "w.dll");
}

TEST(LoadPackage, saysThatATarFileFailed) {
    TarFiles files;
    files.end(2);
    files.config.vekPkgsToLoad = {files.scratch.path("app.tar")};
    raised([&] { files.load(); });
    EXPECT_THAT(files.output.lines(),
                ElementsAre("err: TaVekUtil: Failed to untar: " + files.scratch.path("app.tar"),
                            "err: TaVekUtil: Result: 2", manifestFailure));
}

TEST(LoadPackage, needsAManifestInTheTarFile) {
    TarFiles files;
    files.config.vekPkgsToLoad = {files.scratch.write("app.tar", "")};
    EXPECT_THAT(raised([&] { files.load(); }), IsLocated(manifestOperation, zStatus_NotFound));
    EXPECT_THAT(files.output.lines(), ElementsAre(manifestFailure));
}

// ---- Failures -------------------------------------------------------------------------------------------

void expectRefused(const std::string& manifest, const char* operation, zStatus status) {
    Packages packages;
    packages.add({.name = "before", .files = {{"win", "w", "w"}}});
    packages.addManifest(manifest);
    EXPECT_THAT(raised([&] { packages.load(); }), IsLocated(operation, status)) << manifest;
    EXPECT_EQ(packages.config.addonPackages.size(), 1) << "what was loaded before stays";
    if (operation == std::string(filesOperation)) {
        EXPECT_THAT(packages.output.lines(), ElementsAre(filesFailure, manifestFailure)) << manifest;
    } else {
        EXPECT_THAT(packages.output.lines(), ElementsAre(manifestFailure)) << manifest;
    }
}

TEST(LoadPackage, needsAVersionAndAnApplicationWithAName) {
    const auto refused = [](const std::string& manifest, zStatus status) {
        expectRefused(manifest, manifestOperation, status);
    };
    refused("<R/>", zStatus_NotFound);
    refused("<R><VekApp name='x'/></R>", zStatus_NotFound);
    refused("<R><BeVersion>1</BeVersion></R>", zStatus_NotFound);
    refused("<R><BeVersion>1</BeVersion><VekApp/></R>", zStatus_NotFound);
    refused(manifestOf("", std::string(32, 'v')), zStatus_DoesNotFit);
    refused(manifestOf("", "1", std::string(256, 'n')), zStatus_DoesNotFit);
    refused("no document", zStatus_Malformed);
}

TEST(LoadPackage, needsWholeFileEntries) {
    const auto refused = [](const std::string& content, zStatus status) {
        expectRefused(manifestOf("<P name='win'>" + content + "</P>"), filesOperation, status);
    };
    refused("<File><Source>s</Source><Destination/></File>", zStatus_NotFound);
    refused("<File type='t'><Destination/></File>", zStatus_NotFound);
    refused("<File type='t'><Source>s</Source></File>", zStatus_NotFound);
    refused(fileElement(std::string(32, 't'), "s", "d"), zStatus_DoesNotFit);
    refused(fileElement("t", std::string(512, 's'), "d"), zStatus_DoesNotFit);
    refused(fileElement("t", std::string(511, 's'), "d"), zStatus_DoesNotFit);
    refused(fileElement("t", "s", std::string(512, 'd')), zStatus_DoesNotFit);
    expectRefused(manifestOf("<P>" + fileElement("t", "s", "d") + "</P>"), filesOperation, zStatus_NotFound);
    expectRefused(manifestOf("<P name='" + std::string(512, 'p') + "'/>"), filesOperation,
                  zStatus_DoesNotFit);
}

TEST(LoadPackage, keepsTheFilesBeforeAFailure) {
    // In "dir", the path of the first has 511 characters.
    const std::string fits(507, 's');
    const auto manifest = testing::document("<P name='win'>" + fileElement("t", fits, "d") +
                                            fileElement("t", fits + "s", "d") + "</P>");
    CapturedOutput output;
    AddonPackage package;
    EXPECT_THAT(raised([&] {
                    TaVekUtil_Load_VekPkg_Files("all", manifest.get(), zXml_Root(manifest.get()), "dir",
                                                package);
                }),
                IsLocated(filesOperation, zStatus_DoesNotFit));
    EXPECT_THAT(sourcesOf(package), ElementsAre(fits));
    EXPECT_THAT(output.lines(), ElementsAre(filesFailure));
}

TEST(LoadPackage, needsARootElement) {
    Packages packages;
    packages.add({.name = "app"});
    const testing::Fault fault("zXml_FindRoot", zStatus_NotFound);
    EXPECT_THAT(raised([&] { packages.load(); }), IsLocated(manifestOperation, zStatus_NotFound));
}

TEST(LoadPackage, needsThePackage) {
    std::string longest = "no";  // that leaves room for the manifest's name
    while (longest.size() < 494) longest = "./" + longest;
    for (const std::string& entry : {std::string(), std::string("no/such/package"), longest, longest + "t"}) {
        Packages packages;
        packages.config.vekPkgsToLoad = {entry};
        const auto exception = raised([&] { packages.load(); });
        EXPECT_THAT(exception, IsLocated(manifestOperation,
                                         entry.size() == 495 ? zStatus_DoesNotFit : zStatus_NotFound));
        EXPECT_THAT(packages.output.lines(), ElementsAre(manifestFailure));
    }
}

TEST(LoadPackage, neverTakesTheWorkingDirectoryForAnEmptyEntry) {
    Packages packages;
    const auto working = fs::current_path();
    testing::writePackage(packages.scratch, "here", {.name = "app", .files = {{"win", "w", "w"}}});
    fs::current_path(packages.scratch.path("here"));
    packages.config.vekPkgsToLoad = {""};
    const auto exception = raised([&] { packages.load(); });
    fs::current_path(working);
    EXPECT_THAT(exception.what(), HasSubstr("the package entry is empty"));
}

}  // namespace
