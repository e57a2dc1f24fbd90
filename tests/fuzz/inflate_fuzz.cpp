// Decodes any bytes as a DEFLATE stream, at once and in small pieces, and compares the two, and with zlib
// where that is at hand. The first byte is the size of the pieces.

#include "platform/archive/inflate.h"

#include <algorithm>
#include <vector>

#include "tests/fuzz/require.h"

#ifdef TAVEK_ZLIB
#include <zlib.h>
#endif

namespace {

using fuzz::require;

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t longestOutput = 1 << 20;

class Pieces : public inflation::Input {
  public:
    Pieces(const Bytes& bytes, std::size_t size) : left_(bytes), size_(size) {}
    bool next(std::span<const std::uint8_t>& piece) override {
        piece = left_.first(std::min(size_, left_.size()));
        left_ = left_.subspan(piece.size());
        return true;
    }

  private:
    std::span<const std::uint8_t> left_;
    std::size_t size_;
};

class Collected : public inflation::Output {
  public:
    bool take(std::span<const std::uint8_t> bytes) override {
        content.insert(content.end(), bytes.begin(), bytes.end());
        return content.size() <= longestOutput;
    }
    Bytes content;
};

struct Result {
    inflation::Verdict verdict;
    Bytes content;
    std::uint64_t consumed;
};

Result decode(const Bytes& stream, std::size_t pieceSize) {
    static inflation::Inflater inflater;
    Pieces input(stream, pieceSize);
    Collected output;
    const inflation::Verdict verdict = inflater.run(input, output);
    return {verdict, output.content, inflater.consumed()};
}

#ifdef TAVEK_ZLIB
void compareWithZlib(const Bytes& stream, const Result& mine) {
    static Bytes content(longestOutput + 1);
    z_stream other{};
    require(inflateInit2(&other, -15) == Z_OK);
    other.next_in = const_cast<Bytef*>(stream.data());
    other.avail_in = static_cast<uInt>(stream.size());
    other.next_out = content.data();
    other.avail_out = static_cast<uInt>(content.size());
    const int result = inflate(&other, Z_FINISH);
    const std::size_t size = other.total_out;
    const std::uint64_t consumed = other.total_in;
    inflateEnd(&other);
    if (mine.verdict == inflation::Verdict::outputRefused) {
        require(size > longestOutput);
    } else if (mine.verdict == inflation::Verdict::complete) {
        require(result == Z_STREAM_END && consumed == mine.consumed && size == mine.content.size());
        require(std::equal(mine.content.begin(), mine.content.end(), content.begin()));
    } else {
        require(result != Z_STREAM_END);
    }
}
#endif

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const Bytes stream(data + 1, data + size);
    const Result whole = decode(stream, stream.size());
    const Result pieces = decode(stream, std::size_t{data[0]} + 1);
    require(whole.verdict == pieces.verdict);
    if (whole.verdict == inflation::Verdict::complete) {
        require(whole.content == pieces.content);
        require(whole.consumed == pieces.consumed && whole.consumed <= stream.size());
    } else if (whole.verdict != inflation::Verdict::outputRefused) {
        require(*inflation::phraseOf(whole.verdict) != 0);
    }
    // Before a fault one may have handed out more than the other.
    const std::size_t both = std::min(whole.content.size(), pieces.content.size());
    require(std::equal(whole.content.begin(), whole.content.begin() + static_cast<std::ptrdiff_t>(both),
                       pieces.content.begin()));
#ifdef TAVEK_ZLIB
    compareWithZlib(stream, whole);
#endif
    return 0;
}
