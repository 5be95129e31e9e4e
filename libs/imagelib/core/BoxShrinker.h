#pragma once

#include "imagelib/core/Dib.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace imagelib {

// Turns the rows, strips or tiles of an 8- or 16-bit grey or RGB picture into a picture `factor`
// times smaller on each side: every output pixel is the mean of its factor x factor block of
// samples. Only the output, one block row of column sums and the output rows a band of blocks
// touches are held, never the whole picture.
// Whether the calling thread's reduced decode was asked to give up; once true, remembered
// until the next reduced decode starts (see ImageLib_GaveUp).
bool reducedDecodeStopped();
void startReducedDecode();

class BoxShrinker {
public:
    struct Shape {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::uint32_t factor = 1;
        int channels = 3;                  // 1 for grey, 3 for RGB
        int bitsPerSample = 8;             // 8 or 16
        bool invert = false;               // samples count down from white
        std::uint32_t bandRows = 1;        // the most rows one strip or row of tiles holds
        std::uint32_t blockWidth = 0;      // the most columns one block holds
        std::uint32_t samplesPerPixel = 1; // of interleaved rows; 1 for separate planes
    };

    // The largest factor whose result still covers twice the box on each side (a zero side
    // asks nothing), or 1 when no reduction of at least two fits.
    static std::uint32_t factorFor(std::uint32_t width, std::uint32_t height, int boxWidth,
                                   int boxHeight);

    // Makes the output bitmap: 24 bits for three channels, or 8 bits with a 256-entry table
    // (left for the caller to fill) for one.
    bool start(const Shape& shape, std::string& error);
    // One strip or tile: rows y0 to y0 + rows - 1, columns x0 to x0 + cols - 1. Sample c of
    // pixel i of its row r lies at channel[c] + r * rowBytes + i * step samples, in machine
    // order.
    void addBlock(std::uint32_t y0, std::uint32_t rows, std::uint32_t x0, std::uint32_t cols,
                  const std::uint8_t* const* channel, std::size_t rowBytes, std::size_t step);
    // Every row above `y` has been added; output rows finished by then are written.
    void rowsDone(std::uint32_t y);
    // One whole row y of interleaved samples (channels of them a pixel). Rows come in order
    // from 0, and a picture is fed either by rows or by blocks, never both. The rows of an
    // output row are summed down first and folded across once, when the last of them is in.
    // False when the thread's stop word says to give up (see ImageLib_SetStopWord).
    [[nodiscard]] bool addRow(std::uint32_t y, const std::uint8_t* samples);
    DibBuffer& dib() { return m_dib; }

private:
    template <typename T>
    void addBlockOf(std::uint32_t y0, std::uint32_t rows, std::uint32_t x0, std::uint32_t cols,
                    const std::uint8_t* const* channel, std::size_t rowBytes, std::size_t step);
    void emit(std::uint32_t outRow, const std::uint32_t* sums);

    Shape m_shape;
    DibBuffer m_dib;
    std::unique_ptr<std::uint32_t[]> m_columns; // one block row's sums down each sample column
    std::size_t m_columnCount = 0;
    std::unique_ptr<std::uint32_t[]> m_sums; // m_heldRows rows of outWidth x channels sums
    std::unique_ptr<std::uint32_t[]> m_down; // addRow: sums down each sample column
    std::uint32_t m_outWidth = 0;
    std::uint32_t m_outHeight = 0;
    std::uint32_t m_heldRows = 0;
    std::uint32_t m_firstHeld = 0; // output row of m_sums' first row
};

} // namespace imagelib
