// Loads any bytes as the manifest of an add-on package, and merges the package into a unified manifest. What
// is loaded must be what a plain walk over the document finds; merging must succeed where it can, copy as
// many entries as there are, and change nothing when it is done again.
//
// The first byte of the input chooses the platform of the run.

#include "TaVekUtil/archive/unified_manifest.h"
#include "TaVekUtil/batch/package_loading.h"
#include "platform/os/os.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_tree.h"

namespace {

using fuzz::attribute;
using fuzz::childNamed;
using fuzz::children;
using fuzz::itemText;
using fuzz::MaybeText;
using fuzz::require;

constexpr const char* platforms[] = {"all", "linux_arm7", "linux_arm64", "ombix", "win"};

struct PlainFile {
    std::string platform, type, source, destination, path;
};

struct PlainPackage {
    std::string version, name;
    std::vector<PlainFile> files;
};

MaybeText childText(zHandle document, zXmlItem item, const char* name, std::size_t capacity) {
    zXmlItem child = childNamed(document, item, name);
    return child == nullptr ? std::nullopt : itemText(document, child, capacity);
}

/// False when one of the platform element's files cannot be read.
bool walkFiles(zHandle document, zXmlItem group, const std::string& platform, const std::string& directory,
               PlainPackage& package) {
    for (zXmlItem item : children(document, group)) {
        const MaybeText type = attribute(document, item, "type", 32);
        const MaybeText source = childText(document, item, "Source", 512);
        const MaybeText destination = childText(document, item, "Destination", 512);
        if (!type || !source || !destination) return false;
        const std::size_t begin = source->find_first_not_of("/\\");
        const std::string below = begin == std::string::npos ? "" : source->substr(begin);
        const std::string path = source->empty() ? directory : directory + os::pathSeparator + below;
        if (path.size() >= 512) return false;
        package.files.push_back({platform.substr(0, 31), *type, *source, *destination, path});
    }
    return true;
}

/// What loading must find; nothing when it must fail.
std::optional<PlainPackage> walk(zHandle document, const std::string& selected,
                                 const std::string& directory) {
    zXmlItem root = zXml_Root(document);
    zXmlItem app = childNamed(document, root, "VekApp");
    const MaybeText version = childText(document, root, "BeVersion", 32);
    const MaybeText name = app == nullptr ? std::nullopt : attribute(document, app, "name", 256);
    if (!version || !name) return std::nullopt;

    PlainPackage package{*version, *name, {}};
    for (zXmlItem group : children(document, app)) {
        const MaybeText platform = attribute(document, group, "name", 512);
        if (!platform) return std::nullopt;
        if (selected != "all" && selected != *platform) continue;
        if (!walkFiles(document, group, *platform, directory, package)) return std::nullopt;
    }
    return package;
}

bool sameFile(const PackageFile& loaded, const PlainFile& plain) {
    return loaded.platform.c_str() == plain.platform && loaded.type.c_str() == plain.type &&
           loaded.source.c_str() == plain.source && loaded.destination.c_str() == plain.destination &&
           loaded.path.c_str() == plain.path;
}

void compare(const std::vector<AddonPackage>& loaded, const PlainPackage& plain) {
    require(loaded.size() == (plain.files.empty() ? 0 : 1), "packages lost or made up");
    if (loaded.empty()) return;
    const AddonPackage& package = loaded.front();
    require(package.beVersion.c_str() == plain.version && package.name.c_str() == plain.name, "other head");
    require(package.files.size() == plain.files.size(), "files lost or made up");
    for (std::size_t i = 0; i < plain.files.size(); ++i)
        require(sameFile(package.files[i], plain.files[i]), "a file reads otherwise");
}

std::size_t entriesFor(zHandle document, zXmlItem app, std::string_view platform) {
    std::size_t count = 0;
    for (zXmlItem group : children(document, app)) {
        const MaybeText name = attribute(document, group, "name", 32);
        if (name && name->starts_with(platform)) count += children(document, group).size();
    }
    return count;
}

void checkMerge(zHandle package, const char* platform) {
    Ta::Object<void*> manifest;
    require(zXml_FromText(manifest.out(), "<VekAppPackage>\n\t<BeVersion>1</BeVersion>\n</VekAppPackage>\n",
                          nullptr) == zStatus_Success,
            "no manifest");
    zXmlItem app = childNamed(package, zXml_Root(package), "VekApp");
    const bool isRooted = std::string_view(zXml_ItemName(package, zXml_Root(package))) == "VekAppPackage";
    const MaybeText name = app == nullptr ? std::nullopt : attribute(package, app, "name", 128);

    const zStatus status = TaVekUtils_MergeVekApp(package, manifest.get(), platform);
    const bool isTold = isRooted && name.has_value();
    // The manifest is UTF-8, which holds every name and comment, so nothing else can fail.
    require((status == zStatus_Success) == isTold, "merging answers otherwise than it should");
    if (!isTold) return;

    const auto entries = children(manifest.get(), zXml_Root(manifest.get()));
    require(entries.size() == 2, "not one entry more");
    require(attribute(manifest.get(), entries[1], "name", 128) == name, "an entry of another name");
    require(children(manifest.get(), entries[1]).size() == entriesFor(package, app, platform),
            "entries lost or made up");
    const std::string once = testing::writtenBytes(manifest.get());
    require(TaVekUtils_MergeVekApp(package, manifest.get(), platform) == zStatus_Success, "no second merge");
    require(testing::writtenBytes(manifest.get()) == once, "a second merge changes something");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static const testing::ScratchDirectory scratch;
    const char* platform = platforms[data[0] % std::size(platforms)];
    scratch.write("package/vek_manifest.xml", {reinterpret_cast<const char*>(data + 1), size - 1});

    const fuzz::Streams streams;
    BuildConfig config;
    static_cast<void>(zStrCopy(config.platform.data(), config.platform.capacity(), platform));
    config.vekPkgsToLoad = {scratch.path("package")};
    Ta::Object<void*> document;
    const bool isDocument = zXml_LoadBytes(document.out(), data + 1, size - 1, nullptr) == zStatus_Success;
    const auto plain = isDocument ? walk(document.get(), platform, scratch.path("package")) : std::nullopt;
    try {
        TaVekUtil_Load_VekPkg_Manifest(config);
        require(plain.has_value(), "loads what it should refuse");
        compare(config.addonPackages, *plain);
    } catch (const Ta::Exception& exception) {
        require(!plain.has_value(), exception.what());
        require(streams.errors.str().ends_with(
                    "TaVekUtil: Failed to load vek manifest file from vek package(s).\n"),
                "fails without its line");
    }
    if (isDocument) checkMerge(document.get(), data[0] % 2 == 0 ? "linux_arm7" : "win");
    return 0;
}
