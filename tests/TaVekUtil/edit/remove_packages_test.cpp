#include "TaVekUtil/edit/remove_packages.h"

#include <gmock/gmock.h>

#include "platform/base/directory.h"
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
using testing::IsEmpty;
using testing::IsFinding;
using testing::IsLocated;
using testing::raised;

constexpr const char* operation = "TaVekUtils_RemovePackages";

std::string vekApp(const std::string& name, const std::string& destination) {
    return "<VekApp name=\"" + name + "\"><File type=\"VekApp\"><Destination>" + destination +
           "</Destination></File></VekApp>";
}

/// A sensor archive with the entries /a, /b and /c, and a manifest of the packages that put them there.
struct Removal {
    ArchiveExtended archive;
    CapturedOutput output;

    explicit Removal(const std::string& entries) {
        archive.platform = "linux_arm7";
        archive.archive = testing::container({{"script.xml",
                                               "<S><File name='/a' source='data/a'/>"
                                               "<File name='/b' source='data/b'/>"
                                               "<File name='/c' source='data/c'/></S>"},
                                              {"data/a", ""},
                                              {"data/b", ""},
                                              {"data/c", ""}});
        archive.manifest = document("<VekAppPackage>" + entries + "</VekAppPackage>");
    }
    int remove(const std::vector<std::string>& names) { return TaVekUtils_RemovePackages(archive, names); }
    std::string manifest() const { return compact(archive.manifest.get()); }
    std::vector<std::string> members() const { return testing::memberNames(archive.archive.get()); }
};

TEST(RemovePackages, doesNothingForAnEmptyList) {
    Removal removal(vekApp("a", "/a"));
    EXPECT_EQ(removal.remove({}), 0);
    EXPECT_THAT(removal.output.lines(), IsEmpty());
    EXPECT_THAT(removal.members(), ElementsAre("script.xml", "data/a", "data/b", "data/c"));
}

TEST(RemovePackages, takesFilesAndEntriesOfEveryName) {
    Removal removal(vekApp("a", "/a") + vekApp("b", "/b") + vekApp("c", "/c"));
    EXPECT_EQ(removal.remove({"c", "a"}), 1);
    EXPECT_EQ(removal.manifest(), "<VekAppPackage>" + vekApp("b", "/b") + "</VekAppPackage>");
    EXPECT_THAT(removal.members(), ElementsAre("data/b", "script.xml"));
    EXPECT_THAT(removal.output.lines(), ElementsAre("out: ", "out: \tTaVekUtil: Remove Package: c",
                                                    "out: ", "out: \tTaVekUtil: Remove Package: a"));
}

TEST(RemovePackages, comparesWholeNamesExactly) {
    Removal removal(vekApp("ab", "/a") + vekApp("AB", "/b") + vekApp("abc", "/c") + vekApp("", "/c"));
    EXPECT_EQ(removal.remove({"ab"}), 1);
    EXPECT_EQ(removal.manifest(), "<VekAppPackage>" + vekApp("AB", "/b") + vekApp("abc", "/c") +
                                      vekApp("", "/c") + "</VekAppPackage>");
}

TEST(RemovePackages, handlesEveryEntryOfAName) {
    Removal removal(vekApp("a", "/a") + vekApp("x", "/c") + vekApp("a", "/b"));
    EXPECT_EQ(removal.remove({"a"}), 1);
    EXPECT_EQ(removal.manifest(), "<VekAppPackage>" + vekApp("x", "/c") + "</VekAppPackage>");
    EXPECT_THAT(removal.members(), ElementsAre("data/c", "script.xml"));
    EXPECT_THAT(removal.output.lines(), testing::SizeIs(4));
}

TEST(RemovePackages, looksAtVekAppElementsAlone) {
    const std::string others = "<vekapp name=\"a\"/><Other name=\"a\"/><BeVersion>1</BeVersion>";
    Removal removal(others + vekApp("a", "/a"));
    EXPECT_EQ(removal.remove({"a"}), 1);
    EXPECT_EQ(removal.manifest(), "<VekAppPackage>" + others + "</VekAppPackage>");
}

TEST(RemovePackages, looksIntoARootOfAnyName) {
    Removal removal("");
    removal.archive.manifest = document("<Other>" + vekApp("a", "/a") + "</Other>");
    EXPECT_EQ(removal.remove({"a"}), 1);
    EXPECT_EQ(removal.manifest(), "<Other/>");
}

TEST(RemovePackages, handlesANameListedTwiceTwiceAndDeletesItsEntryOnce) {
    Removal removal(vekApp("a", "/a") + vekApp("b", "/b"));
    EXPECT_EQ(removal.remove({"a", "a"}), 1);
    EXPECT_EQ(removal.manifest(), "<VekAppPackage>" + vekApp("b", "/b") + "</VekAppPackage>");
    EXPECT_THAT(removal.members(), ElementsAre("data/b", "data/c", "script.xml"));
    EXPECT_THAT(removal.output.lines(), ElementsAre("out: ", "out: \tTaVekUtil: Remove Package: a",
                                                    "out: ", "out: \tTaVekUtil: Remove Package: a"));
}

