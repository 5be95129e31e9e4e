#include "viewer/ImageTransforms.h"

#include "acquire/DibLayout.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace lanmira {
namespace {

// Past this size a result no longer fits the cache and is written with streaming stores.
constexpr std::uint64_t kStreamingBytes = std::uint64_t{8} << 20;

std::optional<DibLayout> transformable(const PackedDib& dib) {
    auto layout = DibLayout::read(dib.data(), dib.size());
    if (!layout || layout->coreHeader || layout->compressed() || layout->topDown)
        return std::nullopt;
    return layout;
}

// A new block with the input's header, masks and colour table, and room for `pixelBytes`.
PackedDib startResult(const PackedDib& dib, const DibLayout& l, std::uint64_t pixelBytes) {
    PackedDib out = PackedDib::allocate(static_cast<std::size_t>(l.pixelOffset + pixelBytes));
    if (out)
        std::memcpy(out.data(), dib.data(), static_cast<std::size_t>(l.pixelOffset));
    return out;
}

void writeSize(std::uint8_t* header, std::int32_t width, std::int32_t height) {
    for (int k = 0; k < 4; ++k) {
        header[4 + k] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(width) >> (8 * k));
        header[8 + k] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(height) >> (8 * k));
    }
}

void clearPadding(std::uint8_t* row, std::uint64_t width, int bitCount, std::uint64_t stride) {
    const std::uint64_t bits = width * static_cast<std::uint64_t>(bitCount);
    std::uint64_t used = bits / 8;
    if (bits % 8) {
        row[used] &= static_cast<std::uint8_t>(0xFF << (8 - bits % 8));
        ++used;
    }
    std::memset(row + used, 0, static_cast<std::size_t>(stride - used));
}

struct Rows {
    const std::uint8_t* in;
    std::uint8_t* out;
    std::uint64_t inStride;
    std::uint64_t outStride;
    std::int32_t w; // of the input
    std::int32_t h;

    const std::uint8_t* inRow(std::int64_t y) const {
        return in + static_cast<std::uint64_t>(y) * inStride;
    }
    std::uint8_t* outRow(std::int64_t y) const {
        return out + static_cast<std::uint64_t>(y) * outStride;
    }
};

// --- Mirroring one row --------------------------------------------------------------------

constexpr std::array<std::uint8_t, 256> kReversedBits = [] {
    std::array<std::uint8_t, 256> table{};
    for (int v = 0; v < 256; ++v) {
        int r = 0;
        for (int b = 0; b < 8; ++b)
            r |= ((v >> b) & 1) << (7 - b);
        table[v] = static_cast<std::uint8_t>(r);
    }
    return table;
}();

// Bits and nibbles: the bytes in reverse order, each reversed, then shifted back by the
// padding that now leads the row.
void mirrorPackedRow(const std::uint8_t* in, std::uint8_t* out, std::int32_t w, int bitCount) {
    const int perByte = 8 / bitCount;
    const std::int64_t bytes = (w + perByte - 1) / perByte;
    const int shift = static_cast<int>(bytes * perByte - w) * bitCount;
    auto reversed = [&](std::int64_t j) -> unsigned {
        if (j >= bytes)
            return 0;
        const std::uint8_t v = in[bytes - 1 - j];
        return bitCount == 1 ? kReversedBits[v] : static_cast<std::uint8_t>((v << 4) | (v >> 4));
    };
    for (std::int64_t j = 0; j < bytes; ++j)
        out[j] =
            static_cast<std::uint8_t>((reversed(j) << shift) | (reversed(j + 1) >> (8 - shift)));
}

template <int P> void mirrorByteRow(const std::uint8_t* in, std::uint8_t* out, std::int32_t w) {
    const std::uint8_t* src = in + static_cast<std::int64_t>(w - 1) * P;
    for (std::int32_t x = 0; x < w; ++x, src -= P, out += P)
        std::memcpy(out, src, P);
}

#if defined(__x86_64__) || defined(__i386__)
// Sixteen pixels (48 bytes) a step: each 16-byte output lane gathers its bytes from the
// three input lanes with byte shuffles.
struct MirrorShuffles {
    std::array<std::array<std::array<std::int8_t, 16>, 3>, 3> lane{};
};

constexpr MirrorShuffles kMirrorShuffles = [] {
    MirrorShuffles m;
    for (int out = 0; out < 3; ++out) {
        for (int in = 0; in < 3; ++in) {
            for (int j = 0; j < 16; ++j) {
                const int outByte = out * 16 + j;
                const int inByte = (15 - outByte / 3) * 3 + outByte % 3;
                m.lane[out][in][j] =
                    static_cast<std::int8_t>(inByte / 16 == in ? inByte % 16 : -128);
            }
        }
    }
    return m;
}();

