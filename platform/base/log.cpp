#include "platform/base/log.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/failure.h"

namespace {

bool leakLogging = false;

using Registration = std::pair<zLogHandler, void*>;

std::vector<Registration>& registrations() {
    static std::vector<Registration> list;
    return list;
}

}  // namespace

void zApiLib_EnableLeakLogging(int flag) {
    leakLogging = flag != 0;
}

bool zApiLib_LeakLoggingEnabled() {
    return leakLogging;
}

zStatus zApiLib_AddLogHandler(zLogHandler handler, void* receiver) {
    if (handler == nullptr) return failure::record(zStatus_BadArgument, "no log handler given");
    return failure::guarded([&] {
        registrations().emplace_back(handler, receiver);
        return zStatus_Success;
    });
}

zStatus zApiLib_RemoveLogHandler(zLogHandler handler, void* receiver) {
    auto& list = registrations();
    const auto found = std::find(list.begin(), list.end(), Registration(handler, receiver));
    if (found == list.end()) return failure::record(zStatus_NotFound, "the log handler is not registered");
    list.erase(found);
    return zStatus_Success;
}

void zLog_Write(std::string_view message) {
    const std::string text(message);
    const zLogEntry entry{text.c_str()};
    // A handler may register and take back handlers, itself too.
    const std::vector<Registration> handlers = registrations();
    for (const auto& [handler, receiver] : handlers) static_cast<void>(handler(receiver, &entry));
}
