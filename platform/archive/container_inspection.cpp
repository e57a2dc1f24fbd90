// The part of the container that looks and does not edit.

#include "platform/archive/container.h"
#include "platform/archive/crc32.h"
#include "platform/archive/shown_name.h"
#include "platform/base/failure.h"

zStatus Container::describe(std::vector<zMemberInfo>& members) {
    members.reserve(members.size() + members_.count());
    for (std::size_t index = 0; index < members_.places(); ++index) {
        const Member* member = members_.at(index);
        if (member == nullptr) continue;
        zMemberInfo info;
        info.name = members_.nameOf(*member);
        const zStatus status = member->isAdded() ? describeAdded(index, info)
                                                 : codec_->describe(info.name, member->origin, info);
        if (status != zStatus_Success) return status;
        members.push_back(std::move(info));
    }
    return zStatus_Success;
}

zStatus Container::describeAdded(std::size_t index, zMemberInfo& info) {
    if (const zStatus status = makeReady(index); status != zStatus_Success) return status;
    const Content& content = *members_.at(index)->content;
    info.size = info.packedSize = content.size();
    info.crc = checksum::update(0, content.data(), content.size());
    return zStatus_Success;
}

zStatus Container::verify(std::string_view name) {
    const std::size_t found = members_.find(name);
    if (found == MemberTable::none) {
        return failure::record(zStatus_NotFound, context() + "no member " + shownName(name));
    }
    const Member& member = *members_.at(found);
    return member.isAdded() ? zStatus_Success : codec_->verify(name, member.origin);
}

zStatus Container::trySave() {
    return codec_->trySave(members_);
}
