// What POSIX systems alone know besides permissions and links: pipes, devices, signals.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "platform/os/os.h"
#include "tests/platform/os/files.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using os::FileType;
using os::InputFile;
using testing::save;
using testing::ScratchDirectory;
using testing::typeOf;

TEST(Device, isWrittenDirectly) {
    EXPECT_EQ(typeOf("/dev/null"), FileType::other);
    EXPECT_FALSE(save("/dev/null", "content"));
    EXPECT_EQ(typeOf("/dev/null"), FileType::other) << "it is still there";
}

TEST(Device, thatIsFullTellsSo) {
    const std::error_code error = save("/dev/full", "content");
    EXPECT_EQ(error, std::errc::no_space_on_device);
    EXPECT_EQ(error.message(), "No space left on device");
}

TEST(Device, hasNoSizeAndIsReadFromFrontToBack) {
    InputFile file;
    ASSERT_FALSE(file.open("/dev/zero"));
    EXPECT_FALSE(file.isRegular());
    EXPECT_EQ(file.size(), 0u);
    char bytes[4] = {1, 1, 1, 1};
    std::size_t count = 0;
    ASSERT_FALSE(file.readNext(bytes, sizeof bytes, count));
    EXPECT_EQ(count, sizeof bytes);
    EXPECT_EQ(bytes[3], 0);
}

TEST(Pipe, isWrittenAndReadDirectly) {
    const ScratchDirectory scratch;
    const std::string path = scratch.path("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::error_code writing;
    std::thread writer([&] { writing = save(path, "through a pipe"); });
    InputFile file;
    EXPECT_FALSE(file.open(path));
    std::string content;
    for (;;) {
        char bytes[5];
        std::size_t count = 0;
        EXPECT_FALSE(file.readNext(bytes, sizeof bytes, count));
        if (count == 0) break;
        content.append(bytes, count);
    }
    writer.join();
    EXPECT_FALSE(writing) << writing.message();
    EXPECT_EQ(content, "through a pipe");
    EXPECT_EQ(typeOf(path), FileType::other);
}

TEST(UnpackTarEndedBySignal, answers128AndTheSignal) {
    const ScratchDirectory scratch;
    const std::string program = scratch.write("tar.exe", "#!/bin/sh\nkill -9 $$\n");
    ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
    EXPECT_EQ(os::unpackTar(scratch.path(), "d", "a.tar"), 128 + 9);
}

/// Lets the process do with `signal` what it does by itself, and at the end again what it did before.
class DefaultSignal {
  public:
    explicit DefaultSignal(int signal) : signal_(signal), before_(::signal(signal, SIG_DFL)) {}
    ~DefaultSignal() { ::signal(signal_, before_); }
    DefaultSignal(const DefaultSignal&) = delete;
    DefaultSignal& operator=(const DefaultSignal&) = delete;

  private:
    int signal_;
    void (*before_)(int);
};

TEST(UnpackTarOnPosix, tellsTheStatusThoughSignalsOfChildrenWereIgnored) {
    const DefaultSignal children(SIGCHLD);
    ::signal(SIGCHLD, SIG_IGN);
    const ScratchDirectory scratch;
    const std::string program = scratch.write("tar.exe", "#!/bin/sh\nexit 3\n");
    ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
    EXPECT_EQ(os::unpackTar(scratch.path(), "d", "a.tar"), 3);
}

TEST(LimitOnTheSizeOfFiles, makesWritingFail) {
    const DefaultSignal limitReached(SIGXFSZ);
    const auto handler = std::set_terminate(nullptr);
    os::silenceAbnormalEnd();
    std::set_terminate(handler);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{100, before.rlim_max};
    const ScratchDirectory scratch;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::error_code error = save(scratch.path("file"), std::string(1000, 'x'));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(error, std::errc::file_too_large);
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

TEST(UnpackTarOnPosix, turnsSeparatorsAndRunsWhatMayBeRun) {
    const ScratchDirectory scratch;
    const std::string program =
        scratch.write("bin/tar.exe", "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"${0%/*}/words\"\n");
    EXPECT_EQ(os::unpackTar(scratch.path("bin"), "d", "a.tar"), 127) << "not executable yet";
    ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
    EXPECT_EQ(os::unpackTar(scratch.path() + "\\bin", "some\\d", "a\\b.tar"), 0);
    EXPECT_EQ(scratch.read("bin/words"), "--force-local\n-C\nsome/d\n-xvf\na/b.tar\n");
}

}  // namespace
