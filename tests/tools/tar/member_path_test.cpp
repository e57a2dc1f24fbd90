#include "tools/tar/member_path.h"

#include <gmock/gmock.h>

#include "platform/os/os.h"
#include "tests/tools/tar/refusal.h"

namespace {

using tar::checkLink;
using tar::memberPath;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::refusalOf;

const bool onWindows = os::pathSeparator == '\\';

constexpr const char* atRoot = "the name begins at a root";
constexpr const char* outside = "the name leads out of the directory";
constexpr const char* linkOutside = "the link leads out of the directory";
constexpr const char* noName = "no file can have that name here";

std::string refusal(const std::string& name) {
    return refusalOf([&] { memberPath(name); });
}

std::string linkRefusal(const std::string& link, std::size_t depth) {
    return refusalOf([&] { checkLink(link, depth); });
}

TEST(MemberPath, isTakenApart) {
    EXPECT_THAT(memberPath("a"), ElementsAre("a"));
    EXPECT_THAT(memberPath("a/b/c"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(memberPath("./a//./b/"), ElementsAre("a", "b"));
    EXPECT_THAT(memberPath("a\\b"), ElementsAre("a", "b"));
    EXPECT_THAT(memberPath("./"), IsEmpty());
    EXPECT_THAT(memberPath("..a/größe"), ElementsAre("..a", "größe"));
}

TEST(MemberPath, staysInTheDirectory) {
    EXPECT_EQ(refusal(""), "an empty name");
    for (const char* name : {"/", "/a", "//a", "\\a", "\\\\server\\share\\a"})
        EXPECT_EQ(refusal(name), atRoot);
    for (const char* name : {"..", "../a", "a/../b", "a/..", "..\\a", "a\\..\\..\\b", "./../a"}) {
        EXPECT_EQ(refusal(name), outside) << name;
    }
}

TEST(MemberPath, hasNoDriveDeviceOrStreamOnWindows) {
    for (const char* name : {"C:/a", "c:a", "C:"}) EXPECT_EQ(refusal(name), onWindows ? atRoot : "") << name;
    for (const char* name : {"NUL", "a/con.txt", "ab:c", "d/COM1", "a/b.", "a /b", ".. /a", "a?"}) {
        EXPECT_EQ(refusal(name), onWindows ? noName : "") << name;
    }
    EXPECT_EQ(refusal(std::string("a\0b", 3)), noName);
}

TEST(Link, mayClimbAsFarAsTheDirectory) {
    EXPECT_EQ(linkRefusal("a", 0), "");
    EXPECT_EQ(linkRefusal("./a/b", 0), "");
    EXPECT_EQ(linkRefusal("../a", 1), "");
    EXPECT_EQ(linkRefusal("./../../a/b", 2), "");
    EXPECT_EQ(linkRefusal("..", 0), linkOutside);
    EXPECT_EQ(linkRefusal("../a", 0), linkOutside);
    EXPECT_EQ(linkRefusal("..\\..\\a", 1), linkOutside);
}

TEST(Link, doesNotClimbBehindAName) {
    EXPECT_EQ(linkRefusal("a/..", 5), linkOutside);
    EXPECT_EQ(linkRefusal("../a/../b", 5), linkOutside);
}

TEST(Link, doesNotBeginAtARoot) {
    EXPECT_EQ(linkRefusal("", 1), "an empty name");
    EXPECT_EQ(linkRefusal("/etc/passwd", 1), atRoot);
    EXPECT_EQ(linkRefusal("\\\\server\\share", 1), atRoot);
    EXPECT_EQ(linkRefusal("C:\\a", 1), onWindows ? atRoot : "");
    EXPECT_EQ(linkRefusal("a/NUL", 1), onWindows ? noName : "");
}

}  // namespace
