#include "TaVekUtil/edit/startup_script.h"

#include <cstring>
#include <iostream>

#include "TaVekUtil/archive/archive_probes.h"
#include "platform/base/file.h"
#include "platform/base/text.h"

namespace {

/// Puts the script back as the last member, as an edit of its bytes would.
void writeScript(const std::shared_ptr<StartupScript>& script, zHandle archive, const char* operation) {
    Ta::Check(zArchive_DeleteFile(archive, scriptMemberName), operation);
    Ta::Check(zArchive_AddLive(archive, script, scriptMemberName), operation);
}

void addController(zHandle document, zXmlItem parent, const std::string& controller, const char* operation) {
    zXmlItem model = nullptr;
    Ta::Check(zXml_AddItem(document, parent, "Eq", &model), operation);
    Ta::Check(zXml_SetAttrText(document, model, "property", "Controller"), operation);
    Ta::Check(zXml_SetAttrText(document, model, "value", controller.c_str()), operation);
}

void addEntry(StartupScript& script, const char* name, const char* source,
              const std::vector<std::string>& controllers, const char* operation) {
    const zHandle document = script.document();
    zXmlItem file = nullptr;
    Ta::Check(zXml_AddItem(document, script.root(), "File", &file), operation);
    Ta::Check(zXml_SetAttrText(document, file, "name", name), operation);
    Ta::Check(zXml_SetAttrText(document, file, "source", source), operation);
    script.index().added(file);

    zXmlItem anyOf = nullptr;
    Ta::Check(zXml_AddItem(document, file, "Or", &anyOf), operation);
    for (const std::string& controller : controllers) addController(document, anyOf, controller, operation);
}

/// True when `archive` holds a member `name` of just these bytes.
bool holds(zHandle archive, const char* name, const Ta::Buffer& bytes) {
    std::int64_t index = 0;
    return zArchive_Find(archive, name, &index) == zStatus_Success &&
           zArchive_FileSize(archive, index) == bytes.byteCount() &&
           std::memcmp(zArchive_FileData(archive, index), bytes.bytes(), bytes.byteCount()) == 0;
}

/// Stores the bytes as member `name`. Files of one name share a member, which is right as long as they are
/// the same; other bytes under a taken name fail, for the sensor would install one file in the other's place.
void addMember(zHandle archive, const char* name, const Ta::Buffer& bytes, const char* operation) {
    if (holds(archive, name, bytes)) return;
    Ta::Check(zArchive_AddData(archive, bytes.bytes(), bytes.byteCount(), name, 0), operation);
}

void injectFile(const char* filePath, const char* source, const char* name,
                const std::vector<std::string>& controllers, zHandle archive) {
    constexpr const char* operation = "TaVekUtil_InjectFile";
    const auto script = StartupScript::of(archive, operation);
    Ta::Buffer file;
    Ta::Check(zFile_Load(filePath, file.data(), file.size(), nullptr), operation);
    Ta::Check(TaVekUtil_DeletePreviousFiles(*script, archive, name, true), operation);
    addEntry(*script, name, source, controllers, operation);
    writeScript(script, archive, operation);
    addMember(archive, source, file, operation);
}

void deleteItem(StartupScript& script, zXmlItem item, const char* operation) {
    script.index().removed(item);
    Ta::Check(zXml_DeleteItem(script.document(), item), operation);
}

}  // namespace

StartupScript::StartupScript(Ta::Object<void*> document)
    : document_(std::move(document)), index_(document_.get()) {}

std::shared_ptr<StartupScript> StartupScript::of(zHandle archive, const char* operation) {
    const std::shared_ptr<LiveContent> live = zArchive_Live(archive, scriptMemberName);
    if (auto script = std::dynamic_pointer_cast<StartupScript>(live)) return script;
    return std::shared_ptr<StartupScript>(new StartupScript(parseScript(archive, operation)));
}

zStatus StartupScript::serialise(std::string& bytes) const {
    Ta::Buffer buffer;
    const zStatus status = zXml_SaveBytes(document(), buffer.data(), buffer.size(), nullptr);
    if (status == zStatus_Success) bytes.assign(static_cast<const char*>(buffer.bytes()), buffer.byteCount());
    return status;
}

void TaVekUtil_InjectFile(const char* filePath, const char* source, const char* name,
                          const std::vector<std::string>& controllers, zHandle archive) {
    try {
        injectFile(filePath, source, name, controllers, archive);
    } catch (...) {
        std::cerr << "TaVekUtil: Failed injecting files into upgrade package." << std::endl;
        throw;
    }
}

zStatus TaVekUtil_DeletePreviousFiles(StartupScript& script, zHandle archive, const char* name,
                                      bool ignoreCase) {
    constexpr const char* operation = "TaVekUtil_DeletePreviousFiles";
    const zHandle document = script.document();
    if (script.index().firstFile() == nullptr) {
        // There is none; the search that finds none says so in its own words.
        zXmlItem none = nullptr;
        Ta::Check(zXml_FindChild(document, script.root(), "File", &none), operation);
    }

    std::vector<zXmlItem> previous;
    // Whatever its element name, an element behind the first File is taken for an entry when its name
    // matches.
    for (zXmlItem entry : script.index().namedFromFirstFile(name)) {
        Ta::PathText entryName;
        Ta::PathText source;
        const zStatus named = zXml_AttrText(document, entry, "name", entryName.data(), entryName.capacity());
        if (named != zStatus_Success || (!ignoreCase && !zStrEquals(entryName.c_str(), name))) continue;
        if (zXml_AttrText(document, entry, "source", source.data(), source.capacity()) != zStatus_Success)
            continue;
        Ta::Check(zArchive_DeleteFile(archive, source.c_str()), operation);
        previous.push_back(entry);
    }
    for (zXmlItem entry : previous) deleteItem(script, entry, operation);
    return zStatus_Success;
}

void TaVekUtils_ScriptXmlRemoveAndGetSource(zHandle archive, const char* name, char* sourceOut,
                                            std::size_t sourceCapacity, const zAllocator*) {
    constexpr const char* operation = "TaVekUtils_ScriptXmlRemoveAndGetSource";
    // Both texts are shorter here than in injection; a longer name ends the removal instead of being skipped.
    Ta::Text<ScriptIndex::removalNameCapacity> entryName;
    Ta::Text<256> source;
    const auto script = StartupScript::of(archive, operation);
    const zHandle document = script->document();

    if (zXmlItem entry = script->index().fileSearchStop(name)) {
        Ta::Check(zXml_AttrText(document, entry, "name", entryName.data(), entryName.capacity()), operation);
        Ta::Check(zXml_AttrText(document, entry, "source", source.data(), source.capacity()), operation);
        Ta::Check(zStrCopy(sourceOut, sourceCapacity, source.c_str()), operation);
        deleteItem(*script, entry, operation);
    }
    writeScript(script, archive, operation);
}
