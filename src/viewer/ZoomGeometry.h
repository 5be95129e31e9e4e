#pragma once

#include <QRect>
#include <QSize>

namespace lanmira {

// The client area a fit is computed for, and the scroll bars the view shows now.
struct ViewClient {
    QSize size;
    bool horizontalBar = false;
    bool verticalBar = false;
    int horizontalBarHeight = 0; // the style's, added back when the bar is shown
    int verticalBarWidth = 0;
};

// The viewer's rational zoom factor and its automatic fitting. Every operation that may
// change what is shown returns true when the view must be repainted with its background.
class ZoomGeometry {
public:
    enum FitBits : int { kAutoShrink = 1, kAutoEnlarge = 2 };

    // v * num / den in 64 bits, rounded to the nearest integer, halves away from zero.
    static int mulDiv(int v, int num, int den);

    int zoomNum() const { return m_num; }
    int zoomDen() const { return m_den; }
    int fitMode() const { return m_fitMode; }
    bool locked() const { return m_locked; }
    bool actualSize() const { return m_num == m_den; }
    // zoomNum / zoomDen * 100 in single precision.
    float zoomPercent() const;

    QSize displayedSize(QSize picture) const;
    // Centred when smaller than the client; empty without a picture.
    QRect pictureRect(QSize picture, QSize client) const;

    // True when the displayed size changed.
    bool setZoom(int num, int den, QSize picture);
    // Nothing without a picture; the fit ignores the scroll bars the view shows now.
    bool bestFit(QSize picture, const ViewClient& client);
    // After a new picture, page or transform; always asks for a repaint.
    bool applyFitMode(QSize picture, const ViewClient& client);
    bool toggleAutoShrink(QSize picture, const ViewClient& client);
    bool toggleAutoEnlarge(QSize picture, const ViewClient& client);
    bool toggleLock(QSize picture, const ViewClient& client);

private:
    int m_num = 1;
    int m_den = 1;
    int m_fitMode = kAutoShrink;
    bool m_locked = false;
};

} // namespace lanmira
