#include "tools/tar/member_reader.h"

#include <gmock/gmock.h>

#include "tests/tools/tar/refusal.h"
#include "tests/tools/tar/tar_builder.h"

namespace {

using testing::ElementsAre;
using testing::longHeader;
using testing::paxHeader;
using testing::refusalOf;
using testing::tarEnd;
using testing::tarMember;

/// Notes what it is given: "NAME(CONTENT)", ">LINK" behind the name of a link.
class Notes : public tar::MemberSink {
  public:
    void begin(const tar::Member& member) override {
        text = member.name;
        if (!member.link.empty()) text += '>' + member.link;
        text += '(';
        times.push_back(member.time.seconds);
    }
    void write(std::span<const std::uint8_t> bytes) override { text.append(bytes.begin(), bytes.end()); }
    void end() override { members.push_back(text + ')'); }

    std::string text;
    std::vector<std::string> members;
    std::vector<std::int64_t> times;
};

Notes read(const std::string& archive, std::size_t pieceSize = 100'000) {
    Notes notes;
    tar::MemberReader reader(notes);
    for (std::size_t place = 0; place < archive.size(); place += pieceSize) {
        const std::string piece = archive.substr(place, pieceSize);
        reader.take({reinterpret_cast<const std::uint8_t*>(piece.data()), piece.size()});
    }
    reader.finish();
    return notes;
}

std::string refusal(const std::string& archive) {
    return refusalOf([&] { read(archive); });
}

TEST(MemberReader, handsOnMembersInPiecesOfAnySize) {
    const std::string archive = tarMember({.name = "a", .content = "123"}) + tarMember({.name = "empty"}) +
                                tarMember({.name = "full", .content = std::string(512, 'x')}) + tarEnd();
    for (const std::size_t size : {1u, 7u, 511u, 512u, 513u, 100'000u}) {
        EXPECT_THAT(read(archive, size).members,
                    ElementsAre("a(123)", "empty()", "full(" + std::string(512, 'x') + ")"));
    }
}

TEST(MemberReader, resolvesLongNamesAndLinks) {
    const std::string name(300, 'n'), link(300, 'l');
    EXPECT_THAT(
        read(longHeader(name, 'L') + longHeader(link, 'K') +
             tarMember({.name = "n", .kind = '2', .link = "l"}) + tarMember({.name = "next"}) + tarEnd())
            .members,
        ElementsAre(name + '>' + link + "()", "next()"));
}

TEST(MemberReader, takesWhatAHeaderOfAllSaysBackForOneMember) {
    const std::string archive = paxHeader("path", "all", 'g') + paxHeader("path", "") +
                                tarMember({.name = "plain"}) + tarMember({.name = "x"}) + tarEnd();
    EXPECT_THAT(read(archive).members, ElementsAre("plain()", "all()"));
}

TEST(MemberReader, prefersWhatIsSaidOfOneMemberInEitherOrder) {
    const std::string own = paxHeader("path", "own"), all = paxHeader("path", "all", 'g');
    const std::string member = tarMember({.name = "x"}) + tarEnd();
    EXPECT_THAT(read(own + all + member).members, ElementsAre("own()"));
    EXPECT_THAT(read(all + own + member).members, ElementsAre("own()"));
}

TEST(MemberReader, resolvesExtendedHeaders) {
    const std::string archive =
        paxHeader("path", "größe") + tarMember({.name = "x", .content = "1"}) + paxHeader("size", "2") +
        tarMember({.name = "b", .content = "22", .size = "0"}) + tarMember({.name = "c"}) + tarEnd();
    EXPECT_THAT(read(archive).members, ElementsAre("größe(1)", "b(22)", "c()"));
}

TEST(MemberReader, letsGlobalHeadersCountUntilTheNext) {
    const Notes notes = read(paxHeader("mtime", "5", 'g') + tarMember({.name = "a"}) +
                             paxHeader("mtime", "7") + tarMember({.name = "b"}) + tarMember({.name = "c"}) +
                             paxHeader("mtime", "", 'g') + tarMember({.name = "d"}) + tarEnd());
    EXPECT_THAT(notes.times, ElementsAre(5, 7, 5, 1));
}

TEST(MemberReader, passesOverWhatFollowsTheEndMark) {
    EXPECT_THAT(read(tarMember({.name = "a"}) + tarEnd() + "anything" + tarMember({.name = "b"})).members,
                ElementsAre("a()"));
    EXPECT_THAT(read(tarEnd()).members, ElementsAre());
}

TEST(MemberReader, refusesWhatIsNoArchive) {
    const std::string fault = "this does not look like a tar archive";
    EXPECT_EQ(refusal(""), fault);
    EXPECT_EQ(refusal("short"), fault);
    EXPECT_EQ(refusal(std::string(2000, 'x')), fault);
}

TEST(MemberReader, refusesAnArchiveThatIsCutAnywhere) {
    const std::string archive = tarMember({.name = "a", .content = "123"}) + tarMember({.name = "b"});
    for (const std::size_t size : {512u, 513u, 515u, 1023u, 1024u, 1025u, 1536u}) {
        EXPECT_EQ(refusal(archive.substr(0, size)), "the archive ends early") << size;
    }
}

TEST(MemberReader, refusesDamagedHeaders) {
    std::string second = tarMember({.name = "b"});
    second[0] = 'c';
    EXPECT_EQ(refusal(tarMember({.name = "a"}) + second + tarEnd()), "a damaged header");
}

TEST(MemberReader, refusesAbsurdSizes) {
    const std::string huge = "\x80" + std::string(3, '\0') + "\x40" + std::string(7, '\1');
    EXPECT_EQ(refusal(tarMember({.name = "a", .size = huge})), "member a: an absurd size");
    EXPECT_EQ(refusal(tarMember({.name = "a", .kind = 'L', .size = "77777777777"})),
              "a name or extended header of absurd length");
    EXPECT_EQ(refusal(tarMember({.name = "a", .kind = 'x', .size = "77777777777"})),
              "a name or extended header of absurd length");
}

TEST(MemberReader, refusesLinksAndDirectoriesWithContent) {
    for (const char kind : {'1', '2', '5'}) {
        EXPECT_EQ(refusal(tarMember({.name = "a", .content = "x", .kind = kind, .link = "b"})),
                  "member a: a link or directory with content");
    }
}

}  // namespace
