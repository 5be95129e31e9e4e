#pragma once

#include "camera/panels/HistogramLevels.h"

#include <QWidget>

#include <array>

namespace lanmira {

// What the histogram graph draws: the four channels' bins, the levels and which channel
// the user works on.
struct HistogramPicture {
    std::array<std::array<double, 256>, 4> bins{}; // blue, green, red, grey
    HistogramLevels levels;
    int channel = HistogramLevels::kAllColours;
    bool grey = false;     // the camera delivers grey output
    bool attached = false; // without a camera only the frame and the scale are drawn
};

// The histogram with its scale and the two level markers, which can be dragged.
class CHistogramGraph final : public QWidget {
    Q_OBJECT
public:
    explicit CHistogramGraph(QWidget* parent = nullptr);

    HistogramPicture& picture() { return m_picture; }
    const HistogramPicture& picture() const { return m_picture; }

    // Draws the whole graph into `area`; the widget paints through it off-screen.
    static void paintGraph(QPainter& painter, const QRect& area, const HistogramPicture& picture,
                           int dragging, int dragX);

Q_SIGNALS:
    // A marker was dropped at a level: low true for the low edge.
    void markerDropped(bool low, int level);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    enum Drag { None = 0, Low = 1, High = 2 };
    // The marker under x that may be dragged now, or None.
    Drag markerAt(int x) const;

    HistogramPicture m_picture;
    Drag m_drag = None;
    int m_dragX = 0;
};

} // namespace lanmira
