#include "TaVekUtil/batch/stock_packages.h"

#include <gmock/gmock.h>

#include "platform/os/os.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/living_objects.h"
#include "tests/testing/platform_faults.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::ApplicationDirectory;
using testing::CapturedOutput;
using testing::ElementsAre;
using testing::Fault;
using testing::IsEmpty;
using testing::IsLocated;
using testing::raised;
using testing::ScratchDirectory;

constexpr const char* failure = "err: TaVekUtil: Failed finding stock packages.";

/// Host software with the program in its "bin/win64".
struct Host {
    ScratchDirectory scratch;
    ApplicationDirectory program{scratch.path("host/bin/win64")};
    std::vector<std::string> packages{"untouched"};
    CapturedOutput output;

    void find(const std::vector<std::string>& files) {
        for (const std::string& name : files) scratch.write("host/pkg/" + name, "");
        TaVekUtil_FindStockPackages(packages);
    }
    std::string path(const std::string& name) const {
        return scratch.path("host") + os::pathSeparator + "pkg" + os::pathSeparator + name;
    }
    void expectFailed() {
        EXPECT_THAT(packages, ElementsAre("untouched"));
        EXPECT_THAT(output.lines(), ElementsAre(failure));
        EXPECT_THAT(testing::livingObjects(), IsEmpty());
    }
};

TEST(FindStockPackages, goesByPrefixAndExtension) {
    Host host;
    host.find({"14-2.dat", "0-base.dat", "140.dat", "14.dat", "0-.dat",  // these
               "1-x.dat", "01.dat", "14-2.bin", "14-2.dat.bak", "15.dat", "04.dat", "14dat", "x14.dat", "14",
               "0-", ".dat", " 14.dat"});
    EXPECT_THAT(host.packages, ElementsAre(host.path("0-.dat"), host.path("0-base.dat"),
                                           host.path("14-2.dat"), host.path("14.dat"), host.path("140.dat")));
    EXPECT_THAT(host.output.lines(), IsEmpty());
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(FindStockPackages, comparesTheExtensionWithItsLetterCase) {
    Host host;
    host.find({"14-2.DAT"});
    EXPECT_THAT(host.packages, IsEmpty());
}

TEST(FindStockPackages, looksAtFilesAlone) {
    Host host;
    host.scratch.write("host/pkg/14-sub.dat/14-1.dat", "");
    host.find({"14-2.dat"});
    EXPECT_THAT(host.packages, ElementsAre(host.path("14-2.dat")));
}

TEST(FindStockPackages, replacesTheListEvenByNothing) {
    Host host;
    host.find({"15.dat"});
    EXPECT_THAT(host.packages, IsEmpty());
    EXPECT_THAT(host.output.lines(), IsEmpty());
}

TEST(FindStockPackages, reportsAMissingDirectory) {
    Host host;
    host.find({});
    host.expectFailed();
}

TEST(FindStockPackages, failsWithAnExtensionOf32Characters) {
    Host fits;
    fits.find({"14-2.dat", "x." + std::string(31, 'e')});
    EXPECT_THAT(fits.packages, ElementsAre(fits.path("14-2.dat")));
    Host longer;
    longer.find({"14-2.dat", "x." + std::string(32, 'e')});
    longer.expectFailed();
}

TEST(FindStockPackages, failsWithAPathOf512Characters) {
    // Directories of one letter, so that no single name is too long for the file system.
    const auto deep = [](const ScratchDirectory& scratch, std::size_t length) {
        std::string host = scratch.path("host");
        while (host.size() + std::string("/pkg/14-12.dat").size() + 2 <= length) host += "/d";
        return host;
    };
    const ScratchDirectory scratch;
    const CapturedOutput output;
    const std::string host = deep(scratch, 511);
    const std::size_t missing = 511 - (host + "/pkg/14-.dat").size();
    for (const std::size_t extra : {std::size_t{0}, std::size_t{1}}) {
        const std::string name = "14-" + std::string(missing + extra, 'x') + ".dat";
        scratch.write(host.substr(scratch.path().size() + 1) + "/pkg/" + name, "");
        const ApplicationDirectory program(host + "/bin/win64");
        std::vector<std::string> packages;
        TaVekUtil_FindStockPackages(packages);
        EXPECT_EQ(packages.size(), extra == 0 ? 1 : 0);
    }
    EXPECT_THAT(output.lines(), ElementsAre(failure));
}

TEST(FindStockPackages, swallowsWhateverFails) {
    for (const char* step : {"zDirectory_Application", "zArrayList_Construct"}) {
        Host host;
        const Fault fault(step, zStatus_NoMemory);
        host.find({"14-2.dat"});
        host.expectFailed();
    }
}

// ---- One file by its name -------------------------------------------------------------------------------

TEST(FindFilepath, joinsTheDirectoryAndTheName) {
    const ScratchDirectory scratch;
    scratch.write("a/vek_manifest.xml", "");
    scratch.write("a/another.xml", "");
    EXPECT_EQ(TaVekUtil_FindFilepath(scratch.path("a"), "vek_manifest.xml"),
              scratch.path("a") + os::pathSeparator + "vek_manifest.xml");
}

TEST(FindFilepath, isEmptyWhenThereIsNone) {
    const ScratchDirectory scratch;
    scratch.write("a/Vek_Manifest.xml", "");
    scratch.write("a/vek_manifest.xml.bak", "");
    scratch.write("a/sub/vek_manifest.xml", "");
    scratch.write("b/vek_manifest.xml/inside", "");
    EXPECT_EQ(TaVekUtil_FindFilepath(scratch.path("a"), "vek_manifest.xml"), "") << "only in a subdirectory";
    EXPECT_EQ(TaVekUtil_FindFilepath(scratch.path("b"), "vek_manifest.xml"), "") << "a directory";
    EXPECT_THAT(testing::livingObjects(), IsEmpty());
}

TEST(FindFilepath, raisesWhenThePathHas512Characters) {
    const ScratchDirectory scratch;
    std::string directory = scratch.path();
    while (directory.size() < 505) directory += "/.";
    const std::string fits(510 - directory.size(), 'f');
    scratch.write(fits, "");
    scratch.write(fits + 'f', "");
    EXPECT_EQ(TaVekUtil_FindFilepath(directory, fits), directory + os::pathSeparator + fits);
    EXPECT_THAT(raised([&] { TaVekUtil_FindFilepath(directory, fits + 'f'); }),
                IsLocated("TaVekUtil_FindFilepath", zStatus_DoesNotFit));
}

TEST(FindFilepath, raisesWhenTheDirectoryCannotBeListed) {
    const ScratchDirectory scratch;
    EXPECT_THAT(raised([&] { TaVekUtil_FindFilepath(scratch.path("missing"), "x"); }),
                IsLocated("TaVekUtil_FindFilepath", zStatus_NotFound));
    const Fault fault("zArrayList_Construct", zStatus_NoMemory);
    EXPECT_THAT(raised([&] { TaVekUtil_FindFilepath(scratch.path(), "x"); }),
                IsLocated("TaVekUtil_FindFilepath", zStatus_NoMemory));
}

}  // namespace
