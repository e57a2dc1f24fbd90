// Random injections and removals on any start-up script, by the tool and by a plain way of the same rules
// that parses and writes the script each time and walks it for each question. Both must fail at the same edit
// in the same way, or leave the same script and the same members.
//
// An input is the edits, one byte each, a line "====", and the script.

#include <array>
#include <cctype>
#include <utility>

#include "TaVekUtil/edit/startup_script.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_tree.h"

namespace {

using fuzz::attribute;
using fuzz::MaybeText;
using fuzz::require;

const std::array<std::string, 8> names = {
    "/user/a.so",          "/USER/a.SO",         "/user/b", "", "\xC3\xA9&<", std::string(255, 'n'),
    std::string(256, 'n'), std::string(511, 'n')};
const std::array<std::string, 6> members = {"data/12345-a.so", "data/12345-b", "host/app",
                                            "script.xml",      "data/x",       "data/y"};
const std::array<std::string, 2> contents = {"content a", "content b"};

std::string lower(std::string text) {
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character + 32);
    }
    return text;
}

struct Edit {
    bool isRemoval;
    const std::string& name;
    const std::string& member;
    std::size_t content;
    std::vector<std::string> controllers;
};

Edit edit(unsigned char byte) {
    const std::vector<std::string> models = {"R2", "R4"};
    const std::size_t content = byte / 48u % 2u;
    return {byte >= 192,
            names[byte % 8u],
            members[byte / 8u % 6u],
            content,
            {models.begin(), models.begin() + byte % 3}};
}

/// How an edit ended: "" or the failing operation and its status.
using Ending = std::string;

// ---- The tool's way -------------------------------------------------------------------------------------

class Container {
  public:
    explicit Container(const std::string& script) {
        require(zArchive_Construct(archive_.out(), nullptr) == zStatus_Success, "no container");
        add("host/app", contents[0]);
        add("script.xml", script);
    }
    void add(const std::string& name, const std::string& content) {
        require(zArchive_AddData(archive_.get(), content.data(), content.size(), name.c_str(), 0) ==
                    zStatus_Success,
                "no member");
    }
    zHandle get() const { return archive_.get(); }

    MaybeText content(const std::string& name) const {
        std::int64_t index = 0;
        if (zArchive_Find(get(), name.c_str(), &index) != zStatus_Success) return std::nullopt;
        return std::string(static_cast<const char*>(zArchive_FileData(get(), index)),
                           zArchive_FileSize(get(), index));
    }

  private:
    Ta::Object<void*> archive_;
};

Ending edited(const Container& container, const Edit& edit, const std::array<std::string, 2>& files) {
    try {
        if (!edit.isRemoval) {
            TaVekUtil_InjectFile(files[edit.content].c_str(), edit.member.c_str(), edit.name.c_str(),
                                 edit.controllers, container.get());
            return "";
        }
        char source[512] = "";
        TaVekUtils_ScriptXmlRemoveAndGetSource(container.get(), edit.name.c_str(), source, sizeof source,
                                               nullptr);
        require(zArchive_DeleteFile(container.get(), source) == zStatus_Success, "no deletion");
        return "";
    } catch (const Ta::Exception& exception) {
        return exception.operation() + " " + zStatus_Phrase(exception.status());
    }
}

// ---- The plain way --------------------------------------------------------------------------------------

using Members = std::vector<std::pair<std::string, std::string>>;

void drop(Members& held, const std::string& name) {
    std::erase_if(held, [&](const auto& member) { return member.first == name; });
}

const std::string* find(const Members& held, const std::string& name) {
    for (const auto& [other, content] : held) {
        if (other == name) return &content;
    }
    return nullptr;
}

Ending failed(const char* operation, zStatus status) {
    return std::string(operation) + " " + zStatus_Phrase(status);
}

Ending dropPrevious(Members& held, zHandle script, const std::string& name) {
    bool isBehindFirst = false;
    std::vector<zXmlItem> doomed;
    for (zXmlItem item : fuzz::children(script, zXml_Root(script))) {
        isBehindFirst = isBehindFirst || std::string_view(zXml_ItemName(script, item)) == "File";
        const MaybeText itemName = attribute(script, item, "name", 512);
        const MaybeText source = attribute(script, item, "source", 512);
        if (!isBehindFirst || !itemName || !source || lower(*itemName) != lower(name)) continue;
        drop(held, *source);
        doomed.push_back(item);
    }
    if (!isBehindFirst) return failed("TaVekUtil_DeletePreviousFiles", zStatus_NotFound);
    for (zXmlItem item : doomed) require(zXml_DeleteItem(script, item) == zStatus_Success, "no deletion");
    return "";
}

