#include "platform/base/object.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/base/failure.h"
#include "platform/base/log.h"

namespace {

/// Every living object. Answers for handles that may be dead, and for what is left at the end.
std::unordered_set<const zObject*>& living() {
    static std::unordered_set<const zObject*> objects;
    return objects;
}

bool isAlive(zHandle handle) {
    return living().contains(static_cast<zObject*>(handle));
}

zStatus refuse() {
    return failure::record(zStatus_BadArgument, "the handle is that of no living object");
}

}  // namespace

zObject::zObject() {
    living().insert(this);
}

zObject::~zObject() {
    living().erase(this);
}

zStatus zObject_Retain(zHandle handle) {
    if (!isAlive(handle)) return refuse();
    static_cast<zObject*>(handle)->references.fetch_add(1);
    return zStatus_Success;
}

zStatus zObject_Destroy(zHandle handle) {
    if (!isAlive(handle)) return refuse();
    auto* object = static_cast<zObject*>(handle);
    if (object->references.fetch_sub(1) == 1) delete object;
    return zStatus_Success;
}

void zObject_ReportLeaks() {
    // Sorted, so that equal runs give equal logs; and a handler may destroy objects.
    std::vector<std::string> entries;
    for (const zObject* object : living()) entries.push_back(std::string("leaked object: ") + object->kind());
    std::sort(entries.begin(), entries.end());
    for (const std::string& entry : entries) zLog_Write(entry);
}
