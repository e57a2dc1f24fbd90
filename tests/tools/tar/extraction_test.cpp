#include "tools/tar/extraction.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "tests/testing/scratch_directory.h"
#include "tests/tools/tar/refusal.h"
#include "tests/tools/tar/tar_builder.h"
#include "tools/tar/unpack.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::gzipped;
using testing::IsEmpty;
using testing::refusalOf;
using testing::tarEnd;
using testing::tarMember;

const bool onWindows = os::pathSeparator == '\\';

/// Unpacks into "in" of a scratch directory; whatever appears beside that has escaped.
class Extraction : public testing::Test {
  protected:
    void SetUp() override { fs::create_directory(scratch.path("in")); }
    void TearDown() override {
        fs::remove(scratch.path("archive"));
        const auto entries = scratch.entries();
        EXPECT_TRUE(entries == std::vector<std::string>{"in"} || entries == beside) << "something escaped";
    }

    std::vector<std::string> unpack(const std::string& members) {
        std::vector<std::string> names;
        tar::unpack(scratch.write("archive", members + tarEnd()), scratch.path("in"),
                    [&](const std::string& name) { names.push_back(name); });
        return names;
    }
    std::string refusal(const std::string& members) {
        const std::string text = refusalOf([&] { unpack(members); });
        const std::string start = scratch.path("archive") + ": ";
        EXPECT_TRUE(text.empty() || text.starts_with(start)) << text;
        return text.empty() ? "" : text.substr(start.size());
    }
    std::vector<std::string> unpacked() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(scratch.path("in"))) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    testing::ScratchDirectory scratch;
    std::vector<std::string> beside;
};

/// For tests of symbolic links, which Wine lacks, and Windows without the privilege.
class ExtractionOfLinks : public Extraction {
  protected:
    void SetUp() override {
        Extraction::SetUp();
        const std::error_code error = os::createSymbolicLink("x", scratch.path("in/probe"));
        if (onWindows && error) GTEST_SKIP() << "no symbolic links here: " << error.message();
        ASSERT_FALSE(os::removeFile(scratch.path("in/probe")));
    }
};

TEST_F(Extraction, writesFilesAndMakesDirectories) {
    EXPECT_THAT(
        unpack(tarMember({.name = "./", .kind = '5'}) + tarMember({.name = "a", .content = "1"}) +
               tarMember({.name = "d/e/", .kind = '5'}) + tarMember({.name = "größe/b", .content = "2"})),
        ElementsAre("./", "a", "d/e/", "größe/b"));
    EXPECT_EQ(scratch.read("in/a"), "1");
    EXPECT_EQ(scratch.read("in/größe/b"), "2");
    EXPECT_TRUE(fs::is_directory(scratch.path("in/d/e")));
}

TEST_F(Extraction, readsCompressedArchives) {
    tar::unpack(scratch.write("archive", gzipped(tarMember({.name = "a", .content = "1"}) + tarEnd())),
                scratch.path("in"), [](const std::string&) {});
    EXPECT_EQ(scratch.read("in/a"), "1");
}

TEST_F(Extraction, replacesWhatIsThere) {
    scratch.write("in/a", "old");
    scratch.write("in/b", "old");
    scratch.write("in/d/kept", "kept");
    unpack(tarMember({.name = "a", .content = "1"}) + tarMember({.name = "b/", .kind = '5'}) +
           tarMember({.name = "d/", .kind = '5'}) + tarMember({.name = "a", .content = "3"}));
    EXPECT_EQ(scratch.read("in/a"), "3");
    EXPECT_TRUE(fs::is_directory(scratch.path("in/b")));
    EXPECT_EQ(scratch.read("in/d/kept"), "kept");
}

TEST_F(Extraction, doesNotReplaceADirectoryByAFile) {
    scratch.write("in/a/kept", "kept");
    EXPECT_EQ(refusal(tarMember({.name = "a", .content = "1"})), "member a: Is a directory");
    EXPECT_EQ(scratch.read("in/a/kept"), "kept");
}

TEST_F(Extraction, setsTimesOfFilesAndOfDirectoriesFilledLater) {
    unpack(tarMember({.name = "d", .kind = '5', .time = "10000000000"}) +
           tarMember({.name = "d/a", .content = "1", .time = "11000000000"}));
    const auto secondsOf = [&](const char* name) {
        const auto time = fs::file_time_type::clock::to_sys(fs::last_write_time(scratch.path(name)));
        return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
    };
    EXPECT_EQ(secondsOf("in/d"), 010000000000);
    EXPECT_EQ(secondsOf("in/d/a"), 011000000000);
}

