#pragma once

#include <QImage>
#include <QSize>

#include <cstdint>
#include <vector>

namespace lanmira {

// Scales packed BGR rows to an RGB32 picture of the shown size, nearest neighbour, the
// way the live picture is drawn. Faster than handing the frame to QPainter, which would
// convert the whole full-size frame before scaling it down.
class FrameScaler {
public:
    // `bgr`: top-down rows of width x height pixels, `stride` bytes apart.
    const QImage& scale(const std::uint8_t* bgr, int width, int height, int stride, QSize shown);

    const QImage& image() const { return m_image; }

private:
    void rebuildMaps(int width, int height, QSize shown);

    QImage m_image;
    std::vector<int> m_columns; // source byte offset of each shown column
    std::vector<int> m_rows;    // source row of each shown row
    int m_width = 0, m_height = 0;
};

} // namespace lanmira
