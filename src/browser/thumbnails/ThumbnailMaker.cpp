#include "browser/thumbnails/ThumbnailMaker.h"

#include "acquire/DibLayout.h"
#include "acquire/PackedDib.h"
#include "browser/FileNames.h"
#include "imagelib/imagelib.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lanmira {
namespace {

// Thumbnail sides are at most a box side; anything else is a caller's mistake.
constexpr std::int32_t kMaxThumbSide = 1 << 12;

bool validArgs(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH,
               std::uint64_t srcStride, std::int32_t w, std::int32_t h) {
    return src && srcW > 0 && srcH > 0 && w > 0 && h > 0 && w <= kMaxThumbSide &&
           h <= kMaxThumbSide && srcStride >= static_cast<std::uint64_t>(srcW) * 3;
}

Thumbnail blank(std::int32_t w, std::int32_t h) {
    Thumbnail t;
    t.width = w;
    t.height = h;
    t.pixels.assign(Thumbnail::stride(w) * static_cast<std::uint64_t>(h), 0);
    return t;
}

std::uint8_t toByte(float v) {
    const float r = v + 0.5f;
    if (!(r > 0.0f))
        return 0;
    return r >= 255.0f ? 255 : static_cast<std::uint8_t>(r);
}

// The source pixels under one output pixel's footprint [k × f, (k + 1) × f), each with the
// fraction of it that the footprint covers.
struct Spans {
    std::vector<std::int32_t> first; // per output index
    std::vector<std::int32_t> count;
    std::vector<std::int32_t> offset; // into weights
    std::vector<float> weights;

    Spans(std::int32_t out, std::int32_t in, float f) {
        first.resize(static_cast<std::size_t>(out));
        count.resize(static_cast<std::size_t>(out));
        offset.resize(static_cast<std::size_t>(out));
        for (std::int32_t k = 0; k < out; ++k) {
            const float lo = static_cast<float>(k) * f;
            const float hi = std::min(static_cast<float>(k + 1) * f, static_cast<float>(in));
            const auto i0 = std::min(static_cast<std::int32_t>(lo), in - 1);
            const auto i1 = std::clamp(static_cast<std::int32_t>(std::ceil(hi)), i0 + 1, in);
            first[static_cast<std::size_t>(k)] = i0;
            count[static_cast<std::size_t>(k)] = i1 - i0;
            offset[static_cast<std::size_t>(k)] = static_cast<std::int32_t>(weights.size());
            for (std::int32_t i = i0; i < i1; ++i) {
                const float a = std::max(static_cast<float>(i), lo);
                const float b = std::min(static_cast<float>(i + 1), hi);
                weights.push_back(std::max(0.0f, b - a));
            }
        }
    }
};

// sum[k] += weight × bytes[k]: the bulk of a shrink, so sixteen bytes at a time.
void addWeighted(float* sum, const std::uint8_t* bytes, std::size_t n, float weight) {
    std::size_t k = 0;
#if defined(__SSE2__)
    const __m128 wv = _mm_set1_ps(weight);
    const __m128i zero = _mm_setzero_si128();
    for (; k + 16 <= n; k += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + k));
        const __m128i lo = _mm_unpacklo_epi8(v, zero);
        const __m128i hi = _mm_unpackhi_epi8(v, zero);
        const __m128i quarters[4] = {_mm_unpacklo_epi16(lo, zero), _mm_unpackhi_epi16(lo, zero),
                                     _mm_unpacklo_epi16(hi, zero), _mm_unpackhi_epi16(hi, zero)};
        for (int q = 0; q < 4; ++q) {
            float* s = sum + k + 4 * q;
            _mm_storeu_ps(
                s, _mm_add_ps(_mm_loadu_ps(s), _mm_mul_ps(wv, _mm_cvtepi32_ps(quarters[q]))));
        }
    }
#endif
    for (; k < n; ++k)
        sum[k] += weight * static_cast<float>(bytes[k]);
}

