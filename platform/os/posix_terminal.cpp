#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "platform/os/terminal.h"

namespace os {

bool isTerminal(Stream stream) {
    const char* kind = std::getenv("TERM");
    if (kind != nullptr && std::string_view(kind) == "dumb") return false;
    return ::isatty(stream == Stream::output ? STDOUT_FILENO : STDERR_FILENO) != 0;
}

}  // namespace os
