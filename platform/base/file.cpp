#include "platform/base/file.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "platform/base/failure.h"
#include "platform/os/os.h"

namespace {

constexpr std::size_t chunkSize = std::size_t{256} * 1024;

/// A block of an allocator that grows, until it is handed out.
class Block {
  public:
    explicit Block(const zAllocator* allocator) : allocator_(allocator) {}
    ~Block() { zAllocator_Release(allocator_, data_); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    char* data() { return static_cast<char*>(data_); }
    std::size_t capacity() const { return capacity_; }
    void* handOut() { return std::exchange(data_, nullptr); }

    /// Makes room for `capacity` bytes, the first `used` of which are kept.
    void grow(std::size_t capacity, std::size_t used) {
        void* larger = zAllocator_Allocate(allocator_, capacity);
        if (larger == nullptr) throw std::bad_alloc();
        std::copy_n(data(), used, static_cast<char*>(larger));
        zAllocator_Release(allocator_, data_);
        data_ = larger;
        capacity_ = capacity;
    }

  private:
    const zAllocator* allocator_;
    void* data_ = nullptr;
    std::size_t capacity_ = 0;
};

/// Reads to the end, whatever size the system told: a file may grow, and a pipe has no size.
std::error_code readAll(os::InputFile& file, Block& block, std::size_t& used) {
    used = 0;
    for (;;) {
        if (used == block.capacity())
            block.grow(block.capacity() + std::max(block.capacity(), chunkSize), used);
        std::size_t count = 0;
        const std::error_code error = file.readNext(block.data() + used, block.capacity() - used, count);
        if (error || count == 0) return error;
        used += count;
    }
}

/// The two ends of a copy and what they are called.
struct Copying {
    const char* source;
    const char* destination;
    os::InputFile from;
    os::OutputFile to;

    zStatus run() {
        if (std::error_code error = from.open(source)) return failure::record(error, source);
        if (std::error_code error = to.openLike(destination, source)) return failed(error);
        std::vector<char> buffer(chunkSize);
        for (;;) {
            std::size_t count = 0;
            if (std::error_code error = from.readNext(buffer.data(), buffer.size(), count)) {
                return failure::record(error, source);
            }
            if (count == 0) break;
            if (std::error_code error = to.write(buffer.data(), count)) return failed(error);
        }
        const std::error_code error = to.commit();
        return error ? failed(error) : zStatus_Success;
    }

    zStatus failed(std::error_code error) const { return failure::record(error, destination); }
};

}  // namespace

zStatus zFile_Load(const char* path, void** data, std::size_t* size, const zAllocator* allocator) {
    *data = nullptr;
    return failure::guarded([&] {
        os::InputFile file;
        if (std::error_code error = file.open(path)) return failure::record(error, path);
        Block block(allocator);
        // One byte more than the file has shows its end without growing the block.
        if (file.size() >= std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
        block.grow(static_cast<std::size_t>(file.size()) + 1, 0);
        std::size_t used = 0;
        if (std::error_code error = readAll(file, block, used)) return failure::record(error, path);
        block.data()[used] = '\0';  // the end was seen with room to spare
        *data = block.handOut();
        *size = used;
        return zStatus_Success;
    });
}

zStatus zFile_Copy(const char* source, const char* destination) {
    return failure::guarded([&] { return Copying{source, destination, {}, {}}.run(); });
}

zStatus zFile_Delete(const char* path) {
    return failure::guarded([&] {
        if (std::error_code error = os::removeFile(path)) return failure::record(error, path);
        return zStatus_Success;
    });
}

bool zFile_IsSame(const char* one, const char* other) {
    const zStatus status = failure::guarded([&] {
        os::FileType type{};
        os::InputFile file;
        // Opening a pipe would wait for its other end.
        const bool isPlain = !os::fileType(one, type) && type == os::FileType::regular;
        const bool isSame = isPlain && !file.open(one) && file.isSameFileAs(other);
        return isSame ? zStatus_Success : zStatus_NotFound;
    });
    return status == zStatus_Success;
}

zStatus zFile_Save(const char* path, const void* data, std::size_t size) {
    return failure::guarded([&] {
        os::OutputFile file;
        std::error_code error = file.open(path);
        if (!error) error = file.write(data, size);
        if (!error) error = file.commit();
        return error ? failure::record(error, path) : zStatus_Success;
    });
}
