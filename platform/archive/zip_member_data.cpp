#include "platform/archive/zip_member_data.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/archive/crc32.h"

namespace zip {
namespace {

/// The compressed bytes of a member, copied to the output as they are read.
class CarriedBytes : public inflation::Input {
  public:
    CarriedBytes(FileWindow& window, const Entry& entry, OutputStream& output)
        : window_(window), output_(output), at_(entry.dataOffset()), left_(entry.compressedSize) {}

    bool next(std::span<const std::uint8_t>& bytes) override {
        std::span<std::uint8_t> space;
        status_ = output_.room(space);
        if (status_ != zStatus_Success) return false;
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left_, space.size()));
        status_ = window_.copy(at_, count, space.data());
        if (status_ != zStatus_Success) return false;
        output_.commitRoom(count);
        at_ += count;
        left_ -= count;
        bytes = space.first(count);
        return true;
    }

    /// What went wrong in a next() that answered false.
    zStatus status() const { return status_; }

  private:
    FileWindow& window_;
    OutputStream& output_;
    std::uint64_t at_;
    std::uint64_t left_;
    zStatus status_ = zStatus_Success;
};

/// The decoded bytes of a member: counts and sums them up, and keeps them when there is a place for them.
class DecodedBytes : public inflation::Output {
  public:
    DecodedBytes(const Entry& entry, std::uint8_t* place)
        : expectedSize_(entry.size), expectedCrc_(entry.crc), place_(place) {}

    bool take(std::span<const std::uint8_t> bytes) override {
        if (bytes.size() > expectedSize_ - size_) {
            tooLong_ = true;
            return false;
        }
        crc_ = checksum::update(crc_, bytes.data(), bytes.size());
        if (place_ != nullptr) std::memcpy(place_ + size_, bytes.data(), bytes.size());
        size_ += bytes.size();
        return true;
    }

    /// Null when all is as told.
    const char* fault() const {
        if (tooLong_) return "it decodes to more bytes than its size says";
        if (size_ != expectedSize_) return "it decodes to fewer bytes than its size says";
        return crc_ == expectedCrc_ ? nullptr : "checksum mismatch";
    }

  private:
    std::uint64_t expectedSize_;
    std::uint32_t expectedCrc_;
    std::uint8_t* place_;
    std::uint64_t size_ = 0;
    std::uint32_t crc_ = 0;
    bool tooLong_ = false;
};

/// Passes the bytes on as they are; an unreadable member's are not looked at.
zStatus passUndecoded(CarriedBytes& from, DecodedBytes* to) {
    std::span<const std::uint8_t> bytes;
    do {
        if (!from.next(bytes)) return from.status();
    } while (!bytes.empty() && (to == nullptr || to->take(bytes)));
    return zStatus_Success;
}

}  // namespace

zStatus MemberData::carry(const Entry& entry, OutputStream& output) {
    return pass(entry, output, nullptr);
}

zStatus MemberData::requireReadable(const Entry& entry) const {
    if (entry.isEncrypted()) {
        return file_.refuseMember(entry.name, "it is encrypted", zStatus_Unsupported);
    }
    if (!entry.isReadable()) {
        const std::string method = std::to_string(entry.method);
        return file_.refuseMember(entry.name, "compression method " + method + " is not read",
                                  zStatus_Unsupported);
    }
    return zStatus_Success;
}

zStatus MemberData::decode(const Entry& entry, const zAllocator* allocator, Block& bytes) {
    if (const zStatus status = requireReadable(entry); status != zStatus_Success) return status;
    // Two bits, a length and a distance, give 258 bytes at most: memory is only asked for what can be true.
    constexpr std::uint64_t bestRatio = 1032;
    if (entry.size / bestRatio > entry.compressedSize) {
        return file_.refuseMember(entry.name, "it decodes to fewer bytes than its size says");
    }
    bytes = Block(allocator, entry.size);
    OutputStream nowhere;
    return pass(entry, nowhere, bytes.bytes());
}

zStatus MemberData::pass(const Entry& entry, OutputStream& output, std::uint8_t* decoded) {
    CarriedBytes from(window_, entry, output);
    if (!entry.isReadable()) return passUndecoded(from, nullptr);
    DecodedBytes to(entry, decoded);
    if (entry.method == method::stored) {
        if (const zStatus status = passUndecoded(from, &to); status != zStatus_Success) return status;
    } else {
        using inflation::Verdict;
        if (!inflater_) inflater_ = std::make_unique<inflation::Inflater>();
        const Verdict verdict = inflater_->run(from, to);
        if (verdict == Verdict::inputFailed) return from.status();
        if (verdict != Verdict::complete && verdict != Verdict::outputRefused) {
            return file_.refuseMember(entry.name, std::string("damaged: ") + inflation::phraseOf(verdict));
        }
        if (verdict == Verdict::complete && inflater_->consumed() != entry.compressedSize) {
            return file_.refuseMember(entry.name, "its stream ends before its compressed size");
        }
    }
    const char* fault = to.fault();
    return fault == nullptr ? zStatus_Success : file_.refuseMember(entry.name, fault);
}

}  // namespace zip
