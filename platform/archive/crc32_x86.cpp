// CRC-32 by carry-less multiplication.
//
// The message is a polynomial over GF(2), and its CRC the remainder by P. A 128-bit piece of it that stands n
// bits before another contributes the same remainder when it is multiplied by x^n mod P and added to the
// other. So four accumulators stride over the message 64 bytes at a time, fold into one, which goes on block
// by block, and what is left, 16 bytes with the same remainder as the whole, goes through the table.

#include "platform/archive/crc32.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <array>

namespace checksum {
namespace {

/// x^n mod P, reflected: the coefficient of x^31 is bit 0.
constexpr std::uint32_t powerOfX(unsigned n) {
    std::uint32_t remainder = 0x80000000;  // x^0
    for (; n > 0; --n) remainder = remainder >> 1 ^ (remainder & 1 ? 0xEDB88320 : 0);
    return remainder;
}

/// The factor that carries a 64-bit half over `distance` bits. Reflected operands of 64 and 64 bits give a
/// product one place too low, and a remainder of 32 bits stands in the upper half of its factor: 33 places in
/// all, of which one is taken by the shift.
constexpr long long factor(unsigned distance) {
    const std::uint64_t shifted = std::uint64_t{powerOfX(distance - 32)} << 1;
    return static_cast<long long>(shifted);
}

constexpr std::size_t block = 16, stride = 4 * block;

/// `piece` moved on by the distance of the factors, plus `next`.
__attribute__((target("pclmul,sse4.1"))) inline __m128i fold(__m128i piece, __m128i factors, __m128i next) {
    const __m128i early = _mm_clmulepi64_si128(piece, factors, 0x00);
    const __m128i late = _mm_clmulepi64_si128(piece, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(early, late), next);
}

__attribute__((target("pclmul,sse4.1"))) inline __m128i load(const std::uint8_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

constexpr std::size_t shortest = 2 * block;  // below, the table is as fast

/// Moves bytes by pshufb: read from place 16 + n it takes n bytes off the front of a block, from place n it
/// leaves just those, at the end.
constexpr std::uint8_t gone = 0x80;
constexpr std::array<std::uint8_t, 3 * block> moves{
    gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone,  //
    0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   14,   15,    //
    gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone, gone};

/// `piece` plus the `count` (1 to 15) bytes behind it, which end at `end` behind at least 16 of the message:
/// the front of the piece is moved on by a block, and what stays of it makes a whole block with the bytes.
__attribute__((target("pclmul,sse4.1"))) inline __m128i foldTail(__m128i piece, __m128i overBlock,
                                                                 const std::uint8_t* end, std::size_t count) {
    const __m128i front = _mm_shuffle_epi8(piece, load(moves.data() + count));
    const __m128i takeOff = load(moves.data() + block + count);
    const __m128i back = _mm_blendv_epi8(_mm_shuffle_epi8(piece, takeOff), load(end - block), takeOff);
    return fold(front, overBlock, back);
}

__attribute__((target("pclmul,sse4.1"))) std::uint32_t updateByMultiplication(std::uint32_t crc,
                                                                              const void* bytes,
                                                                              std::size_t size) {
    if (size < shortest) return updatePortable(crc, bytes, size);
    const auto* next = static_cast<const std::uint8_t*>(bytes);

    // The half that comes first in the message has 64 bits more to travel.
    const __m128i overStride = _mm_set_epi64x(factor(8 * stride), factor(8 * stride + 64));
    const __m128i overBlock = _mm_set_epi64x(factor(8 * block), factor(8 * block + 64));

    __m128i piece = _mm_xor_si128(load(next), _mm_cvtsi32_si128(static_cast<int>(~crc)));
    if (size >= 2 * stride) {
        __m128i piece1 = load(next + block);
        __m128i piece2 = load(next + 2 * block);
        __m128i piece3 = load(next + 3 * block);
        for (next += stride, size -= stride; size >= stride; next += stride, size -= stride) {
            piece = fold(piece, overStride, load(next));
            piece1 = fold(piece1, overStride, load(next + block));
            piece2 = fold(piece2, overStride, load(next + 2 * block));
            piece3 = fold(piece3, overStride, load(next + 3 * block));
        }
        piece = fold(fold(fold(piece, overBlock, piece1), overBlock, piece2), overBlock, piece3);
    } else {
        next += block, size -= block;
    }
    for (; size >= block; next += block, size -= block) piece = fold(piece, overBlock, load(next));
    if (size > 0) piece = foldTail(piece, overBlock, next + size, size);

    alignas(block) std::uint8_t rest[block];
    _mm_store_si128(reinterpret_cast<__m128i*>(rest), piece);
    // The table's way inverts before and after; the piece carries the first inversion already.
    return updatePortable(~0u, rest, block);
}

}  // namespace

Function accelerated() {
    return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1") ? updateByMultiplication
                                                                                : nullptr;
}

}  // namespace checksum

#else

namespace checksum {

Function accelerated() {
    return nullptr;
}

}  // namespace checksum

#endif
