// What a container costs that has many members: time and memory of loading, and of saving after one edit, for
// 1,000 to 1,000,000 members of one byte each, with names of 22 bytes.
//
// The counters are bytes of heap a member: `held` once it is loaded, `peak` at the worst moment of the whole
// operation, which for saving begins with the loaded container.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

#include "platform/archive/archive.h"

// ---- Heap in use, counted --------------------------------------------------------------------------------

namespace heap {

std::atomic<std::int64_t> used{0};
std::atomic<std::int64_t> peak{0};

void count(void* block) {
    const std::int64_t now = used += static_cast<std::int64_t>(malloc_usable_size(block));
    if (now > peak) peak = now;
}
void uncount(void* block) {
    used -= static_cast<std::int64_t>(malloc_usable_size(block));
}

}  // namespace heap

void* operator new(std::size_t size) {
    void* block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    heap::count(block);
    return block;
}
void operator delete(void* block) noexcept {
    if (block == nullptr) return;
    heap::uncount(block);
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace {

void require(zStatus status) {
    if (status == zStatus_Success) return;
    std::fprintf(stderr, "container_bench: %s\n", zStatus_Phrase(status));
    std::exit(1);
}

struct Archive {
    Archive() { require(zArchive_Construct(&handle, nullptr)); }
    ~Archive() { static_cast<void>(zObject_Destroy(handle)); }
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;
    void load(const std::string& path) const { require(zArchive_Load(handle, path.c_str())); }
    void save(const std::string& path) const { require(zArchive_Save(handle, path.c_str())); }
    void add(const std::string& name) const { require(zArchive_AddData(handle, "x", 1, name.c_str(), 0)); }
    zHandle handle = nullptr;
};

std::string nameOf(std::int64_t member) {
    char name[48];
    std::snprintf(name, sizeof name, "data/12345-%08lld.so", static_cast<long long>(member));
    return name;
}

/// The archive of `members` members, made when it is first asked for and removed at the end.
std::string archiveOf(std::int64_t members) {
    struct Directory {
        std::filesystem::path path = std::filesystem::temp_directory_path() / "tavek-container-bench";
        Directory() { std::filesystem::create_directories(path); }
        ~Directory() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static const Directory directory;
    std::string path = (directory.path / (std::to_string(members) + ".zip")).string();
    if (!std::filesystem::exists(path)) {
        const Archive archive;
        for (std::int64_t i = 0; i < members; ++i) archive.add(nameOf(i));
        archive.save(path);
    }
    return path;
}

double perMember(const benchmark::State& state, std::int64_t bytes) {
    return static_cast<double>(bytes) / static_cast<double>(state.range(0));
}

void load(benchmark::State& state) {
    const std::string path = archiveOf(state.range(0));
    const std::int64_t before = heap::used;
    heap::peak = before;
    for (auto iteration : state) {
        const Archive archive;
        archive.load(path);
        state.PauseTiming();
        std::int64_t index = -1;
        require(zArchive_Find(archive.handle, nameOf(state.range(0) - 1).c_str(), &index));
        if (index != state.range(0) - 1) require(zStatus_Failure);
        state.counters["held"] = perMember(state, heap::used - before);
        state.ResumeTiming();
    }
    state.counters["peak"] = perMember(state, heap::peak - before);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void save(benchmark::State& state) {
    const std::string path = archiveOf(state.range(0));
    const std::int64_t before = heap::used;
    const Archive archive;
    archive.load(path);
    require(zArchive_DeleteFile(archive.handle, nameOf(0).c_str()));
    archive.add("one more");
    heap::peak = heap::used.load();
    for (auto iteration : state) archive.save(path + ".saved");
    state.counters["peak"] = perMember(state, heap::peak - before);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(1000, 1'000'000)->Unit(benchmark::kMillisecond);
}
BENCHMARK(load)->Apply(sizes);
BENCHMARK(save)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
