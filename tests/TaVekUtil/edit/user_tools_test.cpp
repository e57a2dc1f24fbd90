#include "TaVekUtil/edit/user_tools.h"

#include <gmock/gmock.h>

#include <new>

#include "platform/os/os.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/raised.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::CapturedOutput;
using testing::ElementsAre;
using testing::IsLocated;
using testing::raised;
using testing::ScratchDirectory;

/// An installation directory, a file to install, and what installing it says.
struct UserTools {
    ScratchDirectory scratch;
    std::string file = scratch.write("package/tool.dll", "new");
    CapturedOutput output;

    UserTools() { scratch.write("host/keep.txt", ""); }

    void inject(const std::string& destination) {
        TaVekUtil_InjectFile(file.c_str(), destination.c_str(), scratch.path("host").c_str());
    }
    /// The installation directory and `destination` as the system joins them.
    std::string joined(const std::string& destination) const {
        return scratch.path("host") + os::pathSeparator + destination;
    }
};

TEST(UserTools, copiesTheFileAndSaysWhereTo) {
    UserTools tools;
    tools.scratch.write("host/plugins/other", "");
    tools.inject("plugins/tool.dll");
    EXPECT_EQ(tools.scratch.read("host/plugins/tool.dll"), "new");
    EXPECT_THAT(tools.output.lines(),
                ElementsAre("out: TaVekUtil:    - Loaded file for Windows: plugins/tool.dll"));
}

TEST(UserTools, replacesAFileThatIsThere) {
    UserTools tools;
    tools.scratch.write("host/tool.dll", "old");
    tools.inject("tool.dll");
    EXPECT_EQ(tools.scratch.read("host/tool.dll"), "new");
}

TEST(UserTools, putsABareFileNameIntoTheInstallationDirectory) {
    UserTools tools;
    tools.inject("\\tool.dll");
    EXPECT_EQ(tools.scratch.read("host/tool.dll"), "new");
    EXPECT_THAT(tools.output.lines(),
                ElementsAre("out: TaVekUtil:    - Loaded file for Windows: \\tool.dll"));
}

TEST(UserTools, skipsAFileWhoseDirectoryIsMissing) {
    UserTools tools;
    tools.inject("plugins/tool.dll");
    EXPECT_FALSE(tools.scratch.exists("host/plugins"));
    EXPECT_THAT(tools.output.lines(), ElementsAre("out: Directory does not exists (\"" +
                                                  tools.joined("plugins/tool.dll") + "\"), skipping file."));
}

TEST(UserTools, skipsAMissingFileWithoutLookingForItWhenTheDirectoryIsMissingToo) {
    UserTools tools;
    tools.file = tools.scratch.path("package/none.dll");
    tools.inject("plugins/none.dll");
    EXPECT_EQ(tools.output.err(), "");
}

TEST(UserTools, reportsAFileThatDoesNotExist) {
    UserTools tools;
    tools.file = tools.scratch.path("package/none.dll");
    const auto exception = raised([&] { tools.inject("none.dll"); });
    EXPECT_THAT(exception, IsLocated("TaVekUtil_InjectFile", zStatus_NotFound));
    EXPECT_THAT(tools.output.lines(),
                ElementsAre(std::string("err: TaVekUtil: Failed injecting files into User Tools package: ") +
                            exception.what()));
    EXPECT_FALSE(tools.scratch.exists("host/none.dll"));
}

/// Files of an installation whose directories are as a test wants them, and to which nothing can be copied.
class ClosedFiles : public InstallationFiles {
  public:
    explicit ClosedFiles(zStatus directory) : directory_(directory) {}
    zStatus findDirectory(const char*) override { return directory_; }
    zStatus createDirectory(const char*) override { return zStatus_IoError; }
    zStatus copyFile(const char*, const char*) override { throw std::bad_alloc(); }
    zStatus deleteFile(const char*) override { return zStatus_IoError; }

  private:
    zStatus directory_;
};

TEST(UserTools, reportsADirectoryThatCannotBeLookedAtInsteadOfSkipping) {
    const CapturedOutput output;
    ClosedFiles files(zStatus_IoError);
    const auto exception = raised([&] { TaVekUtil_InjectFile("a.dll", "b.dll", "host", files); });
    EXPECT_THAT(exception, IsLocated("TaVekUtil_InjectFile", zStatus_IoError));
    EXPECT_THAT(output.lines(),
                ElementsAre(std::string("err: TaVekUtil: Failed injecting files into User Tools package: ") +
                            exception.what()));
}

TEST(UserTools, reportsWhateverExceptionComes) {
    const CapturedOutput output;
    ClosedFiles files(zStatus_Success);
    EXPECT_THROW(TaVekUtil_InjectFile("a.dll", "b.dll", "host", files), std::bad_alloc);
    EXPECT_THAT(output.lines(),
                ElementsAre(std::string("err: TaVekUtil: Failed injecting files into User Tools package: ") +
                            std::bad_alloc().what()));
}

TEST(UserTools, takesTargetPathsOfUpTo511Characters) {
    UserTools tools;
    const std::string fits(511 - tools.joined("").size(), 'a');
    tools.inject("x/" + fits.substr(2));
    EXPECT_THAT(tools.output.out(), testing::HasSubstr("skipping file."));

    const auto exception = raised([&] { tools.inject(fits + 'a'); });
    EXPECT_THAT(exception, IsLocated("TaVekUtil_InjectFile", zStatus_DoesNotFit));
    EXPECT_EQ(tools.output.err(), std::string("TaVekUtil: Failed injecting files into User Tools package: ") +
                                      exception.what() + "\n");
}

}  // namespace
