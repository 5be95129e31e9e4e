#pragma once

#include <QPoint>
#include <QRect>

#include <vector>

namespace lanmira {

// Where things lie on the histogram graph: the control's area less the 20-pixel scale strip
// at its bottom. Levels 0..255 span the width; counts are scaled to a channel's largest bin.
class HistogramGeometry {
public:
    static constexpr int kScaleStrip = 20;
    static constexpr int kMarkerReach = 2; // pixels each side of a marker that pick it up

    explicit HistogramGeometry(const QRect& control);

    QRect graph() const { return m_graph; }
    // Too narrow to draw levels or histograms on.
    bool usable() const { return m_graph.width() >= 4; }

    int xOfLevel(int level) const;
    // The level a dropped marker stands for: 0 below 1, 255 above 255.
    int levelOfX(int x) const;
    bool onMarker(int markerX, int x) const;

    // 256 bin points and the two bottom corners; empty when the channel is all zero.
    std::vector<QPoint> polygon(const double* bins) const;
    // The scale ticks' x for 50, 100, 150 and 200.
    int tickX(int value) const;

private:
    QRect m_graph;
};

} // namespace lanmira
