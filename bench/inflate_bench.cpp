// Raw DEFLATE streams decoded from memory to memory by this project's decoder, by zlib and by libdeflate.
//
// Streams come from zlib at level 6 and hold about 8 MiB each of what archives carry:
//
//   script    a start-up script, text that repeats itself much
//   program   machine code: the tool beside this program, repeated to size
//   log       text with numbers in it
//   noise     bytes that cannot be packed, in stored blocks
//   zeros     matches of the greatest length alone
//
// The rivals know the size of the output and write it at once. The own decoder runs as the archive uses it:
// in pieces, through its window, each piece then copied to its place. Every output is compared with the
// original before anything is timed.

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <utility>

#include "platform/archive/inflate.h"

namespace {

constexpr std::size_t sampleSize = 8 * 1024 * 1024;

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "inflate_bench: %s\n", what);
    std::exit(1);
}

// ---- Samples --------------------------------------------------------------------------------------------

std::string script() {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Script>\n";
    for (int i = 0; text.size() < sampleSize; ++i) {
        const std::string number = std::to_string(i);
        text += "  <File name=\"/user/libUnit" + number + ".so\" source=\"data/12345-libUnit" + number +
                ".so\"><Or><Eq property=\"Controller\" value=\"R4\"/></Or></File>\n";
    }
    return text + "</Script>\n";
}

std::string program() {
    const auto tool = std::filesystem::read_symlink("/proc/self/exe").replace_filename("TaVekUtil");
    std::ifstream file(tool, std::ios::binary);
    const std::string once{std::istreambuf_iterator<char>(file), {}};
    require(!once.empty(), "cannot read the tool beside this program");
    std::string bytes;
    while (bytes.size() < sampleSize) bytes += once;
    return bytes;
}

std::string log() {
    std::mt19937 random(1);
    std::string text;
    static const char* const events[] = {"connected to", "lost", "retries", "calibrated by", "answered"};
    while (text.size() < sampleSize) {
        char line[128];
        std::snprintf(line, sizeof line, "%010u sensor %3u %s unit %u: %.3f\n",
                      static_cast<unsigned>(text.size()), static_cast<unsigned>(random() % 200),
                      events[random() % std::size(events)], static_cast<unsigned>(random() % 5000),
                      static_cast<double>(random()) / 1e6);
        text += line;
    }
    return text;
}

std::string noise() {
    std::mt19937 random(2);
    std::string bytes(sampleSize, '\0');
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
    return bytes;
}

std::string deflated(const std::string& bytes) {
    z_stream stream{};
    require(deflateInit2(&stream, 6, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY) == Z_OK, "zlib");
    std::string packed(deflateBound(&stream, bytes.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    require(deflate(&stream, Z_FINISH) == Z_STREAM_END, "zlib");
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

struct Sample {
    std::string plain;
    std::string packed;
};

const std::map<std::string, Sample>& samples() {
    static const auto made = [] {
        std::map<std::string, Sample> all;
        all["script"].plain = script();
        all["program"].plain = program();
        all["log"].plain = log();
        all["noise"].plain = noise();
        all["zeros"].plain = std::string(sampleSize, '\0');
        for (auto& [name, sample] : all) sample.packed = deflated(sample.plain);
        return all;
    }();
    return made;
}

// ---- Decoders: each decodes `packed` to `plain`, whose size is known -------------------------------------

class Own {
  public:
    bool decode(const std::string& packed, std::string& plain) {
        Whole input(packed);
        Placed output(plain);
        return inflater_.run(input, output) == inflation::Verdict::complete && output.isFull();
    }

  private:
    class Whole : public inflation::Input {
      public:
        explicit Whole(const std::string& bytes)
            : left_(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()) {}
        bool next(std::span<const std::uint8_t>& bytes) override {
            bytes = std::exchange(left_, {});
            return true;
        }

      private:
        std::span<const std::uint8_t> left_;
    };
    class Placed : public inflation::Output {
      public:
        explicit Placed(std::string& place) : place_(place) {}
        bool take(std::span<const std::uint8_t> bytes) override {
            if (bytes.size() > place_.size() - size_) return false;
            std::memcpy(place_.data() + size_, bytes.data(), bytes.size());
            size_ += bytes.size();
            return true;
        }
        bool isFull() const { return size_ == place_.size(); }

      private:
        std::string& place_;
        std::size_t size_ = 0;
    };
    inflation::Inflater inflater_;
};

class Zlib {
  public:
    Zlib() { require(inflateInit2(&stream_, -15) == Z_OK, "zlib"); }
    ~Zlib() { inflateEnd(&stream_); }
    Zlib(const Zlib&) = delete;
    Zlib& operator=(const Zlib&) = delete;
    bool decode(const std::string& packed, std::string& plain) {
        inflateReset(&stream_);
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
        stream_.avail_in = static_cast<uInt>(packed.size());
        stream_.next_out = reinterpret_cast<Bytef*>(plain.data());
        stream_.avail_out = static_cast<uInt>(plain.size());
        return inflate(&stream_, Z_FINISH) == Z_STREAM_END && stream_.avail_out == 0;
    }

  private:
    z_stream stream_{};
};

class Libdeflate {
  public:
    bool decode(const std::string& packed, std::string& plain) {
        return libdeflate_deflate_decompress(decompressor_.get(), packed.data(), packed.size(), plain.data(),
                                             plain.size(), nullptr) == LIBDEFLATE_SUCCESS;
    }

  private:
    struct Free {
        void operator()(libdeflate_decompressor* decompressor) const {
            libdeflate_free_decompressor(decompressor);
        }
    };
    std::unique_ptr<libdeflate_decompressor, Free> decompressor_{libdeflate_alloc_decompressor()};
};

template <typename Decoder>
void decode(benchmark::State& state, const Sample& sample) {
    Decoder decoder;
    std::string plain(sample.plain.size(), '\0');
    require(decoder.decode(sample.packed, plain) && plain == sample.plain, "a decoder's output is wrong");
    for (auto iteration : state) {
        benchmark::DoNotOptimize(decoder.decode(sample.packed, plain));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(plain.size()));
}

template <typename Decoder>
void add(const std::string& decoder) {
    for (const auto& [name, sample] : samples()) {
        benchmark::RegisterBenchmark(
            ("inflate/" + name + '/' + decoder).c_str(),
            [&sample = sample](benchmark::State& state) { decode<Decoder>(state, sample); });
    }
}

}  // namespace

int main(int count, char** words) {
    benchmark::Initialize(&count, words);
    add<Own>("own");
    add<Zlib>("zlib");
    add<Libdeflate>("libdeflate");
    benchmark::RunSpecifiedBenchmarks();
}
