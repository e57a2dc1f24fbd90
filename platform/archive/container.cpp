#include "platform/archive/container.h"

#include <cstring>
#include <utility>

#include "platform/archive/shown_name.h"
#include "platform/base/failure.h"

Container::Container(const zAllocator* allocator) : allocator_(allocator), codec_(makeZipCodec()) {}

zStatus Container::load(const std::string& path) {
    // A second format would be told from ZIP here, by the first bytes of the file.
    std::unique_ptr<Codec> codec = makeZipCodec();
    MemberTable members;
    if (const zStatus status = codec->load(path, members); status != zStatus_Success) return status;
    codec_ = std::move(codec);
    members_ = std::move(members);
    decoded_.clear();
    path_ = path;
    return zStatus_Success;
}

zStatus Container::save(const std::string& path) {
    return codec_->save(path, members_);
}

zStatus Container::find(std::string_view name, std::size_t& index) {
    const std::size_t found = members_.find(name);
    if (found == MemberTable::none) {
        return failure::record(zStatus_NotFound, context() + "no member " + shownName(name));
    }
    const zStatus status = makeReady(found);
    if (status == zStatus_Success) index = found;
    return status;
}

std::string Container::context() const {
    return path_.empty() ? std::string() : path_ + ": ";
}

zStatus Container::makeReady(std::size_t index) {
    Member& member = *members_.at(index);
    if (member.isAdded()) {
        Content& content = *member.content;
        return content.live ? content.live->serialise(content.text) : zStatus_Success;
    }
    if (member.content) return zStatus_Success;
    auto content = std::make_unique<Content>();
    const zStatus status = codec_->read(members_.nameOf(member), member.origin, allocator_, content->block);
    if (status != zStatus_Success) return status;
    decoded_.push_back(index);
    member.content = std::move(content);
    return zStatus_Success;
}

const Content* Container::readyContent(std::size_t index) {
    const Member* member = members_.at(index);
    return member == nullptr ? nullptr : member->content.get();
}

zStatus Container::addData(std::string_view name, const void* data, std::size_t size) {
    auto content = std::make_unique<Content>();
    content->block = Block(allocator_, size);
    if (size > 0) std::memcpy(content->block.bytes(), data, size);
    return add(name, std::move(content));
}

zStatus Container::addLive(std::string_view name, std::shared_ptr<LiveContent> live) {
    auto content = std::make_unique<Content>();
    content->live = std::move(live);
    return add(name, std::move(content));
}

zStatus Container::add(std::string_view name, std::unique_ptr<Content> content) {
    if (name.empty())
        return failure::record(zStatus_BadArgument, context() + "a member's name must not be empty");
    if (name.size() > codec_->longestName()) {
        return failure::record(zStatus_BadArgument,
                               context() + "a member's name is longer than the archive allows");
    }
    forgetDecoded();
    Member* member = members_.append(name, Member::noOrigin);
    if (member == nullptr) {
        return failure::record(zStatus_BadArgument,
                               context() + "there is a member " + shownName(name) + " already");
    }
    member->content = std::move(content);
    return zStatus_Success;
}

std::shared_ptr<LiveContent> Container::live(std::string_view name) {
    const Member* member = members_.at(members_.find(name));
    return member != nullptr && member->isAdded() ? member->content->live : nullptr;
}

void Container::remove(std::string_view name) {
    const std::size_t found = members_.find(name);
    if (found == MemberTable::none) return;
    forgetDecoded();
    members_.remove(found);
}

/// Gives up the bytes of loaded members, whose pointers end with a change of the container.
void Container::forgetDecoded() {
    for (const std::size_t index : decoded_) {
        if (Member* member = members_.at(index)) member->content.reset();
    }
    decoded_.clear();
}