// Returns how many output pixels it made.
__attribute__((target("ssse3"))) std::int32_t mirror24Ssse3(const std::uint8_t* in,
                                                            std::uint8_t* out, std::int32_t w) {
    __m128i shuffle[3][3];
    for (int o = 0; o < 3; ++o)
        for (int i = 0; i < 3; ++i)
            shuffle[o][i] = _mm_loadu_si128(
                reinterpret_cast<const __m128i*>(kMirrorShuffles.lane[o][i].data()));
    std::int32_t x = 0;
    for (; x + 16 <= w; x += 16) {
        const std::uint8_t* src = in + static_cast<std::int64_t>(w - 16 - x) * 3;
        const __m128i a[3] = {_mm_loadu_si128(reinterpret_cast<const __m128i*>(src)),
                              _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 16)),
                              _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 32))};
        for (int o = 0; o < 3; ++o) {
            const __m128i v = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(a[0], shuffle[o][0]),
                                                        _mm_shuffle_epi8(a[1], shuffle[o][1])),
                                           _mm_shuffle_epi8(a[2], shuffle[o][2]));
            _mm_storeu_si128(
                reinterpret_cast<__m128i*>(out + static_cast<std::int64_t>(x) * 3 + 16 * o), v);
        }
    }
    return x;
}

bool haveSsse3() {
    static const bool have = __builtin_cpu_supports("ssse3");
    return have;
}
#endif

template <> void mirrorByteRow<3>(const std::uint8_t* in, std::uint8_t* out, std::int32_t w) {
    std::int32_t x = 0;
#if defined(__x86_64__) || defined(__i386__)
    if (haveSsse3())
        x = mirror24Ssse3(in, out, w);
#endif
    // Four-byte moves whose last byte the next pixel overwrites; the row's ends move three
    // bytes, so nothing outside the row is read or written.
    for (; x < w; ++x) {
        const std::uint8_t* src = in + static_cast<std::int64_t>(w - 1 - x) * 3;
        std::uint8_t* dst = out + static_cast<std::int64_t>(x) * 3;
        if (x > 0 && x < w - 1) {
            std::uint32_t v;
            std::memcpy(&v, src, 4);
            std::memcpy(dst, &v, 4);
        } else {
            std::memcpy(dst, src, 3);
        }
    }
}

void mirrorRow(const std::uint8_t* in, std::uint8_t* out, std::int32_t w, int bitCount) {
    switch (bitCount) {
    case 1:
    case 4:
        mirrorPackedRow(in, out, w, bitCount);
        break;
    case 8:
        mirrorByteRow<1>(in, out, w);
        break;
    case 16:
        mirrorByteRow<2>(in, out, w);
        break;
    case 24:
        mirrorByteRow<3>(in, out, w);
        break;
    default:
        mirrorByteRow<4>(in, out, w);
        break;
    }
}

// --- Quarter turns ------------------------------------------------------------------------

// A turn reads its input down columns, which no hardware prefetcher follows across pages.
// So output rows are made a band at a time in a buffer that stays in the second-level cache,
// the input rows of the next run are prefetched, and each finished band is copied out whole.
constexpr std::int32_t kBandRows = 16;
constexpr std::int32_t kRunRows = 32;
// Above this the output goes around the caches: it would only push the input out.
constexpr std::uint64_t kStreamBytes = std::uint64_t{8} << 20;

void copyOut(std::uint8_t* dst, const std::uint8_t* src, std::size_t n, bool stream) {
#if defined(__x86_64__) || defined(__i386__)
    if (stream) {
        const std::size_t head =
            std::min<std::size_t>(n, (16 - (reinterpret_cast<std::uintptr_t>(dst) & 15)) & 15);
        std::memcpy(dst, src, head);
        std::size_t i = head;
        for (; i + 16 <= n; i += 16)
            _mm_stream_si128(reinterpret_cast<__m128i*>(dst + i),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i)));
        std::memcpy(dst + i, src + i, n - i);
        return;
    }
#endif
    (void)stream;
    std::memcpy(dst, src, n);
}

void finishStreaming() {
#if defined(__x86_64__) || defined(__i386__)
    _mm_sfence();
#endif
}

