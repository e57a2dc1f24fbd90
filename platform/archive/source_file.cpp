#include "platform/archive/source_file.h"

#include <algorithm>
#include <cstring>

#include "platform/archive/shown_name.h"
#include "platform/base/failure.h"

zStatus SourceFile::open(const std::string& path) {
    path_ = path;
    os::FileType type{};
    if (const std::error_code error = os::fileType(path, type)) return failure::record(error, path);
    // Opening a pipe would wait for its other end.
    if (type == os::FileType::other) return failure::record(zStatus_Unsupported, path + ": not a plain file");
    if (const std::error_code error = file_.open(path)) return failure::record(error, path);
    size_ = file_.size();
    return zStatus_Success;
}

zStatus SourceFile::reopen(const std::string& path, std::uint64_t size) {
    if (const zStatus status = open(path); status != zStatus_Success) return status;
    if (size_ == size) return zStatus_Success;
    close();
    return failure::record(zStatus_IoError, path + ": the file was replaced by another");
}

zStatus SourceFile::read(std::uint64_t offset, void* bytes, std::size_t size) const {
    if (!isOpen()) return failure::record(zStatus_IoError, path_ + ": the file is not open any more");
    std::size_t count = 0;
    const std::error_code error = file_.read(offset, bytes, size, count);
    if (error) return failure::record(error, path_);
    if (count == size) return zStatus_Success;
    return failure::record(zStatus_IoError, path_ + ": the file became shorter while it was read");
}

zStatus SourceFile::refuse(std::string_view fault) const {
    return failure::record(zStatus_Malformed, (path_ + ": ").append(fault));
}

zStatus SourceFile::refuseMember(std::string_view name, std::string_view fault, zStatus status) const {
    return failure::record(status, (path_ + ": member " + shownName(name) + ": ").append(fault));
}

namespace {

constexpr std::size_t leastAhead = std::size_t{4} * 1024, mostAhead = std::size_t{256} * 1024;
constexpr std::size_t largePiece = std::size_t{32} * 1024;

}  // namespace

bool FileWindow::holds(std::uint64_t offset, std::size_t size) const {
    return offset >= begin_ && offset <= end() && size <= end() - offset;
}

zStatus FileWindow::view(std::uint64_t offset, std::size_t size, const std::uint8_t*& bytes) {
    if (!holds(offset, size)) {
        const bool straightOn = offset >= begin_ && offset <= end() + ahead_;
        ahead_ = straightOn ? std::clamp(2 * ahead_, leastAhead, mostAhead) : leastAhead;
        const std::uint64_t count = std::min<std::uint64_t>(std::max(size, ahead_), file_.size() - offset);
        held_ = 0;
        buffer_.resize(std::max(buffer_.size(), static_cast<std::size_t>(count)));
        const zStatus status = file_.read(offset, buffer_.data(), static_cast<std::size_t>(count));
        if (status != zStatus_Success) return status;
        begin_ = offset;
        held_ = static_cast<std::size_t>(count);
    }
    bytes = buffer_.data() + (offset - begin_);
    return zStatus_Success;
}

zStatus FileWindow::copy(std::uint64_t offset, std::size_t size, std::uint8_t* bytes) {
    if (size == 0) return zStatus_Success;
    if (size >= largePiece && !holds(offset, size)) return file_.read(offset, bytes, size);
    const std::uint8_t* seen = nullptr;
    const zStatus status = view(offset, size, seen);
    if (status == zStatus_Success) std::memcpy(bytes, seen, size);
    return status;
}
