#include "platform/archive/output_stream.h"

#include <algorithm>
#include <cstring>

#include "platform/base/failure.h"

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

}  // namespace

OutputStream::OutputStream() : buffer_(bufferSize) {}

zStatus OutputStream::open(const std::string& path) {
    if (const std::error_code error = file_.open(path)) return failure::record(error, path);
    path_ = path;
    return zStatus_Success;
}

zStatus OutputStream::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        std::span<std::uint8_t> space;
        if (const zStatus status = room(space); status != zStatus_Success) return status;
        const std::size_t count = std::min(space.size(), bytes.size());
        std::memcpy(space.data(), bytes.data(), count);
        commitRoom(count);
        bytes = bytes.subspan(count);
    }
    return zStatus_Success;
}

zStatus OutputStream::room(std::span<std::uint8_t>& space) {
    if (buffer_.size() - used_ < leastRoom) {
        if (const zStatus status = flush(); status != zStatus_Success) return status;
    }
    space = std::span(buffer_).subspan(used_);
    return zStatus_Success;
}

void OutputStream::commitRoom(std::size_t size) {
    used_ += size;
}

zStatus OutputStream::flush() {
    if (!path_.empty()) {
        if (const std::error_code error = file_.write(buffer_.data(), used_)) {
            return failure::record(error, path_);
        }
    }
    flushed_ += used_;
    used_ = 0;
    return zStatus_Success;
}

zStatus OutputStream::commit() {
    if (const zStatus status = flush(); status != zStatus_Success) return status;
    const std::error_code error = file_.commit();
    return error ? failure::record(error, path_) : zStatus_Success;
}
