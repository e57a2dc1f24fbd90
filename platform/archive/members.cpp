#include "platform/archive/members.h"

#include "platform/archive/container.h"
#include "platform/base/failure.h"

namespace {

template <typename Operation>
zStatus withContainer(zHandle handle, Operation operation) {
    auto* container = zObject::as<Container>(handle);
    if (container == nullptr) {
        return failure::record(zStatus_BadArgument, "the handle is that of no archive container");
    }
    return failure::guarded([&] { return operation(*container); });
}

}  // namespace

zStatus zArchive_Members(zHandle archive, std::vector<zMemberInfo>& members) {
    return withContainer(archive, [&](Container& container) { return container.describe(members); });
}

zStatus zArchive_VerifyMember(zHandle archive, const char* name) {
    return withContainer(archive, [&](Container& container) { return container.verify(name); });
}

zStatus zArchive_TrySave(zHandle archive) {
    return withContainer(archive, [](Container& container) { return container.trySave(); });
}
