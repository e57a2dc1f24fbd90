#include "TaVekUtil/archive/archive_probes.h"

#include <gtest/gtest.h>

#include "TaVekUtil/cli/controller_names.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/living_objects.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::container;
using testing::IsFinding;
using testing::IsLocated;
using testing::raised;
using testing::ScratchDirectory;

std::string platformOf(const std::string& script) {
    return TaVekUtils_GetArchivePlatform(container({{"script.xml", script}}).get());
}

std::string versionOf(const std::string& script) {
    return TaVekUtils_GetArchiveVersion(container({{"script.xml", script}}).get());
}

std::string scriptOfVersion(const std::string& version) {
    return "<Script><File name=\"a\"/><Version value=\"" + version + "\"/></Script>";
}

TEST(ArchivePlatform, isThatOfTheModelTheScriptNames) {
    for (const std::string& name : Arm7ControllerNames) EXPECT_EQ(platformOf(name), "linux_arm7") << name;
    for (const std::string& name : OmbixControllerNames) EXPECT_EQ(platformOf(name), "ombix") << name;
    for (const std::string& name : Arm64ControllerNames) EXPECT_EQ(platformOf(name), "linux_arm64") << name;
}

TEST(ArchivePlatform, isThatOfTheEarlierListWhenTheScriptNamesModelsOfTwo) {
    EXPECT_EQ(platformOf("<a>Orin NX</a><b>R4</b>"), "linux_arm7");
    EXPECT_EQ(platformOf("<b>R6</b><a>Orin NX</a>"), "ombix");
    EXPECT_EQ(platformOf("R8 TX2 R2"), "linux_arm7");
}

TEST(ArchivePlatform, isFoundAnywhereInTheText) {
    EXPECT_EQ(platformOf("<Script><!-- not for R6 --></Script>"), "linux_arm64");
    EXPECT_EQ(platformOf("<Script note='xR2y'/>"), "linux_arm7");
    EXPECT_EQ(platformOf("no XML at all, R8"), "linux_arm64");
}

TEST(ArchivePlatform, isSearchedCaseSensitively) {
    EXPECT_THAT(raised([] { platformOf("<Script>r4 tx2 ORIN NX</Script>"); }),
                IsFinding(zStatus_NotFound, "Could not determine platform"));
    EXPECT_THAT(raised([] { platformOf(""); }), IsFinding(zStatus_NotFound, "Could not determine platform"));
}

TEST(ArchivePlatform, isSearchedUpToTheFirstZeroByte) {
    EXPECT_EQ(platformOf(std::string("R6\0R4", 5)), "linux_arm64");
    EXPECT_THAT(raised([] { platformOf(std::string("<a/>\0R4", 7)); }),
                IsFinding(zStatus_NotFound, "Could not determine platform"));
}

TEST(ArchivePlatform, needsTheScript) {
    EXPECT_THAT(raised([] {
                    TaVekUtils_GetArchivePlatform(container({{"Script.xml", "R4"}}).get());
                }),
                IsLocated("TaVekUtils_GetArchivePlatform", zStatus_NotFound));
}

TEST(ArchiveVersion, isTheValueOfTheVersionElementAsItStands) {
    EXPECT_EQ(versionOf(scriptOfVersion("6.1.2.57")), "6.1.2.57");
    EXPECT_EQ(versionOf(scriptOfVersion(" beta 07 ")), " beta 07 ");
    EXPECT_EQ(versionOf(scriptOfVersion("")), "");
    EXPECT_EQ(versionOf("<S><Version value='1'/><Version value='2'/></S>"), "1");
}

TEST(ArchiveVersion, isAChildOfTheRoot) {
    for (const char* script : {"<S/>", "<S><A><Version value='1'/></A></S>", "<S><version value='1'/></S>",
                               "<Version value='1'/>"}) {
        EXPECT_THAT(raised([&] { versionOf(script); }),
                    IsFinding(zStatus_Unestablished, "Could not retrieve Qor BE version"))
            << script;
    }
}

TEST(ArchiveVersion, hasUpTo127Characters) {
    const std::string longest(127, '1');
    EXPECT_EQ(versionOf(scriptOfVersion(longest)), longest);
    EXPECT_THAT(raised([&] { versionOf(scriptOfVersion(longest + '1')); }),
                IsLocated("TaVekUtils_GetArchiveVersion", zStatus_DoesNotFit));
}

TEST(ArchiveVersion, needsTheValue) {
    EXPECT_THAT(raised([] { versionOf("<S><Version>1</Version></S>"); }),
                IsLocated("TaVekUtils_GetArchiveVersion", zStatus_NotFound));
}

TEST(ArchiveVersion, needsAScriptThatIsXmlInItsWholeSize) {
    EXPECT_THAT(raised([] { versionOf("<S><Version value='1'/>"); }),
                IsLocated("TaVekUtils_GetArchiveVersion", zStatus_Malformed));
    EXPECT_THAT(raised([] { versionOf(std::string("<S><Version value='1'/></S>\0", 28)); }),
                IsLocated("TaVekUtils_GetArchiveVersion", zStatus_Malformed));
    EXPECT_THAT(raised([] { TaVekUtils_GetArchiveVersion(container({}).get()); }),
                IsLocated("TaVekUtils_GetArchiveVersion", zStatus_NotFound));
}

TEST(ArchiveVersion, tellsWhereAMalformedScriptIsWrong) {
    const auto exception = raised([] { versionOf("<S>\n<Version value='1'>\n</S>"); });
    EXPECT_THAT(exception.what(), testing::HasSubstr("script.xml:3:"));
}

TEST(ArchiveVersion, keepsNoDocument) {
    EXPECT_EQ(versionOf(scriptOfVersion("1")), "1");
    EXPECT_THAT(testing::livingObjects(), testing::IsEmpty());
    for (const char* script : {"<S/>", "<S><Version/></S>", "<S>"}) {
        raised([&] { versionOf(script); });
        EXPECT_THAT(testing::livingObjects(), testing::IsEmpty()) << script;
    }
}

TEST(InstallationDirectory, isADirectoryWithTheHostExecutable) {
    const ScratchDirectory scratch;
    scratch.write("host/bin/win64/TaQor.exe", "");
    EXPECT_TRUE(isInstallationDirectory(scratch.path("host")));
    EXPECT_TRUE(isInstallationDirectory(scratch.path("host") + "/"));
    EXPECT_TRUE(isInstallationDirectory(scratch.path("host") + "\\"));
    EXPECT_FALSE(isInstallationDirectory(scratch.path("host/bin")));
}

TEST(InstallationDirectory, mayHoldTheExecutableAsWhateverItLikes) {
    const ScratchDirectory scratch;
    scratch.write("host/bin/win64/TaQor.exe/inside", "");
    EXPECT_TRUE(isInstallationDirectory(scratch.path("host")));
}

TEST(InstallationDirectory, isNoFile) {
    const ScratchDirectory scratch;
    EXPECT_FALSE(isInstallationDirectory(scratch.write("file", "")));
}

TEST(InstallationDirectory, mustExist) {
    const ScratchDirectory scratch;
    EXPECT_THAT(raised([&] { isInstallationDirectory(scratch.path("nothing")); }),
                IsFinding(zStatus_NotFound, "Path not found: " + scratch.path("nothing")));
}

}  // namespace
