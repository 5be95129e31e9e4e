#include "imagelib/core/BoxShrinker.h"

#include "imagelib/imagelib.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace imagelib {
namespace {

// 256 x 256 sums of 16-bit samples still fit 32 bits; a larger factor only shrinks less.
constexpr std::uint32_t kMaxFactor = 256;

template <typename T> inline T load(const std::uint8_t* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// Adds one row of samples to the sums below them. Eight at a time, with no aliasing possible,
// lets the compiler keep the adds in vector registers: this loop touches every sample.
template <typename T>
void addDown(std::uint32_t* __restrict sums, const std::uint8_t* __restrict row,
             std::size_t count) {
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8)
        for (std::size_t j = 0; j < 8; ++j)
            sums[i + j] += load<T>(row + (i + j) * sizeof(T));
    for (; i < count; ++i)
        sums[i] += load<T>(row + i * sizeof(T));
}

} // namespace

std::uint32_t BoxShrinker::factorFor(std::uint32_t width, std::uint32_t height, int boxWidth,
                                     int boxHeight) {
    if ((boxWidth <= 0 && boxHeight <= 0) || width == 0 || height == 0)
        return 1;
    // ceil(size / k) >= 2 * box  <=>  k <= (size - 1) / (2 * box - 1)
    const auto largest = [](std::uint32_t size, int box) -> std::uint64_t {
        if (box <= 0)
            return kMaxFactor;
        return (std::uint64_t{size} - 1) / (2 * static_cast<std::uint64_t>(box) - 1);
    };
    const std::uint64_t k =
        std::min({largest(width, boxWidth), largest(height, boxHeight), std::uint64_t{kMaxFactor}});
    return k >= 2 ? static_cast<std::uint32_t>(k) : 1;
}

bool BoxShrinker::start(const Shape& shape, std::string& error) {
    m_shape = shape;
    Shape& s = m_shape;
    s.factor = std::clamp<std::uint32_t>(s.factor, 1, kMaxFactor);
    s.channels = s.channels == 1 ? 1 : 3;
    s.bitsPerSample = s.bitsPerSample == 16 ? 16 : 8;
    s.bandRows = std::max(s.bandRows, 1u);
    s.blockWidth = std::clamp<std::uint32_t>(s.blockWidth, 1, std::max(s.width, 1u));
    s.samplesPerPixel = std::max(s.samplesPerPixel, 1u);
    m_outWidth = (s.width + s.factor - 1) / s.factor;
    m_outHeight = (s.height + s.factor - 1) / s.factor;
    m_dib = DibBuffer::create(m_outWidth, m_outHeight, s.channels == 1 ? 8 : 24,
                              s.channels == 1 ? 256 : 0, error);
    if (!m_dib)
        return false;
    // A band of rows starting anywhere touches at most this many output rows.
    m_heldRows = std::min(m_outHeight, (s.bandRows - 1) / s.factor + 2);
    m_firstHeld = 0;
    m_columnCount = std::size_t{s.blockWidth} *
                    std::max<std::size_t>(s.samplesPerPixel, static_cast<std::size_t>(s.channels));
    m_columns.reset(new (std::nothrow) std::uint32_t[m_columnCount]);
    m_sums.reset(new (std::nothrow)
                     std::uint32_t[std::size_t{m_heldRows} * m_outWidth * s.channels]());
    m_down.reset(new (std::nothrow) std::uint32_t[std::size_t{s.width} * s.channels]());
    if (!m_columns || !m_sums || !m_down) {
        m_dib = {};
        error = "There is not enough memory to open the image.";
        return false;
    }
    return true;
}

void BoxShrinker::addBlock(std::uint32_t y0, std::uint32_t rows, std::uint32_t x0,
                           std::uint32_t cols, const std::uint8_t* const* channel,
                           std::size_t rowBytes, std::size_t step) {
    if (m_shape.bitsPerSample == 16)
        addBlockOf<std::uint16_t>(y0, rows, x0, cols, channel, rowBytes, step);
    else
        addBlockOf<std::uint8_t>(y0, rows, x0, cols, channel, rowBytes, step);
}

template <typename T>
void BoxShrinker::addBlockOf(std::uint32_t y0, std::uint32_t rows, std::uint32_t x0,
                             std::uint32_t cols, const std::uint8_t* const* channel,
                             std::size_t rowBytes, std::size_t step) {
    const Shape& s = m_shape;
    const int n = s.channels;
    if (rows == 0 || cols == 0 || step == 0 || x0 >= s.width || cols > s.width - x0 ||
        y0 >= s.height || rows > s.height - y0 || y0 / s.factor < m_firstHeld)
        return; // callers feed whole blocks in band order; anything else is ignored
    // Interleaved channels are summed down as one run of samples; separate planes run apart.
    bool interleaved = true;
    for (int c = 1; c < n; ++c)
        interleaved = interleaved && channel[c] == channel[0] + c * sizeof(T);
    const int runs = interleaved ? 1 : n;
    const std::size_t runLength = (std::size_t{cols} - 1) * step + (interleaved ? n : 1);
    if (runLength * runs > m_columnCount)
        return;
    std::size_t at[3];
    for (int c = 0; c < n; ++c)
        at[c] = interleaved ? static_cast<std::size_t>(c) : c * runLength;

    std::uint32_t* columns = m_columns.get();
    for (std::uint32_t r = 0; r < rows;) {
        const std::uint32_t outRow = (y0 + r) / s.factor;
        const std::uint32_t held = outRow - m_firstHeld;
        if (held >= m_heldRows)
            return;
        const std::uint32_t groupEnd = std::min(rows, (outRow + 1) * s.factor - y0);
        std::fill(columns, columns + runLength * runs, 0u);
        for (int run = 0; run < runs; ++run)
            for (std::uint32_t i = r; i < groupEnd; ++i)
                addDown<T>(columns + run * runLength, channel[run] + i * rowBytes, runLength);
        r = groupEnd;

        std::uint32_t* sums = m_sums.get() + std::size_t{held} * m_outWidth * n;
        for (std::uint32_t x = 0; x < cols;) {
            const std::uint32_t out = (x0 + x) / s.factor;
            const std::uint32_t stop = std::min(cols, (out + 1) * s.factor - x0);
            std::uint32_t sum[3] = {0, 0, 0};
            for (; x < stop; ++x)
                for (int c = 0; c < n; ++c)
                    sum[c] += columns[at[c] + x * step];
            for (int c = 0; c < n; ++c)
                sums[std::size_t{out} * n + c] += sum[c];
        }
    }
}