#if defined(__x86_64__) || defined(__i386__)
// Four output rows, four pixels at a time: each input row's pixels are spread into 32-bit
// lanes, the lanes transposed, and each column packed back to three-byte pixels. `src` is
// the first input row in output order, `step` the distance to the next; `dst[j]` receives
// column j of each block. Reads 16 bytes a row and writes 16 a column, 12 of them pixels.
__attribute__((target("ssse3"))) void turnBlocksRgb(const std::uint8_t* src, std::int64_t step,
                                                    std::int32_t blocks, std::uint8_t* dst[4]) {
    const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    const __m128i pack = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    for (std::int32_t k = 0; k < blocks; ++k, src += 4 * step) {
        const __m128i r0 =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src)), spread);
        const __m128i r1 =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + step)), spread);
        const __m128i r2 = _mm_shuffle_epi8(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 2 * step)), spread);
        const __m128i r3 = _mm_shuffle_epi8(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 3 * step)), spread);
        const __m128i t0 = _mm_unpacklo_epi32(r0, r1), t1 = _mm_unpacklo_epi32(r2, r3);
        const __m128i t2 = _mm_unpackhi_epi32(r0, r1), t3 = _mm_unpackhi_epi32(r2, r3);
        const std::int64_t at = static_cast<std::int64_t>(k) * 12;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[0] + at),
                         _mm_shuffle_epi8(_mm_unpacklo_epi64(t0, t1), pack));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[1] + at),
                         _mm_shuffle_epi8(_mm_unpackhi_epi64(t0, t1), pack));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[2] + at),
                         _mm_shuffle_epi8(_mm_unpacklo_epi64(t2, t3), pack));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[3] + at),
                         _mm_shuffle_epi8(_mm_unpackhi_epi64(t2, t3), pack));
    }
}

// The same for four-byte pixels, which need no spreading.
void turnBlocksQuad(const std::uint8_t* src, std::int64_t step, std::int32_t blocks,
                    std::uint8_t* dst[4]) {
    for (std::int32_t k = 0; k < blocks; ++k, src += 4 * step) {
        const __m128i r0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
        const __m128i r1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + step));
        const __m128i r2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 2 * step));
        const __m128i r3 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 3 * step));
        const __m128i t0 = _mm_unpacklo_epi32(r0, r1), t1 = _mm_unpacklo_epi32(r2, r3);
        const __m128i t2 = _mm_unpackhi_epi32(r0, r1), t3 = _mm_unpackhi_epi32(r2, r3);
        const std::int64_t at = static_cast<std::int64_t>(k) * 16;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[0] + at), _mm_unpacklo_epi64(t0, t1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[1] + at), _mm_unpackhi_epi64(t0, t1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[2] + at), _mm_unpacklo_epi64(t2, t3));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst[3] + at), _mm_unpackhi_epi64(t2, t3));
    }
}
#endif

