#pragma once

#include <string_view>

#include "platform/base/status.h"

/// One entry of the log, valid during the call of the handler.
struct zLogEntry {
    const char* message;  ///< Zero-terminated, without a line end.
};

/// Called for each log entry with the receiver it was registered with; answers 1 when it took the entry.
using zLogHandler = zStatus (*)(void* receiver, const zLogEntry* entry);

/// Switches the leak report on (not 0) or off (0, as at the start): when on, objects that are still alive
/// when the archive library object is destroyed are reported through the log.
void zApiLib_EnableLeakLogging(int flag);
bool zApiLib_LeakLoggingEnabled();

/// Registers `handler` with `receiver` (may be null) behind those registered already. zStatus_BadArgument for
/// a null handler.
zStatus zApiLib_AddLogHandler(zLogHandler handler, void* receiver);

/// Takes back one registration of this very pair; zStatus_NotFound when there is none.
zStatus zApiLib_RemoveLogHandler(zLogHandler handler, void* receiver);

/// Hands an entry to every handler, in the order of their registration.
void zLog_Write(std::string_view message);