TEST(RemovePackages, removesFilesASecondTimeForANameListedTwice) {
    // Two script entries of one name: the second pass finds the second.
    Removal removal(vekApp("a", "/a"));
    removal.archive.archive = testing::container({{"script.xml",
                                                   "<S><File name='/a' source='data/1'/>"
                                                   "<File name='/a' source='data/2'/></S>"},
                                                  {"data/1", ""},
                                                  {"data/2", ""}});
    EXPECT_EQ(removal.remove({"a", "a"}), 1);
    EXPECT_THAT(removal.members(), ElementsAre("script.xml"));
}

TEST(RemovePackages, deletesNoEntryWhenANameIsNotFound) {
    const std::string entries = vekApp("a", "/a") + vekApp("b", "/b");
    Removal removal(entries);
    EXPECT_THAT(raised([&] {
                    removal.remove({"a", "none", "b"});
                }),
                IsFinding(zStatus_Unestablished, "Package none not found in archive"));
    EXPECT_EQ(removal.manifest(), "<VekAppPackage>" + entries + "</VekAppPackage>");
    EXPECT_THAT(removal.members(), ElementsAre("data/b", "data/c", "script.xml")) << "but files are gone";
    EXPECT_THAT(removal.output.lines(), ElementsAre("out: ", "out: \tTaVekUtil: Remove Package: a"));
}

TEST(RemovePackages, formsAMessageOfUpTo127Characters) {
    Removal removal("");
    const std::string longest(127 - std::string("Package  not found in archive").size(), 'n');
    EXPECT_THAT(raised([&] { removal.remove({longest}); }),
                IsFinding(zStatus_Unestablished, "Package " + longest + " not found in archive"));
    EXPECT_THAT(raised([&] { removal.remove({longest + "n"}); }), IsLocated(operation, zStatus_DoesNotFit));
}

TEST(RemovePackages, needsReadableNamesOfUpTo127Characters) {
    Removal missing("<VekApp/>" + vekApp("a", "/a"));
    EXPECT_THAT(raised([&] { missing.remove({"a"}); }), IsLocated(operation, zStatus_NotFound));

    const std::string longest(127, 'n');
    Removal fits(vekApp(longest, "/a"));
    EXPECT_EQ(fits.remove({longest}), 1);
    Removal longer(vekApp(longest + "n", "/a"));
    EXPECT_THAT(raised([&] { longer.remove({"a"}); }), IsLocated(operation, zStatus_DoesNotFit));
}

TEST(RemovePackages, needsTheNamesBehindTheMatchAsWell) {
    const std::string entries = vekApp("a", "/a") + "<VekApp/>";
    Removal removal(entries);
    EXPECT_THAT(raised([&] { removal.remove({"a"}); }), IsLocated(operation, zStatus_NotFound));
    EXPECT_THAT(removal.members(), ElementsAre("data/b", "data/c", "script.xml")) << "its file is gone";
    EXPECT_EQ(removal.manifest(), "<VekAppPackage>" + entries + "</VekAppPackage>");
}

TEST(RemovePackages, lendsTheDefaultDestinationTheNameOfTheEntry) {
    Removal removal("<VekApp name='a'><File type='VekApp'/></VekApp>");
    removal.archive.archive =
        testing::container({{"script.xml", "<S><File name='/user/a' source='d'/></S>"}});
    EXPECT_EQ(removal.remove({"a"}), 1);
    EXPECT_EQ(compact(testing::memberContent(removal.archive.archive.get(), "script.xml")), "<S/>");
}

TEST(RemovePackages, passesOnAFailedFileRemoval) {
    Removal removal(vekApp("a", "/a"));
    removal.archive.archive = testing::container({});
    EXPECT_THAT(raised([&] { removal.remove({"a"}); }),
                IsLocated("TaVekUtils_ScriptXmlRemoveAndGetSource", zStatus_NotFound));
    EXPECT_THAT(removal.output.lines(),
                ElementsAre("out: ", "out: \tTaVekUtil: Remove Package: a",
                            "err: TaVekUtil: Failed Removing file from upgrade package: /a."));
}

TEST(RemovePackages, reportsAnEntryThatCannotBeDeleted) {
    Removal removal("<VekApp name='a'/>");
    const testing::Fault fault("zXml_DeleteItem", zStatus_BadArgument);
    EXPECT_THAT(raised([&] { removal.remove({"a"}); }), IsLocated(operation, zStatus_BadArgument));
}

TEST(RemovePackages, deletesTheFilesOfAnInstallation) {
    const testing::ScratchDirectory scratch;
    scratch.write("a.dll", "");
    scratch.write("b.dll", "");
    Removal removal(vekApp("a", "a.dll") + vekApp("b", "b.dll"));
    removal.archive.platform = "win";
    removal.archive.path = scratch.path();
    EXPECT_EQ(removal.remove({"a", "a"}), 1);
    EXPECT_THAT(scratch.entries(), ElementsAre("b.dll"));
    EXPECT_THAT(removal.output.lines(), ElementsAre("out: ", "out: \tTaVekUtil: Remove Package: a",
                                                    "out: ", "out: \tTaVekUtil: Remove Package: a",
                                                    "out: Skipping File: " + scratch.path() +
                                                        os::pathSeparator + "a.dll - Not Found"));
}

}  // namespace
