// What POSIX systems alone know: permission bits, links, pipes, devices, signals.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>

#include "platform/os/access.h"
#include "platform/os/os.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using os::FileType;
using os::InputFile;
using os::OutputFile;
using testing::ElementsAre;
using testing::ScratchDirectory;

std::error_code save(const std::string& target, std::string_view content) {
    OutputFile file;
    std::error_code error = file.open(target);
    if (!error) error = file.write(content.data(), content.size());
    if (!error) error = file.commit();
    return error;
}

FileType typeOf(const std::string& path) {
    FileType type{};
    EXPECT_FALSE(os::fileType(path, type));
    return type;
}

unsigned modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// Sets the umask while it lives.
class Umask {
  public:
    explicit Umask(mode_t mask) : before_(::umask(mask)) {}
    ~Umask() { ::umask(before_); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

  private:
    mode_t before_;
};

TEST(Permissions, ofAReplacedFileAreKept) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    for (const unsigned mode : {0644u, 0600u, 0751u, 0444u, 0666u, 02755u}) {
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        const Umask umask(077);
        ASSERT_FALSE(save(path, "new"));
        EXPECT_EQ(modeOf(path), mode);
    }
}

TEST(Permissions, ofANewFileAreThoseOfAnyNewFile) {
    const ScratchDirectory scratch;
    const Umask umask(027);
    ASSERT_FALSE(save(scratch.path("a.txt"), "new"));
    EXPECT_EQ(modeOf(scratch.path("a.txt")), 0640u);
}

TEST(Permissions, ofANewDirectoryAreThoseOfAnyNewDirectory) {
    const ScratchDirectory scratch;
    const Umask umask(027);
    ASSERT_FALSE(os::createDirectories(scratch.path("a/b")));
    EXPECT_EQ(modeOf(scratch.path("a")), 0750u);
    EXPECT_EQ(modeOf(scratch.path("a/b")), 0750u);
}

TEST(Permissions, ofANewFileFollowItsModel) {
    const ScratchDirectory scratch;
    const std::string model = scratch.write("model", "");
    ASSERT_EQ(::chmod(model.c_str(), 04775), 0);
    const Umask umask(022);
    OutputFile file;
    ASSERT_FALSE(file.openLike(scratch.path("new"), model));
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(modeOf(scratch.path("new")), 0755u) << "less the umask, never set-user-id";

    ASSERT_EQ(::chmod(scratch.write("old", "").c_str(), 0604), 0);
    ASSERT_FALSE(file.openLike(scratch.path("old"), model));
    ASSERT_FALSE(file.commit());
    EXPECT_EQ(modeOf(scratch.path("old")), 0604u) << "a replaced file's own win";
}

/// Puts this process into a container that knows no user but root.
bool enterContainer() {
    if (::unshare(CLONE_NEWUSER) != 0) return false;
    std::ofstream users("/proc/self/uid_map");
    users << "0 0 1\n" << std::flush;
    return users.good();
}

/// Makes this process one of a user without rights who belongs to `group` as well.
bool becomeMemberOf(gid_t group) {
    constexpr unsigned nobody = 65534;
    return ::setgroups(1, &group) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0;
}

/// Runs `action` in a process of its own that `prepare` has changed; answers its exit status, nothing where
/// that cannot be done.
template <typename Prepare, typename Action>
std::optional<int> inAnotherProcess(Prepare prepare, Action action) {
    constexpr int cannot = 77;
    const pid_t child = ::fork();
    if (child == 0) ::_exit(prepare() ? action() : cannot);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) < 0 || !WIFEXITED(status)) return {};
    return WEXITSTATUS(status) == cannot ? std::nullopt : std::optional(WEXITSTATUS(status));
}

TEST(Permissions, areKeptThoughNobodyHereKnowsTheOwner) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0664), 0);
    if (::chown(path.c_str(), 12345, 12345) != 0) GTEST_SKIP() << "only root can give files away";
    const auto status = inAnotherProcess(enterContainer, [&] { return save(path, "new") ? 1 : 0; });
    if (!status) GTEST_SKIP() << "no containers here";
    EXPECT_EQ(*status, 0);
    EXPECT_EQ(scratch.read("a.txt"), "new");
    EXPECT_EQ(modeOf(path), 0664u);
}