Thumbnail areaMean(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH,
                   std::uint64_t srcStride, std::int32_t w, std::int32_t h, float fx, float fy) {
    Thumbnail t = blank(w, h);
    const Spans cols(w, srcW, fx);
    const Spans rows(h, srcH, fy);
    const float area = fx * fy;
    const auto srcBytes = static_cast<std::size_t>(srcW) * 3;
    // The rows under one output row are summed first, over contiguous bytes, so the weights
    // across are applied to one summed row only.
    std::vector<float> column(srcBytes);
    const std::uint64_t dstStride = Thumbnail::stride(w);
    for (std::int32_t y = 0; y < h; ++y) {
        const auto yi = static_cast<std::size_t>(y);
        std::fill(column.begin(), column.end(), 0.0f);
        for (std::int32_t r = 0; r < rows.count[yi]; ++r) {
            const float wy = rows.weights[static_cast<std::size_t>(rows.offset[yi] + r)];
            const std::uint8_t* row =
                src + static_cast<std::uint64_t>(rows.first[yi] + r) * srcStride;
            addWeighted(column.data(), row, srcBytes, wy);
        }
        std::uint8_t* out = t.pixels.data() + static_cast<std::uint64_t>(y) * dstStride;
        for (std::size_t x = 0; x < static_cast<std::size_t>(w); ++x) {
            const float* p = column.data() + static_cast<std::size_t>(cols.first[x]) * 3;
            const float* wx = cols.weights.data() + cols.offset[x];
            float b = 0, g = 0, red = 0;
            for (std::int32_t i = 0; i < cols.count[x]; ++i, p += 3) {
                b += wx[i] * p[0];
                g += wx[i] * p[1];
                red += wx[i] * p[2];
            }
            out[3 * x] = toByte(b / area);
            out[3 * x + 1] = toByte(g / area);
            out[3 * x + 2] = toByte(red / area);
        }
    }
    return t;
}

Thumbnail bilinear(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH,
                   std::uint64_t srcStride, std::int32_t w, std::int32_t h, float fx, float fy) {
    Thumbnail t = blank(w, h);
    std::vector<std::int32_t> x0(static_cast<std::size_t>(w)), x1(static_cast<std::size_t>(w));
    std::vector<float> ax(static_cast<std::size_t>(w));
    for (std::int32_t x = 0; x < w; ++x) {
        const float sx = static_cast<float>(x) * fx;
        const auto i = std::min(static_cast<std::int32_t>(sx), srcW - 1);
        x0[static_cast<std::size_t>(x)] = i;
        x1[static_cast<std::size_t>(x)] = std::min(i + 1, srcW - 1);
        ax[static_cast<std::size_t>(x)] = sx - static_cast<float>(i);
    }
    const std::uint64_t dstStride = Thumbnail::stride(w);
    for (std::int32_t y = 0; y < h; ++y) {
        const float sy = static_cast<float>(y) * fy;
        const auto j = std::min(static_cast<std::int32_t>(sy), srcH - 1);
        const float ay = sy - static_cast<float>(j);
        const std::uint8_t* r0 = src + static_cast<std::uint64_t>(j) * srcStride;
        const std::uint8_t* r1 =
            src + static_cast<std::uint64_t>(std::min(j + 1, srcH - 1)) * srcStride;
        std::uint8_t* out = t.pixels.data() + static_cast<std::uint64_t>(y) * dstStride;
        for (std::size_t x = 0; x < static_cast<std::size_t>(w); ++x) {
            const std::size_t a = static_cast<std::size_t>(x0[x]) * 3;
            const std::size_t b = static_cast<std::size_t>(x1[x]) * 3;
            for (int c = 0; c < 3; ++c) {
                const float top = r0[a + c] + ax[x] * (r0[b + c] - r0[a + c]);
                const float bottom = r1[a + c] + ax[x] * (r1[b + c] - r1[a + c]);
                out[3 * x + c] = toByte(top + ay * (bottom - top));
            }
        }
    }
    return t;
}

Thumbnail copy24(const std::uint8_t* src, std::int32_t w, std::int32_t h, std::uint64_t srcStride) {
    Thumbnail t = blank(w, h);
    const std::uint64_t stride = Thumbnail::stride(w);
    for (std::int32_t y = 0; y < h; ++y)
        std::memcpy(t.pixels.data() + static_cast<std::uint64_t>(y) * stride,
                    src + static_cast<std::uint64_t>(y) * srcStride,
                    static_cast<std::size_t>(w) * 3);
    return t;
}

// Nearest-neighbour stretch from 24-bit rows that `rowAt` hands out by memory row (0 the
// bottom); only the rows picked are asked for.
template <typename RowAt>
Thumbnail stretchRows(std::int32_t srcW, std::int32_t srcH, std::int32_t w, std::int32_t h,
                      RowAt&& rowAt) {
    Thumbnail t = blank(w, h);
    std::vector<std::size_t> column(static_cast<std::size_t>(w));
    for (std::int32_t x = 0; x < w; ++x)
        column[static_cast<std::size_t>(x)] =
            static_cast<std::size_t>(std::int64_t{x} * srcW / w) * 3;
    const std::uint64_t stride = Thumbnail::stride(w);
    // Rows are picked counting from the top, as a stretch onto the screen picks them.
    for (std::int32_t y = 0; y < h; ++y) {
        const std::int64_t fromTop = std::int64_t{h - 1 - y} * srcH / h;
        const std::uint8_t* row = rowAt(static_cast<std::int32_t>(srcH - 1 - fromTop));
        std::uint8_t* out = t.pixels.data() + static_cast<std::uint64_t>(y) * stride;
        for (std::size_t x = 0; x < column.size(); ++x)
            std::memcpy(out + 3 * x, row + column[x], 3);
    }
    return t;
}

