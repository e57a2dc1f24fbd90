#include "TaVekInspect/render/json_model.h"

#include "TaVekInspect/render/text.h"

void beginDocument(JsonWriter& json, const char* command) {
    json.object().value("format", "TaVekInspect").value("version", jsonFormatVersion);
    json.value("command", command);
}

void writeFindings(JsonWriter& json, const char* key, const Findings& findings) {
    json.array(key);
    for (const Finding& finding : findings) {
        const bool isError = finding.severity == Finding::Severity::error;
        json.object().value("severity", isError ? "error" : "warning").value("text", finding.text).end();
    }
    json.end();
}

void writeTexts(JsonWriter& json, const char* key, const std::vector<std::string>& texts) {
    json.array(key);
    for (const std::string& text : texts) json.item(text);
    json.end();
}

void writeMember(JsonWriter& json, const zMemberInfo& member) {
    json.value("name", member.name).value("size", member.size).value("packedSize", member.packedSize);
    json.value("method", std::uint64_t{member.method}).value("encrypted", member.encrypted);
    json.value("crc", crcText(member.crc)).value("date", timeText(member.time));
}

void writeEntry(JsonWriter& json, const ScriptEntry& entry) {
    json.value("name", entry.name).value("source", entry.source);
    writeTexts(json, "controllers", entry.controllers);
}

void writePackage(JsonWriter& json, const RecordedPackage& package, const std::string& platform) {
    json.value("name", package.name).array("files");
    for (const RecordedFile& file : package.files) {
        json.object().value("type", file.type).value("source", file.source);
        json.value("destination", destinationOf(file, platform));
        json.value("defaultDestination", file.destination.empty()).end();
    }
    json.end();
}