bool addEntry(zHandle script, const Edit& edit) {
    zXmlItem file = nullptr;
    zXmlItem anyOf = nullptr;
    if (zXml_AddItem(script, zXml_Root(script), "File", &file) != zStatus_Success ||
        zXml_SetAttrText(script, file, "name", edit.name.c_str()) != zStatus_Success ||
        zXml_SetAttrText(script, file, "source", edit.member.c_str()) != zStatus_Success ||
        zXml_AddItem(script, file, "Or", &anyOf) != zStatus_Success)
        return false;
    for (const std::string& controller : edit.controllers) {
        zXmlItem model = nullptr;
        if (zXml_AddItem(script, anyOf, "Eq", &model) != zStatus_Success ||
            zXml_SetAttrText(script, model, "property", "Controller") != zStatus_Success ||
            zXml_SetAttrText(script, model, "value", controller.c_str()) != zStatus_Success)
            return false;
    }
    return true;
}

void rewrite(Members& held, zHandle script) {
    drop(held, "script.xml");
    held.emplace_back("script.xml", testing::writtenBytes(script));
}

Ending injected(Members& held, zHandle script, const Edit& edit) {
    const Ending ending = dropPrevious(held, script, edit.name);
    if (!ending.empty()) return ending;
    require(addEntry(script, edit), "no new entry");
    rewrite(held, script);
    const std::string& content = contents[edit.content];
    const std::string* there = find(held, edit.member);
    if (there == nullptr) held.emplace_back(edit.member, content);
    return there == nullptr || *there == content ? "" : failed("TaVekUtil_InjectFile", zStatus_BadArgument);
}

Ending removed(Members& held, zHandle script, const Edit& edit) {
    constexpr const char* operation = "TaVekUtils_ScriptXmlRemoveAndGetSource";
    std::string doomed;
    for (zXmlItem item : fuzz::children(script, zXml_Root(script))) {
        if (std::string_view(zXml_ItemName(script, item)) != "File") continue;
        char buffer[256];
        const zStatus named = zXml_AttrText(script, item, "name", buffer, sizeof buffer);
        if (named != zStatus_Success) return failed(operation, named);
        if (buffer != edit.name) continue;
        const zStatus sourced = zXml_AttrText(script, item, "source", buffer, sizeof buffer);
        if (sourced != zStatus_Success) return failed(operation, sourced);
        doomed = buffer;
        require(zXml_DeleteItem(script, item) == zStatus_Success, "no deletion");
        break;
    }
    rewrite(held, script);
    drop(held, doomed);
    return "";
}

Ending editedPlainly(Members& held, const Edit& edit) {
    const char* operation =
        edit.isRemoval ? "TaVekUtils_ScriptXmlRemoveAndGetSource" : "TaVekUtil_InjectFile";
    const std::string* text = find(held, "script.xml");
    if (text == nullptr) return failed(operation, zStatus_NotFound);
    Ta::Object<void*> script;
    const zStatus parsed = zXml_LoadBytes(script.out(), text->data(), text->size(), nullptr);
    if (parsed != zStatus_Success) return failed(operation, parsed);
    return edit.isRemoval ? removed(held, script.get(), edit) : injected(held, script.get(), edit);
}

// ---- Comparison -----------------------------------------------------------------------------------------

std::string treeOf(const MaybeText& text) {
    Ta::Object<void*> document;
    require(text && zXml_LoadBytes(document.out(), text->data(), text->size(), nullptr) == zStatus_Success,
            "the script is no document any more");
    return testing::describeTree(document.get());
}

void compare(const Container& container, const Members& held) {
    for (const std::string& name : members) {
        const std::string* plain = find(held, name);
        const MaybeText content = container.content(name);
        require((plain != nullptr) == content.has_value(), "a member is there in one way only");
        if (plain == nullptr) continue;
        if (name == "script.xml") {
            require(treeOf(content) == treeOf(*plain), "the scripts differ");
        } else {
            require(*content == *plain, "the members differ");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const testing::ScratchDirectory scratch;
    static const std::array<std::string, 2> files = {scratch.write("a", contents[0]),
                                                     scratch.write("b", contents[1])};
    const auto parts = fuzz::sections({reinterpret_cast<const char*>(data), size}, 2);
    const fuzz::Streams streams;
    const Container container(parts[1]);
    Members held = {{"host/app", contents[0]}, {"script.xml", parts[1]}};
    for (const char byte : std::string_view(parts[0]).substr(0, 16)) {
        const Edit next = edit(static_cast<unsigned char>(byte));
        const Ending ending = edited(container, next, files);
        require(ending == editedPlainly(held, next), ending.c_str());
        if (!ending.empty()) return 0;
        compare(container, held);
    }
    return 0;
}
