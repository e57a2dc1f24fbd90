#include "platform/archive/zip_writer.h"

#include "tests/platform/archive/zip_fixture.h"

// The bytes of what is written, down to every field.

namespace {

using namespace testing;

class ZipWriter : public ZipTest {
  protected:
    void add(const std::string& name, const std::string& content) {
        ASSERT_EQ(zArchive_AddData(archive.get(), content.data(), content.size(), name.c_str(), 0),
                  zStatus_Success);
    }
    std::string saved() {
        EXPECT_EQ(zArchive_Save(archive.get(), scratch.path("saved.zip").c_str()), zStatus_Success);
        return scratch.read("saved.zip");
    }
    const ArchiveHandle archive;
};

TEST_F(ZipWriter, writesEveryFieldOfAnAddedMember) {
    add("data/12345-a", "content");
    const std::string crc = number(crcOf("content"), 4);
    const std::string name = "data/12345-a";
    const std::string common = number(10, 2) +           // version needed: 1.0
                               number(0, 2) +            // flags
                               number(0, 2) +            // method: stored
                               number(0, 2) +            // time: 00:00:00
                               number(0x0021, 2) +       // date: 1980-01-01
                               crc + number(7, 4) +      // compressed size
                               number(7, 4) +            // size
                               number(name.size(), 2) +  // length of the name
                               number(0, 2);             // length of the extra field
    const std::string local = number(0x04034b50, 4) + common + name + "content";
    const std::string central = number(0x02014b50, 4) + number(45, 1) + number(3, 1) +  // made by: 4.5, Unix
                                common + number(0, 2) +      // length of the comment
                                number(0, 2) +               // disk
                                number(0, 2) +               // internal attributes
                                number(0100644u << 16, 4) +  // external attributes
                                number(0, 4) +               // offset
                                name;
    const std::string end = number(0x06054b50, 4) + number(0, 2) + number(0, 2) +  // disks
                            number(1, 2) + number(1, 2) +                          // entries
                            number(central.size(), 4) + number(local.size(), 4) +  // directory
                            number(0, 2);                                          // length of the comment
    EXPECT_EQ(saved(), local + central + end);
}

TEST_F(ZipWriter, marksNamesThatAreNotAsciiAsUtf8) {
    for (const char* name : {"gr\xC3\xB6\xC3\x9F"
                             "e",
                             "\x7F", "ascii"})
        add(name, "");
    const std::string bytes = saved();
    const auto flagsOf = [&bytes](const std::string& name) {
        return static_cast<unsigned char>(bytes[bytes.find(name) - 30 + 7]);
    };
    EXPECT_EQ(flagsOf("gr\xC3\xB6"), 0x08);
    EXPECT_EQ(flagsOf("\x7F"), 0);
    EXPECT_EQ(flagsOf("ascii"), 0);
}

TEST_F(ZipWriter, countsUpTo65534MembersWithoutZip64) {
    for (int i = 0; i < 65'534; ++i) add(std::to_string(i), "");
    const std::string plain = saved();
    EXPECT_EQ(plain.substr(plain.size() - 14, 4), number(65'534, 2) + number(65'534, 2));
    EXPECT_NE(plain.substr(plain.size() - 42, 4), number(0x07064b50, 4));

    add("one more", "");
    const std::string wide = saved();
    const std::string end = wide.substr(wide.size() - 22);
    const std::size_t size = plain.size() - 22 + 30 + 46 + 2 * 8;  // up to the end of the directory
    const std::string directoryOffset = end.substr(16, 4), directorySize = end.substr(12, 4);
    const std::string record = number(0x06064b50, 4) + number(44, 8) + number(0x032D, 2) + number(45, 2) +
                               number(0, 4) + number(0, 4) + number(65'535, 8) + number(65'535, 8) +
                               directorySize + number(0, 4) + directoryOffset + number(0, 4);
    const std::string locator = number(0x07064b50, 4) + number(0, 4) + number(size, 8) + number(1, 4);
    ASSERT_EQ(wide.size(), size + record.size() + locator.size() + 22);
    EXPECT_EQ(wide.substr(size, record.size() + locator.size()), record + locator);
    EXPECT_EQ(end.substr(0, 12),
              number(0x06054b50, 4) + number(0, 4) + number(0xFFFF, 2) + number(0xFFFF, 2));

    const ArchiveHandle again;
    ASSERT_EQ(zArchive_Load(again.get(), scratch.path("saved.zip").c_str()), zStatus_Success);
    EXPECT_EQ(contentOf(again.get(), "one more"), "");
}

TEST_F(ZipWriter, carriesEveryFieldOfAMember) {
    ZipMember odd = stored("odd", "content");
    odd.madeBy = 0xFFFF;
    odd.internal = 0xFFFF;
    odd.external = 0xFFFFFFFF;
    odd.comment = "comment";
    odd.both([](ZipFields& fields) {
        fields.flags = utf8Flag | 0x06;
        fields.time = 0xFFFFFFFF;
    });
    odd.local.needed = 20;
    odd.central.needed = 63;
    odd.local.extra = extraRecord(0x5455, "local") + std::string(3, '\0');
    odd.central.extra = extraRecord(0x7875, "central");
    const ZipImage image{.members = {stored("a", ""), odd}};
    EXPECT_EQ(resaved(image), image.bytes());

    // Moved to the front, only its offset is another.
    ASSERT_EQ(zArchive_Load(archive.get(), scratch.path("a.zip").c_str()), zStatus_Success);
    ASSERT_EQ(zArchive_DeleteFile(archive.get(), "a"), zStatus_Success);
    EXPECT_EQ(saved(), (ZipImage{.members = {odd}}.bytes()));
}

}  // namespace
