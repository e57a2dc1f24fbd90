#include "tools/tar/gzip.h"

#include "platform/archive/crc32.h"
#include "platform/archive/inflate.h"
#include "tools/tar/failure.h"

namespace tar {
namespace {

constexpr std::uint8_t firstMagic = 0x1F, secondMagic = 0x8B;

[[noreturn]] void refuse(const std::string& what) {
    throw Failure("damaged gzip file: " + what);
}

/// The fields of a gzip header, and the checksum of what was read of it.
class HeaderReader {
  public:
    explicit HeaderReader(ByteSource& source) : source_(source) {}

    std::uint8_t byte() {
        std::uint8_t value = 0;
        if (!source_.takeByte(value)) refuse("it ends in a header");
        crc_ = checksum::update(crc_, &value, 1);
        return value;
    }
    unsigned word() {
        const unsigned low = byte();
        return low | unsigned{byte()} << 8;
    }
    void skip(unsigned count) {
        while (count-- > 0) byte();
    }
    void skipText() {
        while (byte() != 0) {
        }
    }
    std::uint32_t crc() const { return crc_; }

  private:
    static constexpr std::uint8_t magic[] = {firstMagic, secondMagic};

    ByteSource& source_;
    std::uint32_t crc_ = checksum::update(0, magic, sizeof magic);  // taken already
};

/// Reads a header behind its two bytes of magic.
void readHeader(HeaderReader& header) {
    enum Flag : unsigned {
        checksumFlag = 2,
        extraFlag = 4,
        nameFlag = 8,
        commentFlag = 16,
        unknownFlags = 0xE0
    };
    constexpr unsigned deflate = 8;
    constexpr unsigned timeAndSystem = 6;
    if (header.byte() != deflate) refuse("an unknown method of compression");
    const unsigned flags = header.byte();
    if ((flags & unknownFlags) != 0) refuse("a header of an unknown kind");
    header.skip(timeAndSystem);
    if ((flags & extraFlag) != 0) header.skip(header.word());
    if ((flags & nameFlag) != 0) header.skipText();
    if ((flags & commentFlag) != 0) header.skipText();
    if ((flags & checksumFlag) != 0) {
        const unsigned expected = header.crc() & 0xFFFF;
        if (header.word() != expected) refuse("checksum mismatch in a header");
    }
}

class CompressedInput : public inflation::Input {
  public:
    explicit CompressedInput(ByteSource& source) : source_(source) {}
    bool next(std::span<const std::uint8_t>& bytes) override {
        bytes = source_.next();
        handedOut_ += bytes.size();
        return true;
    }
    std::uint64_t handedOut() const { return handedOut_; }

  private:
    ByteSource& source_;
    std::uint64_t handedOut_ = 0;
};

class CheckedOutput : public inflation::Output {
  public:
    explicit CheckedOutput(const ByteTaker& take) : take_(take) {}
    bool take(std::span<const std::uint8_t> bytes) override {
        crc_ = checksum::update(crc_, bytes.data(), bytes.size());
        size_ += static_cast<std::uint32_t>(bytes.size());  // the trailer's counts modulo 2^32, too
        take_(bytes);
        return true;
    }
    std::uint32_t crc() const { return crc_; }
    std::uint32_t size() const { return size_; }

  private:
    const ByteTaker& take_;
    std::uint32_t crc_ = 0;
    std::uint32_t size_ = 0;
};

std::uint32_t takeNumber(ByteSource& source) {
    std::uint32_t number = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        std::uint8_t byte = 0;
        if (!source.takeByte(byte)) refuse("it ends in a trailer");
        number |= std::uint32_t{byte} << shift;
    }
    return number;
}

/// Reads a member behind its magic.
void unzipMember(ByteSource& source, inflation::Inflater& inflater, const ByteTaker& take) {
    HeaderReader header(source);
    readHeader(header);
    CompressedInput input(source);
    CheckedOutput output(take);
    const inflation::Verdict verdict = inflater.run(input, output);
    if (verdict != inflation::Verdict::complete) refuse(inflation::phraseOf(verdict));
    source.giveBack(static_cast<std::size_t>(input.handedOut() - inflater.consumed()));
    if (takeNumber(source) != output.crc()) refuse("checksum mismatch");
    if (takeNumber(source) != output.size()) refuse("length mismatch");
}

/// Takes the magic of one more member; false at the end, zero bytes before it taken, too.
bool takeMagic(ByteSource& source) {
    std::uint8_t byte = 0;
    if (!source.takeByte(byte)) return false;
    if (byte == firstMagic) {
        if (!source.takeByte(byte) || byte != secondMagic) refuse("other data behind it");
        return true;
    }
    while (byte == 0) {
        if (!source.takeByte(byte)) return false;
    }
    refuse("other data behind it");
}

}  // namespace

bool isGzip(ByteSource& source) {
    const auto piece = source.next();
    source.giveBack(piece.size());
    return piece.size() >= 2 && piece[0] == firstMagic && piece[1] == secondMagic;
}

void unzip(ByteSource& source, const ByteTaker& take) {
    inflation::Inflater inflater;
    while (takeMagic(source)) unzipMember(source, inflater, take);
}

}  // namespace tar
