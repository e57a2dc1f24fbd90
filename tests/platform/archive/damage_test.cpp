// Small archives with every bit changed in turn. Whatever the change, what a container hands out or
// saves on is what was in the archive before it, or the container says that it is damaged.

#include <optional>

#include "tests/platform/archive/deflate_stream.h"
#include "tests/platform/archive/zip_fixture.h"
#include "tests/testing/thoroughness.h"

namespace {

using namespace testing;

struct Content {
    std::string name;
    std::optional<std::string> bytes;  // nothing: a member that is not read
};

class Damage : public ZipTest {
  protected:
    enum class Outcome { refused, found, unnoticed };

    /// Loads, looks into every member, and saves. Nothing of that may show other content.
    Outcome judge(const std::string& damaged, const std::vector<Content>& contents) {
        const ArchiveHandle archive;
        const std::string path = scratch.write("a.zip", damaged);
        const zStatus loaded = zArchive_Load(archive.get(), path.c_str());
        if (loaded != zStatus_Success) {
            EXPECT_EQ(loaded, zStatus_Malformed);
            EXPECT_NE(detail(loaded), "");
            return Outcome::refused;
        }
        const bool sound = showsTheSame(archive.get(), contents);
        const zStatus saved = zArchive_Save(archive.get(), scratch.path("saved.zip").c_str());
        EXPECT_EQ(saved == zStatus_Success, sound) << failure::detailOf(saved);
        if (saved != zStatus_Success) return Outcome::found;
        const ArchiveHandle again;
        EXPECT_EQ(zArchive_Load(again.get(), scratch.path("saved.zip").c_str()), zStatus_Success);
        EXPECT_TRUE(showsTheSame(again.get(), contents));
        return Outcome::unnoticed;
    }

    /// False when a member says that it is damaged; anything else than the content before fails the test.
    static bool showsTheSame(zHandle archive, const std::vector<Content>& contents) {
        bool sound = true;
        for (const Content& content : contents) {
            std::int64_t index = 0;
            const zStatus status = zArchive_Find(archive, content.name.c_str(), &index);
            if (status == zStatus_Malformed) {
                sound = false;
            } else if (content.bytes) {
                EXPECT_EQ(contentOf(archive, content.name), *content.bytes);
            } else {
                EXPECT_EQ(status, zStatus_Unsupported);
            }
        }
        return sound;
    }

    /// Applies every change of one bit.
    void damageEverywhere(const ZipImage& image, const std::vector<Content>& contents) {
        const std::string sound = image.bytes();
        ASSERT_EQ(judge(sound, contents), Outcome::unnoticed);
        int noticed = 0;
        int tried = 0;
        for (std::size_t at = 0; at < sound.size(); at += oneIn) {
            for (int bit = 0; bit < 8; ++bit) {
                const char byte = static_cast<char>(sound[at] ^ 1 << bit);
                SCOPED_TRACE("byte " + std::to_string(at) + " made " + std::to_string(byte & 0xFF));
                std::string damaged = sound;
                damaged[at] = byte;
                noticed += judge(damaged, contents) != Outcome::unnoticed;
                ++tried;
            }
        }
        // What may change unseen is little: versions, attributes, comments, bytes of unknown records.
        EXPECT_GT(noticed, tried * 6 / 10) << tried;
    }

    const std::string text = "text that repeats text";
};

TEST_F(Damage, toStoredMembersIsNeverPassedOn) {
    damageEverywhere({.members = {stored("a", "content"), stored("dir/", "")}},
                     {{"a", "content"}, {"dir/", ""}});
}

TEST_F(Damage, toDeflatedMembersIsNeverPassedOn) {
    DeflateStream stream;
    stream.header(true, DeflateStream::fixedType).fixedLiterals(text.substr(0, 18));
    stream.fixedSymbol(258).code(8, 5).bits(1, 3).fixedSymbol(256);  // four bytes from 18 before
    ASSERT_NO_FATAL_FAILURE(damageEverywhere(
        {.members = {packed("a", stream.bytes(), text), stored("b", "2")}}, {{"a", text}, {"b", "2"}}));
}

TEST_F(Damage, toDynamicBlocksIsNeverPassedOn) {
    DeflateStream stream;
    stream.dynamicHeader(lengthsOf("abc", 2), {0});
    for (const unsigned code : {0u, 1u, 2u, 0u, 3u}) stream.code(code, 2);
    damageEverywhere({.members = {packed("a", stream.bytes(), "abca")}}, {{"a", "abca"}});
}

TEST_F(Damage, toDataDescriptorsIsNeverPassedOn) {
    damageEverywhere({.members = {streamed(stored("a", "content")), streamed(deflated("b", "c"), 8, false)}},
                     {{"a", "content"}, {"b", "c"}});
}

TEST_F(Damage, toZip64RecordsIsNeverPassedOn) {
    ZipMember wide = stored("a", "content");
    wide.both([](ZipFields& fields) {
        fields.extra = extraRecord(zip64Id, number(7, 8) + number(7, 8));
        fields.size = fields.compressedSize = allOnes32;
    });
    ZipImage image{.members = {wide, stored("b", "2")}};
    image.zip64.emplace();
    image.end = {.countHere = allOnes16, .count = allOnes16, .directoryOffset = allOnes32};
    damageEverywhere(image, {{"a", "content"}, {"b", "2"}});
}

TEST_F(Damage, besideMembersThatAreNotReadIsNeverPassedOn) {
    ZipMember encrypted = stored("secret", "????????????????");
    encrypted.both([](ZipFields& fields) { fields.flags = encryptedFlag; });
    damageEverywhere({.members = {stored("a", "content"), encrypted}, .comment = "comment"},
                     {{"a", "content"}, {"secret", std::nullopt}});
}

}  // namespace
