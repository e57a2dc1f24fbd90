#include "tools/tar/member_reader.h"

#include <algorithm>
#include <utility>

#include "platform/archive/shown_name.h"
#include "tools/tar/failure.h"

namespace tar {
namespace {

/// Names and extended headers beyond this are no honest ones.
constexpr std::uint64_t longestNote = 1 << 20;

constexpr std::uint64_t longestMember = std::uint64_t{1} << 62;

bool isNote(Kind kind) {
    return kind == Kind::longName || kind == Kind::longLink || kind == Kind::extended ||
           kind == Kind::globallyExtended;
}

std::span<const std::uint8_t> takeUpTo(std::span<const std::uint8_t>& bytes, std::uint64_t count) {
    const auto taken = bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(count, bytes.size())));
    bytes = bytes.subspan(taken.size());
    return taken;
}

}  // namespace

void MemberReader::take(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty() && !ended_) {
        if (contentLeft_ > 0) {
            takeContent(bytes);
        } else if (paddingLeft_ > 0) {
            takePadding(bytes);
        } else {
            takeHeader(bytes);
        }
    }
}

void MemberReader::finish() const {
    if (ended_) return;
    throw Failure(anyHeader_ ? "the archive ends early" : "this does not look like a tar archive");
}

void MemberReader::takeHeader(Bytes& bytes) {
    const Bytes taken = takeUpTo(bytes, blockSize - filled_);
    std::copy(taken.begin(), taken.end(), block_.begin() + static_cast<std::ptrdiff_t>(filled_));
    filled_ += taken.size();
    if (filled_ < blockSize) return;
    filled_ = 0;
    if (isEndMark(block_)) {
        ended_ = true;
        return;
    }
    if (!isHeader(block_)) {
        throw Failure(anyHeader_ ? "a damaged header" : "this does not look like a tar archive");
    }
    anyHeader_ = true;
    member_ = readHeader(block_);
    if (isNote(member_.kind)) {
        startNote();
    } else {
        startMember();
    }
}

void MemberReader::startNote() {
    if (member_.size > longestNote) throw Failure("a name or extended header of absurd length");
    note_.clear();
    contentLeft_ = member_.size;
    paddingLeft_ = static_cast<std::size_t>((blockSize - contentLeft_ % blockSize) % blockSize);
    if (contentLeft_ == 0) applyNote();
}

void MemberReader::startMember() {
    Overrides said = global_;
    said.overlay(std::exchange(next_, {}));
    said.apply(member_);
    if (member_.size > longestMember) throw Failure("member " + shownName(member_.name) + ": an absurd size");
    if (member_.kind != Kind::file && member_.kind != Kind::unsupported && member_.size != 0) {
        // Programs differ in whether content follows, and so in which members they see.
        throw Failure("member " + shownName(member_.name) + ": a link or directory with content");
    }
    contentLeft_ = member_.size;
    paddingLeft_ = static_cast<std::size_t>((blockSize - contentLeft_ % blockSize) % blockSize);
    inMember_ = true;
    sink_.begin(member_);
    if (contentLeft_ == 0) endMember();
}

void MemberReader::takeContent(Bytes& bytes) {
    const Bytes taken = takeUpTo(bytes, contentLeft_);
    contentLeft_ -= taken.size();
    if (inMember_) {
        sink_.write(taken);
        if (contentLeft_ == 0) endMember();
    } else {
        note_.append(reinterpret_cast<const char*>(taken.data()), taken.size());
        if (contentLeft_ == 0) applyNote();
    }
}

void MemberReader::takePadding(Bytes& bytes) {
    paddingLeft_ -= takeUpTo(bytes, paddingLeft_).size();
}

void MemberReader::endMember() {
    inMember_ = false;
    sink_.end();
}

void MemberReader::applyNote() {
    const auto text = [&] { return note_.substr(0, note_.find('\0')); };
    switch (member_.kind) {
        case Kind::longName:
            next_.name = text();
            break;
        case Kind::longLink:
            next_.link = text();
            break;
        case Kind::extended:
            next_.read(note_);
            break;
        default:
            global_.read(note_);
    }
}

}  // namespace tar
