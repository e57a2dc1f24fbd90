#pragma once

#include <string>

#include "TaVekInspect/model/upgrade.h"
#include "TaVekInspect/render/json_writer.h"

/// The parts that the JSON documents of several commands share, as schemas/inspect.schema.json defines them.

/// Version of the documents' format. A change that a reader could stumble over raises it.
inline constexpr std::uint64_t jsonFormatVersion = 1;

/// Begins a document: the object, its format and its command. The caller ends it.
void beginDocument(JsonWriter& json, const char* command);

/// Arrays as the value of `key`.
void writeFindings(JsonWriter& json, const char* key, const Findings& findings);
void writeTexts(JsonWriter& json, const char* key, const std::vector<std::string>& texts);

/// The values of one object each, which the caller begins and ends.
void writeMember(JsonWriter& json, const zMemberInfo& member);
void writeEntry(JsonWriter& json, const ScriptEntry& entry);
void writePackage(JsonWriter& json, const RecordedPackage& package, const std::string& platform);
