#include "tests/testing/package_fixture.h"

#include "tests/testing/xml_fixture.h"

namespace testing {
namespace {

template <std::size_t Capacity>
void put(Ta::Text<Capacity>& text, const std::string& value) {
    static_cast<void>(zStrCopy(text.data(), text.capacity(), value.c_str()));
}

}  // namespace

std::string packageManifest(const MadeUpPackage& package) {
    std::string text = "<VekAppPackage><BeVersion>" + package.beVersion + "</BeVersion><VekApp name=\"" +
                       package.name + "\">";
    std::string platform;
    for (const MadeUpFile& file : package.files) {
        if (file.platform != platform) {
            if (!platform.empty()) text += "</Platform>";
            text += "<Platform name=\"" + file.platform + "\">";
            platform = file.platform;
        }
        text += "<File type=\"" + file.type + "\"><Source>" + file.source + "</Source><Destination>" +
                file.destination + "</Destination></File>";
    }
    if (!platform.empty()) text += "</Platform>";
    return text + "</VekApp></VekAppPackage>";
}

std::string writePackage(const ScratchDirectory& scratch, const std::string& name,
                         const MadeUpPackage& package) {
    for (const MadeUpFile& file : package.files) scratch.write(name + '/' + file.source, file.content);
    scratch.write(name + "/vek_manifest.xml", packageManifest(package));
    return scratch.path(name);
}

AddonPackage loadedPackage(const ScratchDirectory& scratch, const std::string& name,
                           const MadeUpPackage& package) {
    const std::string directory = writePackage(scratch, name, package);
    AddonPackage loaded;
    put(loaded.beVersion, package.beVersion);
    put(loaded.name, package.name);
    for (const MadeUpFile& wanted : package.files) {
        PackageFile file;
        put(file.platform, wanted.platform);
        put(file.type, wanted.type);
        put(file.source, wanted.source);
        put(file.destination, wanted.destination);
        put(file.path, directory + '/' + wanted.source);
        loaded.files.push_back(file);
    }
    loaded.manifest = document(packageManifest(package));
    return loaded;
}

}  // namespace testing
