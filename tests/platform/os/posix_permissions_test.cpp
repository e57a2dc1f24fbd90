// Permission bits, owners and groups of files, which POSIX systems alone know.

#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>

#include "platform/os/access.h"
#include "platform/os/os.h"
#include "tests/platform/os/files.h"
#include "tests/testing/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using os::OutputFile;
using testing::save;
using testing::ScratchDirectory;

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

constexpr const char* accessList = "system.posix_acl_access";
constexpr const char* inheritedList = "system.posix_acl_default";

/// The access list, as the system holds it: the owner and user 12345 may read and write, the group and
/// others nothing.
std::string listForAnotherUser() {
    struct Entry {
        std::uint16_t tag, access;
        std::uint32_t id;
    };
    constexpr std::uint32_t nobody = 0xFFFFFFFF;
    const Entry entries[] = {
        {0x01, 6, nobody}, {0x02, 6, 12345}, {0x04, 0, nobody}, {0x10, 6, nobody}, {0x20, 0, nobody}};
    std::string list("\2\0\0\0", 4);
    return list.append(reinterpret_cast<const char*>(entries), sizeof entries);
}

bool giveList(const std::string& path, const char* kind, const std::string& list) {
    return ::setxattr(path.c_str(), kind, list.data(), list.size(), 0) == 0;
}

/// The access list of a file, empty without one.
std::string accessListOf(const std::string& path) {
    std::string list(1000, '\0');
    const ssize_t length = ::getxattr(path.c_str(), accessList, list.data(), list.size());
    return list.substr(0, length < 0 ? 0 : static_cast<std::size_t>(length));
}

TEST(Permissions, ofAReplacedFileAreItsAccessListAsWell) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    if (!giveList(path, accessList, listForAnotherUser())) GTEST_SKIP() << "no access lists here";
    ASSERT_EQ(modeOf(path), 0660u) << "the most that the list gives to anybody but owner and others";
    ASSERT_FALSE(save(path, "new"));
    EXPECT_EQ(accessListOf(path), listForAnotherUser())
        << "without it the group would get what the mode says";
    EXPECT_EQ(modeOf(path), 0660u);
}

TEST(Permissions, ofAReplacedFileAreNotWhatItsDirectoryGivesToNewOnes) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.txt", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0660), 0);
    if (!giveList(scratch.path(), inheritedList, listForAnotherUser()))
        GTEST_SKIP() << "no access lists here";
    ASSERT_FALSE(save(path, "new"));
    EXPECT_EQ(accessListOf(path), "");
    EXPECT_EQ(modeOf(path), 0660u);
    ASSERT_FALSE(save(scratch.path("b.txt"), "new"));
    EXPECT_NE(accessListOf(scratch.path("b.txt")), "");
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

}  // namespace