TEST(Permissions, keepTheGroupWhenTheOwnerIsAnother) {
    constexpr gid_t team = 12345;
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    fs::permissions(scratch.path(), fs::perms::all);
    ASSERT_EQ(::chmod(path.c_str(), 0660), 0);
    if (::chown(path.c_str(), 0, team) != 0) GTEST_SKIP() << "only root can give files away";
    const auto status =
        inAnotherProcess([] { return becomeMemberOf(team); }, [&] { return save(path, "new") ? 1 : 0; });
    ASSERT_TRUE(status);
    EXPECT_EQ(*status, 0);
    struct stat replaced {};
    ASSERT_EQ(::stat(path.c_str(), &replaced), 0);
    EXPECT_NE(replaced.st_uid, 0u);
    EXPECT_EQ(replaced.st_gid, team);
    EXPECT_EQ(replaced.st_mode & 07777, 0660u);
}

TEST(Permissions, toReplaceAFileAreToWriteToItsDirectoryAndToPassIt) {
    const ScratchDirectory scratch;
    fs::permissions(scratch.path(), fs::perms::all);
    if (::geteuid() != 0) GTEST_SKIP() << "only root can become a user without rights";
    const auto asNobody = [&](mode_t mode) {
        const std::string directory = scratch.path("d" + std::to_string(mode));
        EXPECT_EQ(::mkdir(directory.c_str(), 0), 0);
        EXPECT_EQ(::chmod(directory.c_str(), mode), 0);
        return inAnotherProcess([] { return becomeMemberOf(65534); },
                                [&] { return os::mayReplace(directory + "/a.txt") ? 0 : 1; });
    };
    EXPECT_EQ(asNobody(0777), 0);
    EXPECT_EQ(asNobody(0773), 0) << "to list it is not needed";
    EXPECT_EQ(asNobody(0775), 1);
    EXPECT_EQ(asNobody(0776), 1);
}

TEST(Permissions, ofAnUnfinishedReplacementAreTight) {
    const ScratchDirectory scratch;
    ASSERT_EQ(::chmod(scratch.write("a.txt", "secret").c_str(), 0600), 0);
    OutputFile file;
    ASSERT_FALSE(file.open(scratch.path("a.txt")));
    for (const std::string& name : scratch.entries()) EXPECT_EQ(modeOf(scratch.path(name)), 0600u);
}

TEST(Link, isFollowedAndNotReplaced) {
    const ScratchDirectory scratch;
    scratch.write("directory/a.txt", "old");
    fs::create_symlink("directory/a.txt", scratch.path("relative"));
    fs::create_symlink(scratch.path("relative"), scratch.path("absolute"));
    ASSERT_FALSE(save(scratch.path("absolute"), "new"));
    EXPECT_EQ(scratch.read("directory/a.txt"), "new");
    EXPECT_TRUE(fs::is_symlink(scratch.path("absolute")));
    EXPECT_TRUE(fs::is_symlink(scratch.path("relative")));
    EXPECT_THAT(scratch.entries(), ElementsAre("absolute", "directory", "relative"));
}

TEST(Link, thatDanglesIsFollowedToItsPlace) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch.path("directory"));
    fs::create_symlink("directory/a.txt", scratch.path("first"));
    fs::create_symlink("first", scratch.path("second"));
    EXPECT_EQ(typeOf(scratch.path("second")), FileType::absent);
    ASSERT_FALSE(save(scratch.path("second"), "new"));
    EXPECT_EQ(scratch.read("directory/a.txt"), "new");
    EXPECT_TRUE(fs::is_symlink(scratch.path("first")));
    EXPECT_TRUE(fs::is_symlink(scratch.path("second")));
}

TEST(Link, thatDanglesToANameWithABackslashIsFollowedThere) {
    const ScratchDirectory scratch;
    fs::create_symlink("\\new.txt", scratch.path("link"));
    ASSERT_FALSE(save(scratch.path("link"), "new"));
    EXPECT_THAT(scratch.entries(), ElementsAre("\\new.txt", "link"));
    EXPECT_EQ(testing::readFile(scratch.path("link")), "new");
}

TEST(Link, inACircleIsRefused) {
    const ScratchDirectory scratch;
    fs::create_symlink("b", scratch.path("a"));
    fs::create_symlink("a", scratch.path("b"));
    const std::error_code error = save(scratch.path("a"), "x");
    EXPECT_EQ(error, std::errc::too_many_symbolic_link_levels);
    FileType type{};
    EXPECT_EQ(os::fileType(scratch.path("a"), type), std::errc::too_many_symbolic_link_levels);
    InputFile file;
    EXPECT_EQ(file.open(scratch.path("a")), std::errc::too_many_symbolic_link_levels);
}

