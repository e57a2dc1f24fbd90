#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using testing::ScratchDirectory;

TEST(IsFileName, takesWhatEverySystemTakes) {
    for (const char* name : {"a", "a.txt", ".hidden", "größe 日本", "-x", "a..b"}) {
        EXPECT_TRUE(os::isFileName(name)) << name;
    }
}

TEST(IsFileName, refusesWhatIsNoneAnywhere) {
    using std::string_view_literals::operator""sv;
    for (const std::string_view name : {""sv, "a/b"sv, "a\\b"sv, "/"sv, "a\0b"sv}) {
        EXPECT_FALSE(os::isFileName(name)) << name;
    }
}

TEST(IsLink, isFalseForWhatIsNone) {
    const ScratchDirectory scratch;
    for (const std::string& path : {scratch.path(), scratch.write("a.txt", ""), scratch.path("missing"),
                                    scratch.path("missing/below"), scratch.path("a.txt/below")}) {
        bool link = true;
        EXPECT_FALSE(os::isLink(path, link)) << path;
        EXPECT_FALSE(link) << path;
    }
}

TEST(IsLink, tellsALinkWhereverItLeads) {
    const ScratchDirectory scratch;
    const std::error_code error = os::createSymbolicLink("nowhere", scratch.path("link"));
    if (error == std::errc::operation_not_supported || error == std::errc::permission_denied) {
        GTEST_SKIP() << "no symbolic links here (Wine, or Windows without the privilege)";
    }
    ASSERT_FALSE(error) << error.message();
    bool link = false;
    EXPECT_FALSE(os::isLink(scratch.path("link"), link));
    EXPECT_TRUE(link);
}

TEST(HardLink, isAnotherNameOfTheFile) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("größe/a.txt", "content");
    ASSERT_FALSE(os::createHardLink(path, scratch.path("größe\\b.txt")));
    EXPECT_EQ(scratch.read("größe/b.txt"), "content");
    os::InputFile file;
    ASSERT_FALSE(file.open(path));
    EXPECT_TRUE(file.isSameFileAs(scratch.path("größe/b.txt")));
    EXPECT_EQ(os::createHardLink(path, scratch.path("größe/b.txt")), std::errc::file_exists);
    EXPECT_EQ(os::createHardLink(scratch.path("missing"), scratch.path("c")),
              std::errc::no_such_file_or_directory);
}

class ModificationTime : public testing::Test {
  protected:
    /// Seconds since 1970 of the last change of `path`.
    static std::int64_t secondsOf(const std::string& path) {
        const auto time = fs::last_write_time(std::u8string(path.begin(), path.end()));
        return std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::to_sys(time))
            .time_since_epoch()
            .count();
    }
    const ScratchDirectory scratch;
};

TEST_F(ModificationTime, isSetForFilesAndDirectories) {
    const std::string file = scratch.write("größe/a.txt", "");
    for (const std::string& path : {file, scratch.path("größe")}) {
        for (const std::int64_t seconds : {0LL, 1LL, 1'600'000'000LL, 4'000'000'000LL}) {
            ASSERT_FALSE(os::setModificationTime(path, {seconds, 999'999'900}));
            EXPECT_EQ(secondsOf(path), seconds);
        }
    }
}

TEST_F(ModificationTime, mayLieBefore1970AndBeyond2106) {
    if (os::pathSeparator == '\\') GTEST_SKIP() << "Wine keeps no such times, though Windows does";
    const std::string path = scratch.write("a.txt", "");
    ASSERT_FALSE(os::setModificationTime(path, {-1'000'000, 0}));
    EXPECT_EQ(secondsOf(path), -1'000'000);
    ASSERT_FALSE(os::setModificationTime(path, {5'000'000'000, 0}));
    EXPECT_EQ(secondsOf(path), 5'000'000'000);
}

TEST_F(ModificationTime, ofNothingIsAnError) {
    EXPECT_EQ(os::setModificationTime(scratch.path("missing"), {}), std::errc::no_such_file_or_directory);
}

}  // namespace
