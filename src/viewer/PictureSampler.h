#pragma once

#include "acquire/PackedDib.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <cstdint>
#include <vector>

namespace lanmira {

// Scales a packed picture for the screen or the printer: nearest pixel for a quick first
// version and for enlarging, the mean of each covered box for a reduced picture.
class PictureSampler {
public:
    // The rows the sampler reads: the picture's own, or a 24-bit copy for what it cannot
    // read directly (16 bits, bit fields, compression, top-down rows, core headers).
    struct Source {
        const std::uint8_t* bottomRow = nullptr;
        qsizetype stride = 0;
        int width = 0;
        int height = 0;
        int bitCount = 0;
        QRgb palette[256] = {};
    };

    // `generation` tells pictures apart: a 24-bit copy made for one is kept until it
    // changes. False when the picture's header cannot be read.
    bool read(const PackedDib& picture, std::uint64_t generation, Source& source);
    // Drops the 24-bit copy.
    void forget() { m_converted.reset(); }

    // The part `part` (in displayed-picture coordinates) of the picture scaled to
    // `displayed`, into `out`.
    void sampleNearest(const Source& source, QSize displayed, QRect part, QImage& out);
    void sampleSmooth(const Source& source, QSize displayed, QRect part, QImage& out);

private:
    const std::uint8_t* bgrRow(const Source& source, int sourceRow, int from, int to);

    PackedDib m_converted;
    std::uint64_t m_convertedGeneration = 0;
    std::vector<std::uint32_t> m_columns; // per display column: source byte offset
    std::vector<std::uint16_t> m_sums;    // smoothing: one row of column sums
    std::vector<std::uint8_t> m_expanded; // smoothing: one source row as 24-bit
};

} // namespace lanmira
