#include "tools/tar/command_line.h"

#include <gmock/gmock.h>

#include "tests/tools/tar/refusal.h"

namespace {

using testing::HasSubstr;
using testing::refusalOf;

tar::Request read(const std::vector<std::string>& words) {
    return tar::readCommandLine(words);
}

TEST(TarCommandLine, isTheOneOfTheTool) {
    const tar::Request request = read({"--force-local", "-C", "some directory", "-xvf", "a:b.tar"});
    EXPECT_EQ(request.directory, "some directory");
    EXPECT_EQ(request.archive, "a:b.tar");
    EXPECT_TRUE(request.verbose);
    EXPECT_FALSE(request.help);
}

TEST(TarCommandLine, takesLettersApartOrJoinedInAnyOrder) {
    for (const auto& words : std::vector<std::vector<std::string>>{{"-x", "-f", "a", "-C", "d"},
                                                                   {"-f", "a", "-x", "-Cd"},
                                                                   {"-xfa", "-Cd"},
                                                                   {"-C", "d", "-xf", "a"}}) {
        const tar::Request request = read(words);
        EXPECT_EQ(request.directory, "d");
        EXPECT_EQ(request.archive, "a");
        EXPECT_FALSE(request.verbose);
    }
}

TEST(TarCommandLine, usesTheWorkingDirectoryWithoutAnother) {
    EXPECT_EQ(read({"-xf", "a"}).directory, ".");
}

TEST(TarCommandLine, takesAValueThatLooksLikeAnOption) {
    EXPECT_EQ(read({"-xf", "--help"}).archive, "--help");
    EXPECT_EQ(read({"-C", "-x", "-xf", "-v"}).directory, "-x");
}

TEST(TarCommandLine, asksForHelpAlone) {
    EXPECT_TRUE(read({"--help"}).help);
    EXPECT_TRUE(read({"-x", "--help"}).help);
}

TEST(TarCommandLine, refusesTheRest) {
    EXPECT_EQ(refusalOf([] { read({}); }), "nothing to do without -x (--help tells more)");
    EXPECT_EQ(refusalOf([] { read({"-f", "a"}); }), "nothing to do without -x (--help tells more)");
    EXPECT_EQ(refusalOf([] { read({"-x"}); }), "-f with an archive is missing (--help tells more)");
    EXPECT_EQ(refusalOf([] { read({"-xf"}); }), "a value is missing behind -xf");
    EXPECT_EQ(refusalOf([] { read({"-x", "-C"}); }), "a value is missing behind -C");
    EXPECT_EQ(refusalOf([] { read({"-xz"}); }), "no option -z (--help tells more)");
    for (const char* word : {"a", "-", "", "--", "--extract"}) {
        EXPECT_EQ(refusalOf([&] {
                      read({"-xf", "a", word});
                  }),
                  "cannot make sense of \"" + std::string(word) + "\" (--help tells more)");
    }
}

TEST(TarCommandLine, isExplainedByTheUsage) {
    for (const char* option : {"-x", "-f", "-C", "-v", "--force-local", "--help"}) {
        EXPECT_THAT(tar::usage, HasSubstr(std::string("\n  ") + option));
    }
}

}  // namespace
