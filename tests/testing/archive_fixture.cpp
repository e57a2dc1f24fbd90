#include "tests/testing/archive_fixture.h"

#include <gtest/gtest.h>

#include "platform/archive/archive.h"
#include "tests/testing/scratch_directory.h"

namespace testing {
namespace {

/// Keeps the archive library alive while the tests run.
class ArchiveLibrary : public Environment {
  public:
    void SetUp() override { ASSERT_EQ(zTdLib_Construct(&library_), zStatus_Success); }
    void TearDown() override { EXPECT_EQ(zObject_Destroy(library_), zStatus_Success); }

  private:
    zHandle library_ = nullptr;
};

[[maybe_unused]] Environment* const archiveLibrary = AddGlobalTestEnvironment(new ArchiveLibrary);

std::size_t number(const std::string& bytes, std::size_t offset, std::size_t width) {
    std::size_t value = 0;
    for (std::size_t i = width; i > 0; --i) {
        value = value << 8 | static_cast<unsigned char>(bytes.at(offset + i - 1));
    }
    return value;
}

/// The names in the central directory of a ZIP file without a comment.
std::vector<std::string> listedNames(const std::string& file) {
    constexpr std::size_t endSize = 22;
    std::vector<std::string> names;
    if (file.size() < endSize) {
        ADD_FAILURE() << "no container";
        return names;
    }
    const std::size_t end = file.size() - endSize;
    std::size_t entry = number(file, end + 16, 4);
    for (std::size_t left = number(file, end + 10, 2); left > 0; --left) {
        const std::size_t nameSize = number(file, entry + 28, 2);
        names.push_back(file.substr(entry + 46, nameSize));
        entry += 46 + nameSize + number(file, entry + 30, 2) + number(file, entry + 32, 2);
    }
    return names;
}

}  // namespace

Ta::Object<void*> container(const std::vector<Member>& members) {
    Ta::Object<void*> archive;
    EXPECT_EQ(zArchive_Construct(archive.out(), nullptr), zStatus_Success);
    for (const Member& member : members) {
        EXPECT_EQ(zArchive_AddData(archive.get(), member.content.data(), member.content.size(),
                                   member.name.c_str(), 0),
                  zStatus_Success)
            << member.name;
    }
    return archive;
}

std::string writeArchive(const std::string& path, const std::vector<Member>& members) {
    EXPECT_EQ(zArchive_Save(container(members).get(), path.c_str()), zStatus_Success) << path;
    return path;
}

Ta::Object<void*> loadArchive(const std::string& path) {
    Ta::Object<void*> archive = container({});
    EXPECT_EQ(zArchive_Load(archive.get(), path.c_str()), zStatus_Success) << path;
    return archive;
}

bool hasMember(zHandle archive, const std::string& name) {
    std::int64_t index = 0;
    return zArchive_Find(archive, name.c_str(), &index) == zStatus_Success;
}

std::string memberContent(zHandle archive, const std::string& name) {
    std::int64_t index = 0;
    if (zArchive_Find(archive, name.c_str(), &index) != zStatus_Success) {
        ADD_FAILURE() << "no member " << name;
        return {};
    }
    return {static_cast<const char*>(zArchive_FileData(archive, index)),
            static_cast<std::size_t>(zArchive_FileSize(archive, index))};
}

std::string memberContent(const std::string& path, const std::string& name) {
    return memberContent(loadArchive(path).get(), name);
}

std::vector<std::string> memberNames(const std::string& path) {
    return listedNames(readFile(path));
}

std::vector<std::string> memberNames(zHandle archive) {
    return listedNames(savedBytes(archive));
}

std::string savedBytes(zHandle archive) {
    const ScratchDirectory scratch;
    EXPECT_EQ(zArchive_Save(archive, scratch.path("saved").c_str()), zStatus_Success);
    return scratch.read("saved");
}

}  // namespace testing
