#include "tools/tar/member_path.h"

#include "platform/os/os.h"
#include "tools/tar/failure.h"

namespace tar {
namespace {

constexpr std::string_view parent = "..";

/// The components of `path`, those that say nothing left out.
std::vector<std::string> split(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
        const std::string_view component = path.substr(0, end);
        if (!component.empty() && component != ".") components.emplace_back(component);
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

void refuseRoot(std::string_view path) {
    if (path.empty()) throw Failure("an empty name");
    if (os::isAbsolute(path)) throw Failure("the name begins at a root");
}

void refuseOddName(const std::string& component) {
    if (!os::isFileName(component)) throw Failure("no file can have that name here");
}

}  // namespace

std::vector<std::string> memberPath(std::string_view name) {
    refuseRoot(name);
    std::vector<std::string> components = split(name);
    for (const std::string& component : components) {
        if (component == parent) throw Failure("the name leads out of the directory");
        refuseOddName(component);
    }
    return components;
}

void checkLink(std::string_view link, std::size_t depth) {
    refuseRoot(link);
    bool climbing = true;
    for (const std::string& component : split(link)) {
        if (component != parent) {
            climbing = false;
            refuseOddName(component);
        } else if (!climbing || depth-- == 0) {
            throw Failure("the link leads out of the directory");
        }
    }
}

}  // namespace tar
