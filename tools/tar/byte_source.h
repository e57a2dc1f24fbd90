#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "platform/os/os.h"

namespace tar {

/// A file read from front to back in pieces, of which the last bytes can be given back.
class ByteSource {
  public:
    /// Opens the file `path`; throws Failure when that does not succeed.
    explicit ByteSource(const std::string& path);

    /// The next bytes, none at the end; valid until the next call. Throws Failure when reading fails.
    std::span<const std::uint8_t> next();

    /// Makes the last `count` bytes that next() gave out come again; at most `mostGivenBack` of those before
    /// its last piece are among them.
    void giveBack(std::size_t count);

    /// The next byte, taken; false at the end.
    bool takeByte(std::uint8_t& byte);

    static constexpr std::size_t mostGivenBack = 16;

  private:
    static constexpr std::size_t pieceSize = std::size_t{64} * 1024;

    os::InputFile file_;
    std::string path_;
    std::array<std::uint8_t, mostGivenBack + pieceSize> buffer_{};
    std::size_t begin_ = 0;  // of what was not given out yet
    std::size_t end_ = 0;
};

}  // namespace tar
