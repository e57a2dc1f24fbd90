#include "TaVekUtil/archive/archive_probes.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "TaVekUtil/archive/host_version.h"
#include "TaVekUtil/cli/controller_names.h"
#include "platform/archive/archive.h"
#include "platform/base/failure.h"
#include "platform/base/text.h"
#include "platform/os/os.h"
#include "platform/xml/xml.h"

namespace {

bool namesAny(std::string_view script, const std::vector<std::string>& controllers) {
    return std::any_of(controllers.begin(), controllers.end(),
                       [&](const std::string& name) { return script.find(name) != std::string_view::npos; });
}

bool existsAs(const std::string& path, os::FileType& type) {
    return !os::fileType(path, type) && type != os::FileType::absent;
}

}  // namespace

Ta::Object<void*> parseScript(zHandle archive, const char* operation) {
    std::int64_t index = 0;
    Ta::Check(zArchive_Find(archive, scriptMemberName, &index), operation);
    Ta::Object<void*> script;
    const std::size_t size = static_cast<std::size_t>(zArchive_FileSize(archive, index));
    const zStatus parsed = zXml_LoadBytes(script.out(), zArchive_FileData(archive, index), size, nullptr);
    Ta::Check(failure::within("script.xml:", parsed), operation);
    return script;
}

std::string TaVekUtils_GetArchivePlatform(zHandle archive) {
    std::int64_t index = 0;
    Ta::Check(zArchive_Find(archive, scriptMemberName, &index), "TaVekUtils_GetArchivePlatform");
    // A model name counts wherever it stands; the script ends at its first zero byte here.
    const std::string_view script = static_cast<const char*>(zArchive_FileData(archive, index));
    if (namesAny(script, Arm7ControllerNames)) return "linux_arm7";
    if (namesAny(script, OmbixControllerNames)) return "ombix";
    if (namesAny(script, Arm64ControllerNames)) return "linux_arm64";
    throw Ta::Exception(zStatus_NotFound, "Could not determine platform");
}

std::string TaVekUtils_GetArchiveVersion(zHandle archive) {
    constexpr const char* operation = "TaVekUtils_GetArchiveVersion";
    const Ta::Object<void*> script = parseScript(archive, operation);
    zXmlItem version = nullptr;
    if (zXml_FindChild(script.get(), zXml_Root(script.get()), "Version", &version) != zStatus_Success) {
        throw Ta::Exception(zStatus_Unestablished, "Could not retrieve Qor BE version");
    }
    Ta::Text<128> value;
    Ta::Check(zXml_AttrText(script.get(), version, "value", value.data(), value.capacity()), operation);
    return value.c_str();
}

bool isInstallationDirectory(std::string path) {
    os::FileType type{};
    if (!existsAs(path, type)) throw Ta::Exception(zStatus_NotFound, "Path not found: " + path);
    return type == os::FileType::directory && existsAs(path + hostExecutable, type);
}
