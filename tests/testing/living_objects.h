#pragma once

#include <string>
#include <vector>

#include "platform/base/log.h"
#include "platform/base/object.h"

namespace testing {

/// What the leak report would name now, such as "XML document", sorted. The archive library, which the
/// fixtures keep alive, is left out.
inline std::vector<std::string> livingObjects() {
    std::vector<std::string> objects;
    const zLogHandler note = [](void* receiver, const zLogEntry* entry) {
        const std::string object = std::string(entry->message).substr(std::string("leaked object: ").size());
        if (object != "archive library") static_cast<std::vector<std::string>*>(receiver)->push_back(object);
        return zStatus_Success;
    };
    static_cast<void>(zApiLib_AddLogHandler(note, &objects));
    zObject_ReportLeaks();
    static_cast<void>(zApiLib_RemoveLogHandler(note, &objects));
    return objects;
}

}  // namespace testing