struct Picture24 {
    const std::uint8_t* rows = nullptr; // bottom-up
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint64_t stride = 0;
};

Picture24 picture24(const PackedDib& dib) {
    const std::optional<DibLayout> l = DibLayout::read(dib.data(), dib.size());
    if (!l || l->bitCount != 24 || l->compressed() || l->topDown)
        return {};
    return {dib.data() + l->pixelOffset, l->width, l->height, l->stride};
}

} // namespace

QSize ThumbnailMaker::fit(std::int32_t w, std::int32_t h, std::int32_t boxW, std::int32_t boxH) {
    std::int64_t tw = boxW, th = boxH;
    if (w <= 0 || h <= 0 || boxW <= 0 || boxH <= 0) {
        tw = th = 1;
    } else if (w <= boxW && h <= boxH) {
        tw = w;
        th = h;
    } else if (static_cast<double>(w) / h > static_cast<double>(boxW) / boxH) {
        const std::int64_t margin = (boxH - std::int64_t{h} * boxW / w) / 2;
        th = boxH - 2 * margin;
    } else if (static_cast<double>(w) / h < static_cast<double>(boxW / boxH)) {
        // The box ratio is taken as a whole number here, which square boxes never notice.
        const std::int64_t margin = (boxW - std::int64_t{w} * boxH / h) / 2;
        tw = boxW - 2 * margin;
    }
    return {static_cast<int>(std::max<std::int64_t>(1, tw)),
            static_cast<int>(std::max<std::int64_t>(1, th))};
}

Thumbnail ThumbnailMaker::scale24(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH,
                                  std::uint64_t srcStride, std::int32_t w, std::int32_t h) {
    if (!validArgs(src, srcW, srcH, srcStride, w, h))
        return {};
    const float fx = static_cast<float>(srcW) / static_cast<float>(w);
    const float fy = static_cast<float>(srcH) / static_cast<float>(h);
    if (w < srcW && h < srcH)
        return areaMean(src, srcW, srcH, srcStride, w, h, fx, fy);
    return bilinear(src, srcW, srcH, srcStride, w, h, fx, fy);
}

Thumbnail ThumbnailMaker::stretch24(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH,
                                    std::uint64_t srcStride, std::int32_t w, std::int32_t h) {
    if (!validArgs(src, srcW, srcH, srcStride, w, h))
        return {};
    return stretchRows(srcW, srcH, w, h, [&](std::int32_t y) {
        return src + static_cast<std::uint64_t>(y) * srcStride;
    });
}

ThumbnailMaker::Result ThumbnailMaker::make(const QString& path) {
    Result r;
    ImageIoParams params{};
    ImageLibFullInfo full{};
    // A reduced decode (JPEG's DCT scaling) still covers twice the large box.
    PackedDib dib = dibFromImageLib(ImageLib_OpenScaled(filenames::encode(path).constData(),
                                                        &params, kLargeBox, kLargeBox, &full));
    if (!dib)
        return r;
    const std::optional<DibLayout> layout = DibLayout::read(dib.data(), dib.size());
    if (!layout)
        return r;
    const std::int32_t imageW = full.width > 0 ? full.width : layout->width;
    const std::int32_t imageH = full.height > 0 ? full.height : layout->height;
    const QSize large = fit(imageW, imageH, kLargeBox, kLargeBox);
    const QSize small = fit(imageW, imageH, kSmallBox, kSmallBox);

    const bool depth24 = layout->bitCount == 24 && !layout->compressed();
    PackedDib converted;
    Picture24 pic = depth24 ? picture24(dib) : Picture24{};
    if (depth24 && !pic.rows) {
        converted = dibToRgb24(dib);
        pic = picture24(converted);
        if (!pic.rows)
            return r;
    }
    // Other depths are stretched a picked row at a time, never turned into a whole 24-bit
    // copy first.
    const Rgb24Rows rows(dib);
    if (!depth24 && !rows.valid())
        return r;
    std::vector<std::uint8_t> rowBuffer(depth24 ? 0 : static_cast<std::size_t>(rows.width()) * 3);
    const auto thumb = [&](QSize size) -> Thumbnail {
        if (!depth24)
            return stretchRows(rows.width(), rows.height(), size.width(), size.height(),
                               [&](std::int32_t y) {
                                   rows.read(y, rowBuffer.data());
                                   return rowBuffer.data();
                               });
        if (size.width() == pic.width && size.height() == pic.height)
            return copy24(pic.rows, pic.width, pic.height, pic.stride);
        return scale24(pic.rows, pic.width, pic.height, pic.stride, size.width(), size.height());
    };
    r.large = thumb(large);
    r.small = thumb(small);
    r.imageWidth = imageW;
    r.imageHeight = imageH;
    r.bitsPerPixel =
        static_cast<std::uint32_t>(full.bitCount > 0 ? full.bitCount : layout->bitCount);
    return r;
}

} // namespace lanmira
