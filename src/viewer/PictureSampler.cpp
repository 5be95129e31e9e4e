#include "viewer/PictureSampler.h"

#include "acquire/DibLayout.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace lanmira {

namespace {

constexpr QRgb kOpaque = 0xFF000000u;

// The source column or row that display position `d` of `displayed` falls on.
int sourceIndex(int d, int source, int displayed) {
    const auto s = static_cast<std::int64_t>(d) * source / displayed;
    return static_cast<int>(std::min<std::int64_t>(s, source - 1));
}

// The box of source positions that display position `d` averages: at least one.
std::pair<int, int> sourceBox(int d, int source, int displayed) {
    const int from = sourceIndex(d, source, displayed);
    const auto to = static_cast<int>(static_cast<std::int64_t>(d + 1) * source / displayed);
    return {from, std::max(from + 1, std::min(to, source))};
}

// Sums of the box's rows are kept in 16 bits: at most this many rows of 255 fit.
constexpr int kMaxBoxRows = 257;

// sums[k] += row[k]: the bulk of the averaging, so 16 bytes at a time.
void addRow(std::uint16_t* sums, const std::uint8_t* row, std::size_t n) {
    std::size_t k = 0;
#if defined(__GNUC__)
    using Bytes = std::uint8_t __attribute__((vector_size(16)));
    using Words = std::uint16_t __attribute__((vector_size(32)));
    for (; k + 16 <= n; k += 16) {
        Bytes b;
        Words w;
        std::memcpy(&b, row + k, sizeof b);
        std::memcpy(&w, sums + k, sizeof w);
        w += __builtin_convertvector(b, Words);
        std::memcpy(sums + k, &w, sizeof w);
    }
#endif
    for (; k < n; ++k)
        sums[k] = static_cast<std::uint16_t>(sums[k] + row[k]);
}

} // namespace

bool PictureSampler::read(const PackedDib& picture, std::uint64_t generation, Source& source) {
    auto layout = DibLayout::read(picture.data(), picture.size());
    if (!layout)
        return false;
    const int depth = layout->bitCount;
    const bool direct = !layout->coreHeader && !layout->topDown &&
                        layout->compression == DibLayout::kRgb &&
                        (depth == 1 || depth == 4 || depth == 8 || depth == 24 || depth == 32);
    const std::uint8_t* block = picture.data();
    std::uint64_t offset = 0;
    if (direct) {
        // The rows lie where drawing has always looked for them; a block too short for
        // that falls back to where they really are.
        offset = dibPixelOffsetForDrawing(picture);
        if (offset + layout->stride * static_cast<std::uint64_t>(layout->height) > picture.size())
            offset = layout->pixelOffset;
        std::fill(std::begin(source.palette), std::end(source.palette), kOpaque);
        const std::uint8_t* table = block + layout->headerSize + layout->maskBytes;
        for (std::uint32_t i = 0; i < layout->usablePaletteEntries(); ++i)
            source.palette[i] = qRgb(table[4 * i + 2], table[4 * i + 1], table[4 * i]);
    } else {
        if (m_convertedGeneration != generation) {
            m_converted = dibToRgb24(picture);
            m_convertedGeneration = generation;
        }
        layout = DibLayout::read(m_converted.data(), m_converted.size());
        if (!layout)
            return false;
        block = m_converted.data();
        offset = layout->pixelOffset;
    }
    source.bottomRow = block + offset;
    source.stride = static_cast<qsizetype>(layout->stride);
    source.width = layout->width;
    source.height = layout->height;
    source.bitCount = layout->bitCount;
    return true;
}

void PictureSampler::sampleNearest(const Source& source, QSize displayed, QRect part, QImage& out) {
    if (out.size() != part.size() || out.format() != QImage::Format_RGB32)
        out = QImage(part.size(), QImage::Format_RGB32);
    if (out.isNull())
        return;
    const int bytesPerPixel = source.bitCount / 8;
    m_columns.resize(static_cast<std::size_t>(part.width()));
    for (int i = 0; i < part.width(); ++i) {
        const int sx = sourceIndex(part.left() + i, source.width, displayed.width());
        // Whole bytes for 24 and 32 bits; the pixel index for the palette depths.
        m_columns[i] = static_cast<std::uint32_t>(bytesPerPixel >= 3 ? sx * bytesPerPixel : sx);
    }
    const std::uint32_t* cols = m_columns.data();
    const QRgb* palette = source.palette;
    const int n = part.width();
    int lastRow = -1;
    for (int j = 0; j < part.height(); ++j) {
        auto* dst = reinterpret_cast<QRgb*>(out.scanLine(j));
        const int sy = sourceIndex(part.top() + j, source.height, displayed.height());
        if (sy == lastRow) {
            // Enlarged pictures repeat rows.
            std::memcpy(dst, out.constScanLine(j - 1), static_cast<std::size_t>(n) * 4);
            continue;
        }
        lastRow = sy;
        const std::uint8_t* row = source.bottomRow + (source.height - 1 - sy) * source.stride;
        switch (source.bitCount) {
        case 24:
        case 32:
            for (int i = 0; i < n; ++i) {
                const std::uint8_t* p = row + cols[i];
                dst[i] = kOpaque | (QRgb{p[2]} << 16) | (QRgb{p[1]} << 8) | p[0];
            }
            break;
        case 8:
            for (int i = 0; i < n; ++i)
                dst[i] = palette[row[cols[i]]];
            break;
        case 4:
            for (int i = 0; i < n; ++i) {
                const std::uint32_t x = cols[i];
                const std::uint8_t v = row[x >> 1];
                dst[i] = palette[(x & 1) ? (v & 15) : (v >> 4)];
            }
            break;
        case 1:
            for (int i = 0; i < n; ++i) {
                const std::uint32_t x = cols[i];
                dst[i] = palette[(row[x >> 3] >> (7 - (x & 7))) & 1];
            }
            break;
        default:
            break;
        }
    }
}

