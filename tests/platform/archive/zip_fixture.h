#pragma once

#include <gmock/gmock.h>

#include <string>

#include "platform/archive/archive.h"
#include "platform/base/failure.h"
#include "tests/platform/archive/archive_handle.h"
#include "tests/platform/archive/zip_image.h"
#include "tests/testing/scratch_directory.h"

namespace testing {

/// Loads and saves ZIP files in a directory of its own.
class ZipTest : public Test {
  protected:
    std::string write(const ZipImage& image, const std::string& name = "a.zip") {
        return scratch.write(name, image.bytes());
    }

    /// The detail that `status` has left, without the path of "a.zip" in front; fails the test when it does
    /// not begin with that.
    std::string detail(zStatus status) {
        const std::string whole(failure::detailOf(status));
        const std::string path = scratch.path("a.zip") + ": ";
        if (whole.starts_with(path)) return whole.substr(path.size());
        ADD_FAILURE() << "no path in front of: " << whole;
        return whole;
    }

    /// Why the file is no container; "loads" when it is one.
    std::string refusal(const std::string& bytes) {
        const ArchiveHandle archive;
        const zStatus status = zArchive_Load(archive.get(), scratch.write("a.zip", bytes).c_str());
        if (status == zStatus_Success) return "loads";
        EXPECT_EQ(status, zStatus_Malformed);
        return detail(status);
    }
    std::string refusal(const ZipImage& image) { return refusal(image.bytes()); }

    /// Why the container, which loads, cannot be saved; "saves" when it can. A failed save leaves nothing.
    std::string saveRefusal(const ZipImage& image) {
        const ArchiveHandle archive;
        EXPECT_EQ(zArchive_Load(archive.get(), write(image).c_str()), zStatus_Success);
        const zStatus status = zArchive_Save(archive.get(), scratch.path("refused.zip").c_str());
        if (status == zStatus_Success) return "saves";
        EXPECT_EQ(status, zStatus_Malformed);
        EXPECT_THAT(scratch.entries(), Each(AnyOf("a.zip", "saved.zip")));
        return detail(status);
    }

    /// Loads `image` and answers the bytes that a save writes.
    std::string resaved(const ZipImage& image) {
        const ArchiveHandle archive;
        EXPECT_EQ(zArchive_Load(archive.get(), write(image).c_str()), zStatus_Success)
            << failure::detailOf(zStatus_Malformed);
        EXPECT_EQ(zArchive_Save(archive.get(), scratch.path("saved.zip").c_str()), zStatus_Success)
            << failure::detailOf(zStatus_Malformed);
        return scratch.read("saved.zip");
    }

    ScratchDirectory scratch;
};

/// The bytes of the member `name`; its absence or its being damaged fails the test.
inline std::string contentOf(zHandle archive, const std::string& name) {
    std::int64_t index = 0;
    const zStatus status = zArchive_Find(archive, name.c_str(), &index);
    EXPECT_EQ(status, zStatus_Success) << name << ": " << failure::detailOf(status);
    if (status != zStatus_Success) return {};
    return {static_cast<const char*>(zArchive_FileData(archive, index)),
            static_cast<std::size_t>(zArchive_FileSize(archive, index))};
}

}  // namespace testing
