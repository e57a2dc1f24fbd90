#include "tools/tar/byte_source.h"

#include <algorithm>
#include <utility>

#include "tools/tar/failure.h"

namespace tar {

ByteSource::ByteSource(const std::string& path) : path_(path) {
    if (const std::error_code error = file_.open(path)) {
        throw Failure(path + ": Cannot open: " + error.message());
    }
}

std::span<const std::uint8_t> ByteSource::next() {
    if (begin_ == end_) {
        const std::size_t kept = std::min(end_, mostGivenBack);
        std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(end_ - kept), kept, buffer_.begin());
        std::size_t count = 0;
        if (const std::error_code error = file_.readNext(buffer_.data() + kept, pieceSize, count)) {
            throw Failure(path_ + ": Cannot read: " + error.message());
        }
        begin_ = kept;
        end_ = kept + count;
    }
    return {buffer_.data() + std::exchange(begin_, end_), buffer_.data() + end_};
}

void ByteSource::giveBack(std::size_t count) {
    begin_ -= std::min(count, begin_);
}

bool ByteSource::takeByte(std::uint8_t& byte) {
    const auto piece = next();
    if (piece.empty()) return false;
    byte = piece.front();
    giveBack(piece.size() - 1);
    return true;
}

}  // namespace tar