TEST_F(Extraction, setsPermissionsOutsideWindows) {
    if (onWindows) GTEST_SKIP() << "no permission bits on Windows";
    unpack(tarMember({.name = "d", .kind = '5', .mode = "0000500"}) +
           tarMember({.name = "d/a", .content = "1", .mode = "0004700"}));
    EXPECT_EQ(fs::status(scratch.path("in/d")).permissions(), fs::perms{0500});
    EXPECT_EQ(fs::status(scratch.path("in/d/a")).permissions(), fs::perms{0700});
    fs::permissions(scratch.path("in/d"), fs::perms{0700});
}

TEST_F(Extraction, leavesNoUnfinishedFile) {
    const std::string cut = tarMember({.name = "a", .content = std::string(2000, 'x')}).substr(0, 1500);
    const std::string archive = scratch.write("archive", tarMember({.name = "first"}) + cut);
    EXPECT_EQ(refusalOf([&] { tar::unpack(archive, scratch.path("in"), [](const std::string&) {}); }),
              archive + ": the archive ends early");
    EXPECT_THAT(unpacked(), ElementsAre("first"));
}

TEST_F(Extraction, refusesMembersOutsideTheDirectory) {
    EXPECT_EQ(refusal(tarMember({.name = "../a", .content = "x"})),
              "member ../a: the name leads out of the directory");
    EXPECT_EQ(refusal(tarMember({.name = "d/../../a", .content = "x"})),
              "member d/../../a: the name leads out of the directory");
    EXPECT_EQ(refusal(tarMember({.name = "/a", .content = "x"})), "member /a: the name begins at a root");
    EXPECT_EQ(refusal(tarMember({.name = "..\\a", .content = "x"})),
              "member ..\\a: the name leads out of the directory");
    EXPECT_EQ(refusal(tarMember({.name = "../d", .kind = '5'})),
              "member ../d: the name leads out of the directory");
    EXPECT_EQ(refusal(tarMember({.name = ".", .content = "x"})),
              "member .: it would replace the directory itself");
    EXPECT_THAT(unpacked(), IsEmpty());
}

TEST_F(Extraction, refusesWhatWindowsTakesForSomethingElse) {
    if (!onWindows) GTEST_SKIP() << "plain names outside Windows";
    for (const char* name : {"NUL", "d/con.txt", "a:stream", "C:a", "C:/a", "a.", "d /a", "\xFF"}) {
        EXPECT_NE(refusal(tarMember({.name = name, .content = "x"})), "") << name;
    }
    EXPECT_THAT(unpacked(), IsEmpty());
}

TEST_F(Extraction, refusesDevicesAndUnknownKinds) {
    for (const char kind : {'3', '4', '6', 'S', 'M'}) {
        EXPECT_EQ(refusal(tarMember({.name = "a", .kind = kind})),
                  "member a: a device, or a kind of member that this tar cannot unpack");
    }
    EXPECT_THAT(unpacked(), IsEmpty());
}

TEST_F(Extraction, makesHardLinks) {
    unpack(tarMember({.name = "d/a", .content = "1"}) + tarMember({.name = "b", .kind = '1', .link = "d/a"}) +
           tarMember({.name = "d/a", .kind = '1', .link = "./d/a"}));
    os::InputFile file;
    ASSERT_FALSE(file.open(scratch.path("in/d/a")));
    EXPECT_TRUE(file.isSameFileAs(scratch.path("in/b")));
    EXPECT_EQ(scratch.read("in/b"), "1");
}

TEST_F(Extraction, refusesHardLinksThatLeadOutside) {
    beside = {"in", "secret"};
    scratch.write("secret", "secret");
    EXPECT_EQ(refusal(tarMember({.name = "a", .kind = '1', .link = "../secret"})),
              "member a: the name leads out of the directory");
    EXPECT_EQ(refusal(tarMember({.name = "a", .kind = '1', .link = scratch.path("secret")})),
              "member a: the name begins at a root");
    EXPECT_EQ(refusal(tarMember({.name = "a", .kind = '1', .link = "missing"})),
              "member a: a link to what is no file");
    EXPECT_EQ(refusal(tarMember({.name = "a", .kind = '1', .link = "deep/missing"})),
              "member a: a link to what is no file");
    EXPECT_EQ(refusal(tarMember({.name = "a", .kind = '1', .link = "."})),
              "member a: a link to what is no file");
    EXPECT_THAT(unpacked(), IsEmpty());
}