const std::uint8_t* PictureSampler::bgrRow(const Source& source, int sourceRow, int from, int to) {
    const std::uint8_t* row = source.bottomRow + (source.height - 1 - sourceRow) * source.stride;
    if (source.bitCount == 24)
        return row + from * 3;
    m_expanded.resize(static_cast<std::size_t>(to - from) * 3);
    std::uint8_t* out = m_expanded.data();
    for (int x = from; x < to; ++x, out += 3) {
        QRgb c = 0;
        switch (source.bitCount) {
        case 32:
            out[0] = row[4 * x];
            out[1] = row[4 * x + 1];
            out[2] = row[4 * x + 2];
            continue;
        case 8:
            c = source.palette[row[x]];
            break;
        case 4:
            c = source.palette[(x & 1) ? (row[x >> 1] & 15) : (row[x >> 1] >> 4)];
            break;
        case 1:
            c = source.palette[(row[x >> 3] >> (7 - (x & 7))) & 1];
            break;
        default:
            break;
        }
        out[0] = static_cast<std::uint8_t>(qBlue(c));
        out[1] = static_cast<std::uint8_t>(qGreen(c));
        out[2] = static_cast<std::uint8_t>(qRed(c));
    }
    return m_expanded.data();
}

void PictureSampler::sampleSmooth(const Source& source, QSize displayed, QRect part, QImage& out) {
    if (out.size() != part.size() || out.format() != QImage::Format_RGB32)
        out = QImage(part.size(), QImage::Format_RGB32);
    if (out.isNull() || part.isEmpty())
        return;
    if (source.height / displayed.height() >= kMaxBoxRows - 1) {
        sampleNearest(source, displayed, part, out);
        return;
    }
    // Each display pixel is the mean of the box of source pixels it covers: first the
    // box's rows are summed column by column, then each box's columns.
    const int first = sourceBox(part.left(), source.width, displayed.width()).first;
    const int end = sourceBox(part.right(), source.width, displayed.width()).second;
    const auto span = static_cast<std::size_t>(end - first) * 3;
    m_sums.resize(span);
    m_columns.resize(static_cast<std::size_t>(part.width()) + 1);
    for (int i = 0; i < part.width(); ++i)
        m_columns[i] = static_cast<std::uint32_t>(
            sourceBox(part.left() + i, source.width, displayed.width()).first - first);
    m_columns[part.width()] = static_cast<std::uint32_t>(end - first);
    for (int j = 0; j < part.height(); ++j) {
        const auto [y0, y1] = sourceBox(part.top() + j, source.height, displayed.height());
        std::uint16_t* sums = m_sums.data();
        std::fill(sums, sums + span, std::uint16_t{0});
        for (int y = y0; y < y1; ++y)
            addRow(sums, bgrRow(source, y, first, end), span);
        auto* dst = reinterpret_cast<QRgb*>(out.scanLine(j));
        const int rows = y1 - y0;
        int lastCount = 0;
        std::uint64_t reciprocal = 0;
        for (int i = 0; i < part.width(); ++i) {
            const std::uint32_t x0 = m_columns[i];
            // Each box ends where the next one begins.
            const std::uint32_t x1 = std::max(x0 + 1, m_columns[i + 1]);
            std::uint32_t b = 0, g = 0, r = 0;
            for (std::uint32_t x = x0; x < x1; ++x) {
                b += sums[3 * x];
                g += sums[3 * x + 1];
                r += sums[3 * x + 2];
            }
            const int count = static_cast<int>(x1 - x0) * rows;
            if (count != lastCount) {
                lastCount = count;
                reciprocal = ((std::uint64_t{1} << 32) + count / 2) / count;
            }
            const auto mean = [&](std::uint32_t sum) {
                return std::min<QRgb>(255,
                                      static_cast<QRgb>((sum * reciprocal + (1ull << 31)) >> 32));
            };
            dst[i] = kOpaque | (mean(r) << 16) | (mean(g) << 8) | mean(b);
        }
    }
}

} // namespace lanmira
