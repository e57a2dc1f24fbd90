// CRC-32 of blocks of several sizes: this project's two ways, zlib and libdeflate.
//
// own is what the archive uses (the instructions where the processor has them, the table elsewhere),
// ownPortable the table alone. 64 bytes stand for headers, 4 KiB and 256 KiB for the pieces that members pass
// in, 16 MiB for what no cache holds. Every result is compared with zlib's before anything is timed.

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "platform/archive/crc32.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes noise(std::size_t size) {
    std::mt19937 random(1);
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

std::uint32_t zlibCrc(std::uint32_t crc, const void* bytes, std::size_t size) {
    return static_cast<std::uint32_t>(crc32_z(crc, static_cast<const Bytef*>(bytes), size));
}

std::uint32_t libdeflateCrc(std::uint32_t crc, const void* bytes, std::size_t size) {
    return libdeflate_crc32(crc, bytes, size);
}

void measure(benchmark::State& state, checksum::Function update) {
    const Bytes bytes = noise(static_cast<std::size_t>(state.range(0)));
    if (update(0, bytes.data(), bytes.size()) != zlibCrc(0, bytes.data(), bytes.size())) {
        std::fputs("crc32_bench: a checksum is wrong\n", stderr);
        std::exit(1);
    }
    for (auto iteration : state) {
        benchmark::DoNotOptimize(update(0, bytes.data(), bytes.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void add(const char* name, checksum::Function update) {
    benchmark::RegisterBenchmark(name, measure, update)->Arg(64)->Arg(4 << 10)->Arg(256 << 10)->Arg(16 << 20);
}

}  // namespace

int main(int count, char** words) {
    benchmark::Initialize(&count, words);
    add("crc32/own", checksum::update);
    add("crc32/ownPortable", checksum::updatePortable);
    add("crc32/zlib", zlibCrc);
    add("crc32/libdeflate", libdeflateCrc);
    benchmark::RunSpecifiedBenchmarks();
}
