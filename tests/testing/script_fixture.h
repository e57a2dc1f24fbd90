#pragma once

#include <string>
#include <vector>

#include "TaVekUtil/edit/startup_script.h"
#include "tests/testing/archive_fixture.h"
#include "tests/testing/captured_output.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_fixture.h"

namespace testing {

/// An archive with a start-up script, and what editing it says.
struct Script {
    ScratchDirectory scratch;
    Ta::Object<void*> archive;
    CapturedOutput output;

    explicit Script(const std::string& script, std::vector<Member> members = {}) {
        members.insert(members.begin(), {"script.xml", script});
        archive = container(members);
    }

    void inject(const std::string& name, const std::string& source, const std::string& content = "content",
                const std::vector<std::string>& models = {"R6", "R8"}) {
        const std::string file = scratch.write("file", content);
        TaVekUtil_InjectFile(file.c_str(), source.c_str(), name.c_str(), models, archive.get());
    }
    /// Removes the entry `name`; answers its source, "(untouched)" when the buffer was left alone.
    std::string remove(const std::string& name) {
        char source[512] = "(untouched)";
        TaVekUtils_ScriptXmlRemoveAndGetSource(archive.get(), name.c_str(), source, sizeof source,
                                               zAllocator_Application());
        return source;
    }
    std::string text() const { return compact(member("script.xml")); }
    std::string member(const std::string& name) const { return memberContent(archive.get(), name); }
    bool holds(const std::string& name) const { return hasMember(archive.get(), name); }
    std::vector<std::string> members() const { return memberNames(archive.get()); }
};

inline std::string fileEntry(const std::string& name, const std::string& source) {
    return "<File name=\"" + name + "\" source=\"" + source + "\"/>";
}

}  // namespace testing
