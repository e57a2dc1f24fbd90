// Preloaded into the program: every read and write moves no more than half of what was asked for, and every
// third call of them is interrupted by a signal before it moves anything. Systems are free to answer so at
// any time.

#include <dlfcn.h>
#include <sys/types.h>

#include <cerrno>
#include <cstddef>

namespace {

bool interrupted() {
    static unsigned calls = 0;
    if (++calls % 3 != 0) return false;
    errno = EINTR;
    return true;
}

template <typename Function>
Function* original(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

std::size_t half(std::size_t count) {
    return (count + 1) / 2;
}

}  // namespace

extern "C" {

ssize_t read(int file, void* buffer, std::size_t count) {
    static auto* const next = original<ssize_t(int, void*, std::size_t)>("read");
    return interrupted() ? -1 : next(file, buffer, half(count));
}

ssize_t pread64(int file, void* buffer, std::size_t count, off64_t offset) {
    static auto* const next = original<ssize_t(int, void*, std::size_t, off64_t)>("pread64");
    return interrupted() ? -1 : next(file, buffer, half(count), offset);
}

ssize_t write(int file, const void* buffer, std::size_t count) {
    static auto* const next = original<ssize_t(int, const void*, std::size_t)>("write");
    return interrupted() ? -1 : next(file, buffer, half(count));
}
}
