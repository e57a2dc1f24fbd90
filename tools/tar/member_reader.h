#pragma once

#include <span>

#include "tools/tar/extended_header.h"
#include "tools/tar/header.h"

namespace tar {

/// Where the members of an archive go, one after the other.
class MemberSink {
  public:
    virtual ~MemberSink() = default;
    /// The next member; its name is that of the header, unchecked.
    virtual void begin(const Member& member) = 0;
    /// More of the content of the member, which has `Member::size` bytes in all.
    virtual void write(std::span<const std::uint8_t> bytes) = 0;
    /// The member is complete.
    virtual void end() = 0;
};

/// Takes an archive in pieces of any size and hands its members on, with the long names and extended headers
/// that precede them resolved. Holds one block and one name or extended header at a time.
class MemberReader {
  public:
    explicit MemberReader(MemberSink& sink) : sink_(sink) {}

    /// Takes the next bytes; what follows the end mark is passed over. Throws Failure for what is no archive
    /// or a damaged one, and what the sink throws.
    void take(std::span<const std::uint8_t> bytes);

    /// To be called behind the last byte: throws Failure when the end mark did not come.
    void finish() const;

  private:
    using Bytes = std::span<const std::uint8_t>;
    /// Each takes what it needs from the front of `bytes`.
    void takeHeader(Bytes& bytes);
    void takeContent(Bytes& bytes);
    void takePadding(Bytes& bytes);

    void startMember();
    void startNote();
    void endMember();
    void applyNote();

    MemberSink& sink_;
    Block block_{};
    std::size_t filled_ = 0;  // of the block
    Member member_;
    std::uint64_t contentLeft_ = 0;
    std::size_t paddingLeft_ = 0;
    bool inMember_ = false;
    bool anyHeader_ = false;
    bool ended_ = false;
    std::string note_;  // content of a member that says something about others
    Overrides global_;
    Overrides next_;
};

}  // namespace tar