TEST_F(Extraction, refusesSymbolicLinksThatLeadOutside) {
    const std::string fault = "member d/a: the link leads out of the directory";
    EXPECT_EQ(refusal(tarMember({.name = "d/a", .kind = '2', .link = "../../secret"})), fault);
    EXPECT_EQ(refusal(tarMember({.name = "d/a", .kind = '2', .link = "x/../../.."})), fault);
    EXPECT_EQ(refusal(tarMember({.name = "d/a", .kind = '2', .link = "/etc"})),
              "member d/a: the name begins at a root");
    EXPECT_THAT(unpacked(), ElementsAre("d"));
}

TEST_F(Extraction, doesNotGoThroughLinksOfTheArchive) {
    EXPECT_EQ(refusal(tarMember({.name = "d", .kind = '2', .link = "e"}) +
                      tarMember({.name = "d/a", .content = "x"})),
              "member d/a: the name leads through a symbolic link");
    EXPECT_EQ(refusal(tarMember({.name = "d", .kind = '2', .link = "e"}) + tarMember({.name = "e/f"}) +
                      tarMember({.name = "a", .kind = '1', .link = "d/f"})),
              "member a: the name leads through a symbolic link");
}

TEST_F(Extraction, wantsAnExistingDirectory) {
    const std::string archive = scratch.write("archive", tarEnd());
    EXPECT_EQ(refusalOf([&] { tar::unpack(archive, scratch.path("none"), [](const std::string&) {}); }),
              scratch.path("none") + ": Not a directory");
}

TEST_F(ExtractionOfLinks, makesSymbolicLinksLast) {
    unpack(tarMember({.name = "a", .kind = '2', .link = "later/b"}) +
           tarMember({.name = "later/b", .content = "1"}) +
           tarMember({.name = "later/c", .kind = '2', .link = "../a"}));
    EXPECT_EQ(scratch.read("in/later/c"), "1");
    EXPECT_TRUE(fs::is_symlink(scratch.path("in/a")));
}

TEST_F(ExtractionOfLinks, takesAHardLinkToOneForAnother) {
    unpack(tarMember({.name = "a", .kind = '2', .link = "x"}) +
           tarMember({.name = "b", .kind = '1', .link = "a"}));
    EXPECT_EQ(fs::read_symlink(scratch.path("in/b")), "x");
    EXPECT_EQ(refusal(tarMember({.name = "d/a", .kind = '2', .link = "../x"}) +
                      tarMember({.name = "b", .kind = '1', .link = "d/a"})),
              "member b: the link leads out of the directory");
}

TEST_F(ExtractionOfLinks, replacesLinksAndDoesNotFollowThem) {
    beside = {"in", "outside"};
    scratch.write("outside/a", "kept");
    for (const char* name : {"in/file", "in/directory", "in/link"}) {
        ASSERT_FALSE(os::createSymbolicLink("../outside/a", scratch.path(name)));
    }
    unpack(tarMember({.name = "file", .content = "new"}) + tarMember({.name = "directory/", .kind = '5'}) +
           tarMember({.name = "link", .kind = '2', .link = "file"}) +
           tarMember({.name = "hard", .kind = '1', .link = "file"}));
    EXPECT_EQ(scratch.read("outside/a"), "kept");
    EXPECT_EQ(scratch.read("in/file"), "new");
    EXPECT_EQ(scratch.read("in/link"), "new");
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(scratch.path("in/directory"))));
}

TEST_F(ExtractionOfLinks, doesNotGoThroughLinksThatWereThere) {
    beside = {"in", "outside"};
    scratch.write("outside/a", "kept");
    ASSERT_FALSE(os::createSymbolicLink("../outside", scratch.path("in/d")));
    const std::string fault = ": the name leads through a symbolic link";
    EXPECT_EQ(refusal(tarMember({.name = "d/a", .content = "new"})), "member d/a" + fault);
    EXPECT_EQ(refusal(tarMember({.name = "d/b/", .kind = '5'})), "member d/b/" + fault);
    EXPECT_EQ(refusal(tarMember({.name = "b", .kind = '1', .link = "d/a"})), "member b" + fault);
    EXPECT_EQ(scratch.read("outside/a"), "kept");
}

TEST_F(ExtractionOfLinks, letsALaterMemberTakeALinksPlace) {
    unpack(tarMember({.name = "a", .kind = '2', .link = "x"}) + tarMember({.name = "a", .content = "1"}) +
           tarMember({.name = "b", .content = "1"}) + tarMember({.name = "b", .kind = '2', .link = "a"}));
    EXPECT_FALSE(fs::is_symlink(scratch.path("in/a")));
    EXPECT_EQ(fs::read_symlink(scratch.path("in/b")), "a");
}

}  // namespace
