#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::ScratchDirectory;

const bool onWindows = os::pathSeparator == '\\';

std::string helper() {
    std::string directory;
    EXPECT_FALSE(os::applicationDirectory(directory));
    return directory + os::pathSeparator + (onWindows ? "process_helper.exe" : "process_helper");
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> list;
    std::string line;
    for (const char character : text) {
        if (character == '\n') {
            list.push_back(std::exchange(line, ""));
        } else if (character != '\r') {
            line += character;
        }
    }
    return list;
}

/// Starts the helper; its output and its errors go to files in `scratch`.
int run(const ScratchDirectory& scratch, const std::string& words) {
    std::string line = '"' + helper() + "\" " + words + " > \"" + scratch.path("out") + "\" 2> \"" +
                       scratch.path("err") + '"';
    // The command interpreter of Windows takes one pair of quotes away; a shell that stays would report how
    // the helper ended.
    line = onWindows ? '"' + line + '"' : "exec " + line;
    return std::system(line.c_str());
}

TEST(CommandLine, givesTheWordsAsTheyWereTyped) {
    const ScratchDirectory scratch;
    ASSERT_EQ(run(scratch, R"(words plain "with space" "" "trailing\\")"), 0);
    EXPECT_THAT(lines(scratch.read("out")), ElementsAre("plain", "with space", "", "trailing\\"));
}

TEST(CommandLine, isUtf8) {
    const ScratchDirectory scratch;
    ASSERT_EQ(run(scratch, "words größe 日本 😀"), 0);
    EXPECT_THAT(lines(scratch.read("out")), ElementsAre("größe", "日本", "😀"));
}

TEST(AbnormalEnd, saysSomethingOfItsOwnUsually) {
    const ScratchDirectory scratch;
    EXPECT_NE(run(scratch, "terminate"), 0);
    EXPECT_THAT(scratch.read("err"), HasSubstr("terminate called")) << "else the next test shows nothing";
}

TEST(AbnormalEnd, isSilentOnceSilenced) {
    const ScratchDirectory scratch;
    EXPECT_NE(run(scratch, "quietly"), 0);
    EXPECT_EQ(scratch.read("out"), "");
    EXPECT_EQ(scratch.read("err"), "");
}

/// A directory with a "tar.exe" in it that shows what it was given.
class UnpackTar : public testing::Test {
  protected:
    void SetUp() override { install("programs"); }

    void install(const std::string& directory) {
        programs = directory;
        scratch.write(programs + "/status.txt", "0");
        const std::string target = scratch.path(programs + "/tar.exe");
        fs::copy_file(helper(), std::u8string(target.begin(), target.end()));
    }
    int unpack(const std::string& directory, const std::string& archive) {
        testing::internal::CaptureStdout();
        const int result = os::unpackTar(scratch.path(programs), directory, archive);
        output = testing::internal::GetCapturedStdout();
        return result;
    }
    std::vector<std::string> words() const { return lines(scratch.read(programs + "/words.txt")); }

    ScratchDirectory scratch;
    std::string programs;
    std::string output;
};

TEST_F(UnpackTar, givesExactlyTheseWords) {
    EXPECT_EQ(unpack("some/directory", "a.tar"), 0);
    EXPECT_THAT(words(), ElementsAre("--force-local", "-C", "some/directory", "-xvf", "a.tar"));
}

TEST_F(UnpackTar, silencesStandardOutput) {
    EXPECT_EQ(unpack("d", "a.tar"), 0);
    EXPECT_EQ(output, "");
}

TEST_F(UnpackTar, answersTheExitStatus) {
    for (const int status : {1, 2, 97}) {
        scratch.write(programs + "/status.txt", std::to_string(status));
        EXPECT_EQ(unpack("d", "a.tar"), status);
    }
}

TEST_F(UnpackTar, failsWithoutTheProgram) {
    fs::remove(scratch.path(programs + "/tar.exe"));
    const int result = unpack("d", "a.tar");
    if (onWindows) {
        EXPECT_NE(result, 0) << "the command interpreter's own status";
    } else {
        EXPECT_EQ(result, 127);
    }
}

class UnpackTarOfName : public UnpackTar, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Odd, UnpackTarOfName,
                         testing::Values("with space", "größe 日本 😀", "a&b", "a;b", "$HOME", "(a)", "a'b",
                                         "-C", "a^b", "a,b=c", "#a", "~", "`a`", "!a"));

TEST_P(UnpackTarOfName, handsTheNameOn) {
    const std::string name = GetParam();
    EXPECT_EQ(unpack(name + "/d", name + ".tar"), 0);
    EXPECT_THAT(words(), ElementsAre("--force-local", "-C", name + "/d", "-xvf", name + ".tar"));
}

TEST_P(UnpackTarOfName, findsTheProgramInADirectoryOfThatName) {
    install(GetParam());
    EXPECT_EQ(unpack("d", "a.tar"), 0);
    EXPECT_THAT(words(), ElementsAre("--force-local", "-C", "d", "-xvf", "a.tar"));
}

}  // namespace
