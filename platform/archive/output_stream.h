#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/base/status.h"
#include "platform/os/os.h"

/// Gathers what is written into large pieces. Bytes can be put together in the buffer itself, which spares
/// copying them there. A stream without a file counts bytes and forgets them; it is never committed.
class OutputStream {
  public:
    OutputStream();

    /// Begins writing the file `path` (os::OutputFile).
    zStatus open(const std::string& path);

    /// Appends `bytes`.
    zStatus write(std::span<const std::uint8_t> bytes);

    /// Room of at least leastRoom bytes to put the next ones in, valid until the next call; then commitRoom
    /// says how many they are.
    zStatus room(std::span<std::uint8_t>& space);
    void commitRoom(std::size_t size);
    static constexpr std::size_t leastRoom = std::size_t{64} * 1024;

    /// Bytes written so far.
    std::uint64_t position() const { return flushed_ + used_; }

    /// Writes out what waits, flushes it to disk and puts the file in its place.
    zStatus commit();

  private:
    zStatus flush();

    os::OutputFile file_;
    std::string path_;  // "" without a file
    std::vector<std::uint8_t> buffer_;
    std::size_t used_ = 0;
    std::uint64_t flushed_ = 0;
};