namespace {

thread_local const std::atomic<std::int32_t>* t_stopWord = nullptr;
thread_local std::int32_t t_stopValue = 0;
thread_local bool t_gaveUp = false;

} // namespace

bool reducedDecodeStopped() {
    if (t_stopWord && t_stopWord->load(std::memory_order_relaxed) == t_stopValue)
        t_gaveUp = true;
    return t_gaveUp;
}

void startReducedDecode() {
    t_gaveUp = false;
}

bool BoxShrinker::addRow(std::uint32_t y, const std::uint8_t* samples) {
    const Shape& s = m_shape;
    // Checked every output row: often enough to stop within milliseconds, rarely enough
    // to cost nothing.
    if (y % s.factor == 0 && reducedDecodeStopped())
        return false;
    if (y >= s.height || y / s.factor != m_firstHeld)
        return true; // rows out of order are ignored, as blocks are
    const std::size_t count = std::size_t{s.width} * s.channels;
    std::uint32_t* down = m_down.get();
    if (s.bitsPerSample == 16)
        addDown<std::uint16_t>(down, samples, count);
    else
        addDown<std::uint8_t>(down, samples, count);
    if ((y + 1) % s.factor != 0 && y + 1 != s.height)
        return true;
    std::uint32_t* sums = m_sums.get();
    const int n = s.channels;
    for (std::uint32_t out = 0, x = 0; out < m_outWidth; ++out) {
        const std::uint32_t stop = std::min(s.width, x + s.factor);
        for (; x < stop; ++x)
            for (int c = 0; c < n; ++c)
                sums[std::size_t{out} * n + c] += down[std::size_t{x} * n + c];
    }
    std::fill(down, down + count, 0u);
    rowsDone(y + 1);
    return true;
}

void BoxShrinker::rowsDone(std::uint32_t y) {
    std::uint32_t done = y >= m_shape.height ? m_outHeight : y / m_shape.factor;
    done = std::min(done, m_firstHeld + m_heldRows);
    if (done <= m_firstHeld)
        return;
    const std::uint32_t finished = done - m_firstHeld;
    const std::size_t rowLength = std::size_t{m_outWidth} * m_shape.channels;
    for (std::uint32_t i = 0; i < finished; ++i)
        emit(m_firstHeld + i, m_sums.get() + i * rowLength);
    std::uint32_t* sums = m_sums.get();
    std::memmove(sums, sums + finished * rowLength,
                 (m_heldRows - finished) * rowLength * sizeof *sums);
    std::fill(sums + (m_heldRows - finished) * rowLength, sums + m_heldRows * rowLength, 0u);
    m_firstHeld = done;
}

void BoxShrinker::emit(std::uint32_t outRow, const std::uint32_t* sums) {
    const Shape& s = m_shape;
    const std::uint64_t max = s.bitsPerSample == 16 ? 65535 : 255;
    const std::uint32_t rows = std::min(s.factor, s.height - outRow * s.factor);
    std::uint8_t* out = m_dib.topRow(static_cast<int>(outRow));
    for (std::uint32_t x = 0; x < m_outWidth; ++x) {
        const std::uint64_t n = std::uint64_t{rows} * std::min(s.factor, s.width - x * s.factor);
        // The mean brought to 8 bits with one rounding: sum * 255 / (n * max), to nearest.
        const std::uint64_t whole = n * max;
        for (int c = 0; c < s.channels; ++c) {
            std::uint64_t v = sums[std::size_t{x} * s.channels + c];
            if (s.invert)
                v = whole - v;
            const auto level = static_cast<std::uint8_t>((2 * 255 * v + whole) / (2 * whole));
            if (s.channels == 1)
                out[x] = level;
            else
                out[3 * std::size_t{x} + 2 - c] = level; // the bitmap holds blue first
        }
    }
}

} // namespace imagelib

extern "C" void ImageLib_SetStopWord(const std::atomic<std::int32_t>* word,
                                     std::int32_t stopValue) {
    imagelib::t_stopWord = word;
    imagelib::t_stopValue = stopValue;
}

extern "C" int ImageLib_GaveUp() {
    return imagelib::t_gaveUp ? 1 : 0;
}
