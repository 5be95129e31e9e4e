#include "camera/view/FrameScaler.h"

#include <cstring>

namespace lanmira {

void FrameScaler::rebuildMaps(int width, int height, QSize shown) {
    m_columns.resize(static_cast<std::size_t>(shown.width()));
    for (int x = 0; x < shown.width(); ++x)
        m_columns[static_cast<std::size_t>(x)] =
            static_cast<int>(static_cast<std::int64_t>(x) * width / shown.width()) * 3;
    m_rows.resize(static_cast<std::size_t>(shown.height()));
    for (int y = 0; y < shown.height(); ++y)
        m_rows[static_cast<std::size_t>(y)] =
            static_cast<int>(static_cast<std::int64_t>(y) * height / shown.height());
    m_width = width;
    m_height = height;
}

const QImage& FrameScaler::scale(const std::uint8_t* bgr, int width, int height, int stride,
                                 QSize shown) {
    if (!bgr || width <= 0 || height <= 0 || shown.isEmpty()) {
        m_image = QImage();
        return m_image;
    }
    if (m_image.size() != shown || m_image.format() != QImage::Format_RGB32)
        m_image = QImage(shown, QImage::Format_RGB32);
    if (m_image.isNull())
        return m_image;
    if (m_width != width || m_height != height ||
        static_cast<int>(m_columns.size()) != shown.width() ||
        static_cast<int>(m_rows.size()) != shown.height())
        rebuildMaps(width, height, shown);

    const int* columns = m_columns.data();
    const int count = shown.width();
    int lastRow = -1;
    for (int y = 0; y < shown.height(); ++y) {
        auto* out = reinterpret_cast<std::uint32_t*>(m_image.scanLine(y));
        const int sourceRow = m_rows[static_cast<std::size_t>(y)];
        if (sourceRow == lastRow) {
            // Enlarged pictures repeat rows: copy the one just made.
            std::memcpy(out, m_image.constScanLine(y - 1), static_cast<std::size_t>(count) * 4);
            continue;
        }
        lastRow = sourceRow;
        const std::uint8_t* in = bgr + static_cast<std::ptrdiff_t>(sourceRow) * stride;
        for (int x = 0; x < count; ++x) {
            const std::uint8_t* p = in + columns[x];
            out[x] = 0xFF000000u | (std::uint32_t(p[2]) << 16) | (std::uint32_t(p[1]) << 8) | p[0];
        }
    }
    return m_image;
}

} // namespace lanmira
