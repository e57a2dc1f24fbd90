// A whole batch within this process: an archive, a package and a configuration made from the input, the
// program's own entry point, and then the promises that hold for every input. The archive that was read keeps
// its bytes; status and messages agree; nothing is left behind but a result, which loads, names its platform,
// and comes out the same when the run is repeated.
//
// An input has five sections with a line "====" between them: a byte for the platform, configuration,
// manifest of the package, start-up script (or a whole archive, when it begins with "PK"), unified manifest.

#include <filesystem>
#include <memory>
#include <utility>

#include "TaVekUtil/archive/archive_probes.h"
#include "TaVekUtil/batch/run.h"
#include "platform/archive/archive.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/testing/scratch_directory.h"

namespace {

using fuzz::require;

constexpr const char* platforms[] = {"all", "linux_arm7", "linux_arm64", "ombix", "win"};
constexpr const char* failureLine = "TaVekUtil: Failed updating upgrade packages using configuration file: ";

void saveArchive(const std::string& path, const std::string& script, const std::string& manifest) {
    Ta::Object<void*> archive;
    const auto add = [&](const char* name, const std::string& content) {
        require(zArchive_AddData(archive.get(), content.data(), content.size(), name, 0) == zStatus_Success,
                "no member");
    };
    require(zArchive_Construct(archive.out(), nullptr) == zStatus_Success, "no container");
    add("host/app", "the host's own");
    add("script.xml", script);
    if (!manifest.empty()) add("vekPackages.xml", manifest);
    require(zArchive_Save(archive.get(), path.c_str()) == zStatus_Success, "no archive");
}

/// True when no path of the input can leave the working directory, however it is spelt.
bool staysInside(const std::vector<std::string>& parts) {
    for (const std::string& part : {parts[1], parts[2], parts[4]}) {
        if (part.find("..") != std::string::npos || part.find("&#") != std::string::npos ||
            part.find('\0') != std::string::npos)
            return false;
    }
    return true;
}

/// True when the configuration names no absolute path, does not call for tar, and has an archive to process.
bool isHarmless(const std::string& configuration) {
    Ta::Object<void*> document;
    if (zXml_LoadBytes(document.out(), configuration.data(), configuration.size(), nullptr) !=
        zStatus_Success)
        return true;
    const zHandle handle = document.get();
    bool hasStock = fuzz::childNamed(handle, zXml_Root(handle), "OutputPrefix") == nullptr;
    for (zXmlItem group : fuzz::children(handle, zXml_Root(handle))) {
        std::vector<zXmlItem> items = fuzz::children(handle, group);
        items.push_back(group);
        for (zXmlItem item : items) {
            const auto text = fuzz::itemText(handle, item, configuration.size() + 1);
            if (!text) return false;
            if (text->find(".tar") != std::string::npos || text->starts_with('/') || text->starts_with('\\'))
                return false;
        }
    }
    zXmlItem stock = fuzz::childNamed(handle, zXml_Root(handle), "StockPackages");
    if (stock == nullptr) return hasStock;
    for (zXmlItem item : fuzz::children(handle, stock)) {
        const auto text = fuzz::itemText(handle, item, configuration.size() + 1);
        hasStock = hasStock || (text && !text->empty());
    }
    return hasStock;
}

struct Outcome {
    int status = 0;
    std::string output, errors;
};

Outcome runOnce(const char* platform, const std::string& configuration) {
    const fuzz::Streams streams;
    const int status = TaVekUtil_Run(platform, configuration.c_str());
    return {status, streams.output.str(), streams.errors.str()};
}

/// Results that lie in the working directory, by name.
std::vector<std::string> results(const testing::ScratchDirectory& scratch) {
    std::vector<std::string> found;
    for (const std::string& name : scratch.entries()) {
        if (name != "sensor.pkg" && name != "package" && name != "cfg.xml" && name != "host") {
            require(!name.starts_with('.') || name.ends_with("sensor.pkg"),
                    "a temporary file was left behind");
            found.push_back(name);
        }
    }
    return found;
}

void checkResult(const std::string& path) {
    Ta::Object<void*> archive;
    require(zArchive_Construct(archive.out(), nullptr) == zStatus_Success, "no container");
    require(zArchive_Load(archive.get(), path.c_str()) == zStatus_Success, "a result does not load");
    try {
        require(!TaVekUtils_GetArchivePlatform(archive.get()).empty(), "a result without a platform");
    } catch (const Ta::Exception& exception) {
        require(exception.status() == zStatus_NotFound, exception.what());  // the last model name was removed
    }
    std::int64_t index = 0;
    require(zArchive_Find(archive.get(), "vekPackages.xml", &index) == zStatus_Success, "no manifest");
    Ta::Object<void*> manifest;
    require(zXml_LoadBytes(manifest.out(), zArchive_FileData(archive.get(), index),
                           zArchive_FileSize(archive.get(), index), nullptr) == zStatus_Success,
            "the manifest is no document");
}

void lay(const testing::ScratchDirectory& scratch, const std::vector<std::string>& parts) {
    for (const std::string& name : scratch.entries()) std::filesystem::remove_all(scratch.path(name));
    scratch.write("package/a.so", "file a");
    scratch.write("package/b", "file b");
    scratch.write("cfg.xml", parts[1]);
    scratch.write("package/vek_manifest.xml", parts[2]);
    scratch.write("host/bin/win64/TaQor.exe", "no executable");
    if (!parts[4].empty()) scratch.write("host/vekPackages.xml", parts[4]);
    if (parts[3].starts_with("PK")) {
        scratch.write("sensor.pkg", parts[3]);
    } else {
        saveArchive(scratch.path("sensor.pkg"), parts[3], parts[4]);
    }
}

using Files = std::vector<std::pair<std::string, std::string>>;

/// What a run has written, each result checked.
Files writtenBy(const testing::ScratchDirectory& scratch) {
    Files written;
    for (const std::string& name : results(scratch)) {
        if (!std::filesystem::is_regular_file(scratch.path(name))) continue;
        checkResult(scratch.path(name));
        written.emplace_back(name, scratch.read(name));
    }
    return written;
}

/// A new scratch directory as the working directory.
std::unique_ptr<testing::ScratchDirectory> workingDirectory() {
    auto scratch = std::make_unique<testing::ScratchDirectory>();
    std::filesystem::current_path(scratch->path());
    return scratch;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto parts = fuzz::sections({reinterpret_cast<const char*>(data), size}, 5);
    if (parts[0].empty() || !staysInside(parts) || !isHarmless(parts[1])) return 0;
    static const auto scratch = workingDirectory();
    const char* platform = platforms[static_cast<unsigned char>(parts[0][0]) % std::size(platforms)];
    const std::string configuration = scratch->path("cfg.xml");

    lay(*scratch, parts);
    const std::string input = scratch->read("sensor.pkg");
    const Outcome first = runOnce(platform, configuration);
    require(first.status == 0 || first.status == 1, "another status");
    require((first.status == 1) == (first.errors.find(failureLine) != std::string::npos),
            "status and message disagree");
    require(scratch->read("sensor.pkg") == input, "the input archive was changed");
    const Files written = writtenBy(*scratch);

    lay(*scratch, parts);
    const Outcome second = runOnce(platform, configuration);
    require(second.status == first.status && second.output == first.output && second.errors == first.errors,
            "a second run says something else");
    require(writtenBy(*scratch) == written, "a second run writes other bytes");
    return 0;
}