// Output row o takes input column x = o (counter-clockwise) or w-1-o (clockwise); its
// column c takes input row h-1-c or c.
template <int P, bool kClockwise> bool turnBytes(const Rows& r) {
    const std::uint64_t bandStride = r.outStride + 16; // room for the last wide store
    const auto bandRows = static_cast<std::uint64_t>(std::min(r.w, kBandRows));
    const auto band = std::unique_ptr<std::uint8_t[]>(
        new (std::nothrow) std::uint8_t[static_cast<std::size_t>(bandStride * bandRows)]);
    if (!band)
        return false;
    const bool stream = r.outStride * static_cast<std::uint64_t>(r.w) >= kStreamBytes;
    const auto inputRow = [&](std::int64_t c) { return r.inRow(kClockwise ? c : r.h - 1 - c); };
    const auto columnOf = [&](std::int64_t o) -> std::int64_t {
        return kClockwise ? r.w - 1 - o : o;
    };
    const auto bandRow = [&](std::int64_t o, std::int64_t o0) {
        return band.get() + static_cast<std::uint64_t>(o - o0) * bandStride;
    };
    const std::int64_t step =
        kClockwise ? static_cast<std::int64_t>(r.inStride) : -static_cast<std::int64_t>(r.inStride);
    const std::uint64_t rowBytes = static_cast<std::uint64_t>(r.h) * P;
#if defined(__x86_64__) || defined(__i386__)
    const bool blocks = P == 4 || (P == 3 && haveSsse3());
#endif
    for (std::int32_t o0 = 0; o0 < r.w; o0 += kBandRows) {
        const std::int32_t o1 = std::min(r.w, o0 + kBandRows);
        const std::int64_t firstX = kClockwise ? r.w - o1 : o0;
        const std::int64_t bandBytes = static_cast<std::int64_t>(o1 - o0) * P;
        for (std::int32_t c0 = 0; c0 < r.h; c0 += kRunRows) {
            const std::int32_t c1 = std::min(r.h, c0 + kRunRows);
            for (std::int32_t c = c1; c < std::min(r.h, c1 + kRunRows); ++c) {
                const std::uint8_t* p = inputRow(c) + firstX * P;
                for (std::int64_t b = 0; b < bandBytes; b += 64)
                    __builtin_prefetch(p + b);
                __builtin_prefetch(p + bandBytes - 1);
            }
            std::int32_t o = o0;
#if defined(__x86_64__) || defined(__i386__)
            // Whole 4×4 blocks, as long as their 16-byte reads stay inside the input rows.
            const std::int32_t blockEnd = c0 + (c1 - c0) / 4 * 4;
            for (; blocks && o + 4 <= o1; o += 4) {
                const std::int64_t x = kClockwise ? r.w - 4 - o : o; // the block's first column
                if (x * P + 16 > static_cast<std::int64_t>(r.inStride))
                    break;
                std::uint8_t* dst[4];
                for (int j = 0; j < 4; ++j)
                    dst[j] = bandRow(kClockwise ? o + 3 - j : o + j, o0) +
                             static_cast<std::int64_t>(c0) * P;
                const std::uint8_t* src = inputRow(c0) + x * P;
                if constexpr (P == 3)
                    turnBlocksRgb(src, step, (blockEnd - c0) / 4, dst);
                else if constexpr (P == 4)
                    turnBlocksQuad(src, step, (blockEnd - c0) / 4, dst);
                for (std::int32_t c = blockEnd; c < c1; ++c)
                    for (int j = 0; j < 4; ++j)
                        std::memcpy(bandRow(o + j, o0) + static_cast<std::int64_t>(c) * P,
                                    inputRow(c) + columnOf(o + j) * P, P);
            }
#endif
            for (; o < o1; ++o) {
                const std::int64_t x = columnOf(o);
                std::uint8_t* dst = bandRow(o, o0) + static_cast<std::int64_t>(c0) * P;
                const std::uint8_t* src = inputRow(c0) + x * P;
                // Three-byte pixels move as four-byte words, each word's last byte
                // overwritten by the next pixel; only the last input column, whose final
                // pixel may end the block, is read three bytes at a time.
                if (P == 3 && x != r.w - 1) {
                    for (std::int32_t c = c0; c < c1; ++c, dst += 3, src += step) {
                        std::uint32_t v;
                        std::memcpy(&v, src, 4);
                        std::memcpy(dst, &v, 4);
                    }
                } else {
                    for (std::int32_t c = c0; c < c1; ++c, dst += P, src += step)
                        std::memcpy(dst, src, P);
                }
            }
        }
        for (std::int32_t o = o0; o < o1; ++o) {
            std::uint8_t* row = bandRow(o, o0);
            std::memset(row + rowBytes, 0, static_cast<std::size_t>(r.outStride - rowBytes));
            copyOut(r.outRow(o), row, static_cast<std::size_t>(r.outStride), stream);
        }
    }
    finishStreaming();
    return true;
}

// Bits and nibbles: a column of input bytes feeds 8 / bitCount output rows at once, each
// collecting its pixels most significant first until a byte is full.
template <bool kClockwise> void turnPacked(const Rows& r, int bitCount) {
    const int perByte = 8 / bitCount;
    const unsigned mask = (1u << bitCount) - 1;
    const std::int64_t inBytes = (static_cast<std::int64_t>(r.w) + perByte - 1) / perByte;
    std::array<unsigned, 8> acc{};
    std::array<std::uint8_t*, 8> target{};
    for (std::int64_t bx = 0; bx < inBytes; ++bx) {
        const int lanes = static_cast<int>(std::min<std::int64_t>(perByte, r.w - bx * perByte));
        for (int k = 0; k < lanes; ++k) {
            const std::int64_t x = bx * perByte + k;
            target[k] = r.outRow(kClockwise ? r.w - 1 - x : x);
            acc[k] = 0;
        }
        for (std::int32_t c = 0; c < r.h; ++c) {
            const unsigned v = r.inRow(kClockwise ? c : r.h - 1 - c)[bx];
            for (int k = 0; k < lanes; ++k)
                acc[k] = (acc[k] << bitCount) | ((v >> (8 - bitCount * (k + 1))) & mask);
            if ((c + 1) % perByte == 0) {
                for (int k = 0; k < lanes; ++k)
                    target[k][c / perByte] = static_cast<std::uint8_t>(acc[k]);
            }
        }
        if (const int left = r.h % perByte) {
            for (int k = 0; k < lanes; ++k)
                target[k][r.h / perByte] =
                    static_cast<std::uint8_t>(acc[k] << (bitCount * (perByte - left)));
        }
    }
    const std::uint64_t used = (static_cast<std::uint64_t>(r.h) + perByte - 1) / perByte;
    for (std::int32_t o = 0; o < r.w; ++o)
        std::memset(r.outRow(o) + used, 0, static_cast<std::size_t>(r.outStride - used));
}

