#include "camera/panels/HistogramGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace lanmira {

HistogramGeometry::HistogramGeometry(const QRect& control)
    : m_graph(control.left(), control.top(), control.width(),
              std::max(0, control.height() - kScaleStrip)) {}

int HistogramGeometry::xOfLevel(int level) const {
    return m_graph.left() + static_cast<int>(static_cast<long long>(level) * m_graph.width() / 255);
}

int HistogramGeometry::levelOfX(int x) const {
    if (m_graph.width() <= 0)
        return 0;
    const long long v = static_cast<long long>(x - m_graph.left()) * 255 / m_graph.width();
    if (v < 1)
        return 0;
    if (v > 255)
        return 255;
    return static_cast<int>(v);
}

bool HistogramGeometry::onMarker(int markerX, int x) const {
    return std::abs(x - markerX) <= kMarkerReach;
}

int HistogramGeometry::tickX(int value) const {
    return m_graph.left() + m_graph.width() * value / 255;
}

std::vector<QPoint> HistogramGeometry::polygon(const double* bins) const {
    const double largest = *std::max_element(bins, bins + 256);
    if (!(largest > 0.0))
        return {};
    const int left = m_graph.left();
    const int width = m_graph.width();
    const int height = m_graph.height();
    // One past the last row, so a full bin reaches the top row and an empty one the last.
    const int bottom = m_graph.top() + height;
    std::vector<QPoint> points;
    points.reserve(258);
    for (int i = 0; i < 256; ++i) {
        const int x = left + static_cast<int>(std::trunc(i * width / 255.0));
        const int y = bottom - static_cast<int>(std::trunc(bins[i] / largest * height)) - 1;
        points.emplace_back(x, y);
    }
    points.emplace_back(left + width, bottom);
    points.emplace_back(left, bottom);
    return points;
}

} // namespace lanmira
