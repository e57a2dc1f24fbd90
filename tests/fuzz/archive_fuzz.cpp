// Loads any bytes as a container. One that loads is looked into, edited, saved and loaded again: every member
// that could be read must read the same afterwards, one that could not must not read then either, a damaged
// one must have stopped the save, and a second save must give the same bytes.

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/archive/archive.h"
#include "platform/archive/codec.h"
#include "platform/base/failure.h"
#include "tests/fuzz/require.h"
#include "tests/testing/scratch_directory.h"

namespace {

using fuzz::require;

struct Holder {
    Holder() { require(zArchive_Construct(&handle, nullptr) == zStatus_Success); }
    ~Holder() { require(zObject_Destroy(handle) == zStatus_Success); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    zHandle handle = nullptr;
};

std::vector<std::string> namesIn(const std::string& path) {
    MemberTable members;
    const std::unique_ptr<Codec> codec = makeZipCodec();
    require(codec->load(path, members) == zStatus_Success);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < members.places(); ++i) names.emplace_back(members.nameOf(*members.at(i)));
    return names;
}

/// What looking into a member gives: its bytes, or why there are none.
struct Seen {
    zStatus status = zStatus_Success;
    std::string bytes;
    bool operator==(const Seen&) const = default;
};

Seen contentOf(zHandle archive, const std::string& name) {
    std::int64_t index = 0;
    const zStatus status = zArchive_Find(archive, name.c_str(), &index);
    if (status != zStatus_Success) {
        require(status == zStatus_Malformed || status == zStatus_Unsupported);
        require(!failure::detailOf(status).empty());
        return {status, {}};
    }
    const char* bytes = static_cast<const char*>(zArchive_FileData(archive, index));
    const auto size = static_cast<std::size_t>(zArchive_FileSize(archive, index));
    require(bytes[size] == 0);
    return {zStatus_Success, std::string(bytes, size)};
}

using Contents = std::vector<Seen>;

Contents contentsOf(zHandle archive, const std::vector<std::string>& names) {
    Contents contents;
    for (const std::string& name : names) contents.push_back(contentOf(archive, name));
    return contents;
}

void edit(zHandle archive, std::vector<std::string>& names, Contents& contents) {
    static const std::string added("added\0by the test", 17);
    if (names.size() > 1) {
        require(zArchive_DeleteFile(archive, names.front().c_str()) == zStatus_Success);
        names.erase(names.begin());
        contents.erase(contents.begin());
    }
    const std::string name = "\xC3\xA4";
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] != name) continue;
        require(zArchive_AddData(archive, "", 0, name.c_str(), 0) == zStatus_BadArgument);
        return;
    }
    require(zArchive_AddData(archive, added.data(), added.size(), name.c_str(), 0) == zStatus_Success);
    names.push_back(name);
    contents.push_back({zStatus_Success, added});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const testing::ScratchDirectory scratch;
    const std::string path = scratch.write("input", {reinterpret_cast<const char*>(data), size});
    const Holder original;
    const zStatus loaded = zArchive_Load(original.handle, path.c_str());
    if (loaded != zStatus_Success) {
        require(loaded == zStatus_Malformed && failure::detailOf(loaded).starts_with(path + ": "));
        return 0;
    }
    std::vector<std::string> names = namesIn(path);
    Contents contents = contentsOf(original.handle, names);
    edit(original.handle, names, contents);

    const bool isDamaged = std::any_of(contents.begin(), contents.end(), [](const Seen& content) {
        return content.status == zStatus_Malformed;
    });
    const std::string saved = scratch.write("saved", "before");
    const zStatus status = zArchive_Save(original.handle, saved.c_str());
    require(status == (isDamaged ? zStatus_Malformed : zStatus_Success));
    if (isDamaged) {
        require(scratch.read("saved") == "before");
        return 0;
    }
    const Holder again;
    require(zArchive_Load(again.handle, saved.c_str()) == zStatus_Success);
    require(namesIn(saved) == names);
    require(contentsOf(again.handle, names) == contents);

    const std::string bytes = scratch.read("saved");
    require(zArchive_Save(again.handle, saved.c_str()) == zStatus_Success);
    require(scratch.read("saved") == bytes);
    require(contentsOf(again.handle, names) == contents);
    return 0;
}
