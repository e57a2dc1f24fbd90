#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tar {

/// Names in archives, taken apart and found to stay in the directory that is unpacked to. `/` and `\` both
/// separate, on every system; components of one dot are passed over.

/// The components of a member's name, none for the directory itself. Throws Failure for a name that is empty,
/// that begins at a root, climbs ("..") or has a component that no file can bear here (os::isFileName).
std::vector<std::string> memberPath(std::string_view name);

/// Checks what a symbolic link holds that lies in a directory `depth` components below the one that is
/// unpacked to. It may climb at its start only, and not beyond that directory: behind a name, a climb could
/// lead anywhere, for the name may be that of another link. Throws Failure.
void checkLink(std::string_view link, std::size_t depth);

}  // namespace tar
