#pragma once

#include <string>
#include <vector>

#include "platform/base/object.h"

namespace testing {

/// A member of a container.
struct Member {
    std::string name;
    std::string content;
};

/// A container in memory that holds `members` in this order.
Ta::Object<void*> container(const std::vector<Member>& members);

/// Writes a container file of `members`; answers `path`.
std::string writeArchive(const std::string& path, const std::vector<Member>& members);

/// The container that the file `path` holds; fails the test when it cannot be loaded.
Ta::Object<void*> loadArchive(const std::string& path);

/// True when `archive` has a member `name`.
bool hasMember(zHandle archive, const std::string& name);

/// The bytes of the member `name`; fails the test when there is none.
std::string memberContent(zHandle archive, const std::string& name);
/// The same of the container file `path`.
std::string memberContent(const std::string& path, const std::string& name);

/// The names of the members in their order, as the central directory of a saved file lists them.
std::vector<std::string> memberNames(const std::string& path);
std::vector<std::string> memberNames(zHandle archive);

/// The bytes that saving `archive` now gives.
std::string savedBytes(zHandle archive);

}  // namespace testing