template <bool kClockwise> bool turn(const Rows& r, int bitCount) {
    switch (bitCount) {
    case 1:
    case 4:
        turnPacked<kClockwise>(r, bitCount);
        return true;
    case 8:
        return turnBytes<1, kClockwise>(r);
    case 16:
        return turnBytes<2, kClockwise>(r);
    case 24:
        return turnBytes<3, kClockwise>(r);
    default:
        return turnBytes<4, kClockwise>(r);
    }
}

PackedDib quarterTurn(const PackedDib& dib, bool clockwise) {
    const auto layout = transformable(dib);
    if (!layout)
        return {};
    const DibLayout& l = *layout;
    const std::int32_t newWidth = l.height;
    const std::int32_t newHeight = l.width;
    const std::uint64_t newStride = DibLayout::rowStride(static_cast<std::uint64_t>(newWidth),
                                                         static_cast<std::uint32_t>(l.bitCount));
    PackedDib out = startResult(dib, l, newStride * static_cast<std::uint64_t>(newHeight));
    if (!out)
        return {};
    writeSize(out.data(), newWidth, newHeight);
    const Rows rows{dib.data() + l.pixelOffset,
                    out.data() + l.pixelOffset,
                    l.stride,
                    newStride,
                    l.width,
                    l.height};
    const bool done = clockwise ? turn<true>(rows, l.bitCount) : turn<false>(rows, l.bitCount);
    if (!done)
        return {};
    return out;
}

enum class Mirror { LeftRight, TopBottom, Both };

// Copies a row with stores that bypass the cache, as a large memcpy does: a picture that
// does not fit the cache is written once and not read back soon, so reading each
// destination line in first (what ordinary stores do) only doubles the memory traffic.
void streamRow(std::uint8_t* dst, const std::uint8_t* src, std::size_t n) {
#if defined(__SSE2__)
    while (n > 0 && (reinterpret_cast<std::uintptr_t>(dst) & 15) != 0) {
        *dst++ = *src++;
        --n;
    }
    for (; n >= 64; n -= 64, src += 64, dst += 64) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 16));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 32));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 48));
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst), a);
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 16), b);
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 32), c);
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 48), d);
    }
#endif
    std::memcpy(dst, src, n);
}

PackedDib mirror(const PackedDib& dib, Mirror how) {
    const auto layout = transformable(dib);
    if (!layout)
        return {};
    const DibLayout& l = *layout;
    PackedDib out = startResult(dib, l, l.pixelBytes);
    if (!out)
        return {};
    const Rows rows{dib.data() + l.pixelOffset,
                    out.data() + l.pixelOffset,
                    l.stride,
                    l.stride,
                    l.width,
                    l.height};
    const bool stream = l.pixelBytes >= kStreamingBytes;
    for (std::int32_t y = 0; y < l.height; ++y) {
        std::uint8_t* target = rows.outRow(how == Mirror::LeftRight ? y : l.height - 1 - y);
        if (how != Mirror::TopBottom)
            mirrorRow(rows.inRow(y), target, l.width, l.bitCount);
        else if (stream)
            streamRow(target, rows.inRow(y), static_cast<std::size_t>(l.stride));
        else
            std::memcpy(target, rows.inRow(y), static_cast<std::size_t>(l.stride));
        clearPadding(target, static_cast<std::uint64_t>(l.width), l.bitCount, l.stride);
    }
#if defined(__SSE2__)
    if (stream)
        _mm_sfence();
#endif
    return out;
}

} // namespace

PackedDib rotateCounterClockwise(const PackedDib& dib) {
    return quarterTurn(dib, false);
}

PackedDib rotateClockwise(const PackedDib& dib) {
    return quarterTurn(dib, true);
}

PackedDib rotate180(const PackedDib& dib) {
    return mirror(dib, Mirror::Both);
}

PackedDib mirrorLeftRight(const PackedDib& dib) {
    return mirror(dib, Mirror::LeftRight);
}

PackedDib mirrorTopBottom(const PackedDib& dib) {
    return mirror(dib, Mirror::TopBottom);
}

} // namespace lanmira