TEST(Link, thatDanglesIsFollowedAsFarAsTheSystemFollowsOne) {
    constexpr int mostLinks = 40;
    const ScratchDirectory scratch;
    const auto name = [](int i) { return "link" + std::to_string(i); };
    for (int i = 1; i <= mostLinks + 1; ++i) fs::create_symlink(name(i - 1), scratch.path(name(i)));
    EXPECT_EQ(save(scratch.path(name(mostLinks + 1)), "x"), std::errc::too_many_symbolic_link_levels);
    ASSERT_FALSE(save(scratch.path(name(mostLinks)), "new"));
    EXPECT_EQ(scratch.read(name(0)), "new");
}

TEST(Link, toADirectoryIsADirectory) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch.path("directory"));
    fs::create_symlink("directory", scratch.path("link"));
    EXPECT_EQ(typeOf(scratch.path("link")), FileType::directory);
    EXPECT_EQ(save(scratch.path("link"), "x"), std::errc::is_a_directory);
    EXPECT_FALSE(os::createDirectories(scratch.path("link")));
    EXPECT_FALSE(os::createDirectories(scratch.path("link/below")));
}

TEST(Link, isListedWhenItLeadsToAPlainFile) {
    const ScratchDirectory scratch;
    scratch.write("directory/a.txt", "");
    fs::create_symlink("directory/a.txt", scratch.path("to-file"));
    fs::create_symlink("directory", scratch.path("to-directory"));
    fs::create_symlink("nowhere", scratch.path("dangling"));
    fs::create_symlink("circle", scratch.path("circle"));
    ASSERT_EQ(::mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    std::vector<std::string> names;
    ASSERT_FALSE(os::listFiles(scratch.path(), names));
    EXPECT_THAT(names, ElementsAre("to-file"));
}

TEST(Link, ofWhichTheEndCannotBeToldIsNotPassedOver) {
    const ScratchDirectory scratch;
    fs::create_symlink(std::string(300, 'x'), scratch.path("too-long"));
    std::vector<std::string> names{"before"};
    EXPECT_EQ(os::listFiles(scratch.path(), names), std::errc::filename_too_long);
    EXPECT_THAT(names, ElementsAre("before"));
}

TEST(Link, isRemovedItselfAndNotItsTarget) {
    const ScratchDirectory scratch;
    scratch.write("a.txt", "content");
    fs::create_symlink("a.txt", scratch.path("link"));
    ASSERT_FALSE(os::removeFile(scratch.path("link")));
    EXPECT_THAT(scratch.entries(), ElementsAre("a.txt"));
}

TEST(Link, toTheSameFileIsTheSameFile) {
    const ScratchDirectory scratch;
    fs::create_symlink("a.txt", scratch.path("link"));
    InputFile file;
    ASSERT_FALSE(file.open(scratch.write("a.txt", "")));
    EXPECT_TRUE(file.isSameFileAs(scratch.path("link")));
}

TEST(SymbolicLink, holdsItsDestinationAsItIs) {
    const ScratchDirectory scratch;
    ASSERT_FALSE(os::createSymbolicLink("no\\such/place", scratch.path("link")));
    EXPECT_EQ(fs::read_symlink(scratch.path("link")), "no\\such/place");
    EXPECT_EQ(os::createSymbolicLink("a", scratch.path("link")), std::errc::file_exists);
}

TEST(SymbolicLink, isGivenTheTimeItself) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "");
    ASSERT_FALSE(os::createSymbolicLink("a.txt", scratch.path("link")));
    ASSERT_FALSE(os::setModificationTime(path, {1, 0}));
    ASSERT_FALSE(os::setModificationTime(scratch.path("link"), {1'600'000'000, 5}));
    struct stat status {};
    ASSERT_EQ(::lstat(scratch.path("link").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'600'000'000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 5);
    ASSERT_EQ(::lstat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1);
}

TEST(HardLink, toASymbolicLinkIsALinkToIt) {
    const ScratchDirectory scratch;
    fs::create_symlink("nowhere", scratch.path("link"));
    ASSERT_FALSE(os::createHardLink(scratch.path("link"), scratch.path("other")));
    EXPECT_TRUE(fs::is_symlink(scratch.path("other")));
}

TEST(Permissions, areGivenLessTheUmask) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "");
    const Umask umask(027);
    ASSERT_FALSE(os::setPermissions(path, 07777));
    EXPECT_EQ(modeOf(path), 0750u);
    ASSERT_FALSE(os::setPermissions(path, 0444));
    EXPECT_EQ(modeOf(path), 0440u);
    EXPECT_EQ(os::setPermissions(scratch.path("missing"), 0), std::errc::no_such_file_or_directory);
}

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
