#include <windows.h>

#include "platform/os/terminal.h"

namespace os {

bool isTerminal(Stream stream) {
    const HANDLE handle = ::GetStdHandle(stream == Stream::output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode) != 0 &&
           ::SetConsoleMode(handle, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace os
