#include "camera/pane/PaneIcons.h"

#include "camera/pane/PaneGroups.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <cmath>
#include <functional>

namespace lanmira {
namespace {

// Drawn rather than loaded, so they stay sharp at any scale and need no image files.
QIcon drawn(int size, const std::function<void(QPainter&)>& draw) {
    QIcon icon;
    for (int scale : {1, 2}) {
        QPixmap pixmap(size * scale, size * scale);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        p.scale(scale * size / 16.0, scale * size / 16.0);
        draw(p);
        p.end();
        pixmap.setDevicePixelRatio(scale);
        icon.addPixmap(pixmap);
    }
    return icon;
}

const QColor kInk(40, 60, 90);

void resolution(QPainter& p) {
    p.setPen(QPen(kInk, 1.2));
    p.drawRect(QRectF(1.5, 3.5, 13, 9));
    p.setBrush(kInk);
    p.drawRect(QRectF(3.5, 5.5, 5, 3.5));
}

void exposure(QPainter& p) {
    p.setPen(QPen(QColor(200, 130, 0), 1.4));
    p.setBrush(QColor(255, 200, 40));
    p.drawEllipse(QPointF(8, 8), 3.2, 3.2);
    for (int i = 0; i < 8; ++i) {
        const double a = i * M_PI / 4;
        p.drawLine(QPointF(8 + 5 * std::cos(a), 8 + 5 * std::sin(a)),
                   QPointF(8 + 7 * std::cos(a), 8 + 7 * std::sin(a)));
    }
}

void whiteBalance(QPainter& p) {
    p.setPen(QPen(kInk, 1));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(1.5, 1.5, 13, 13));
    p.setPen(QPen(QColor(220, 30, 30), 1.4));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(4.5, 4.5, 7, 7));
}

void colourAdjust(QPainter& p) {
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(230, 40, 40, 200));
    p.drawEllipse(QPointF(8, 5.5), 4, 4);
    p.setBrush(QColor(40, 200, 40, 200));
    p.drawEllipse(QPointF(5.5, 10), 4, 4);
    p.setBrush(QColor(40, 80, 230, 200));
    p.drawEllipse(QPointF(10.5, 10), 4, 4);
}

void lightSource(QPainter& p) {
    p.setPen(QPen(kInk, 1.2));
    p.setBrush(QColor(255, 240, 150));
    p.drawEllipse(QPointF(8, 6.5), 4.5, 4.5);
    p.setBrush(kInk);
    p.drawRect(QRectF(6, 11.5, 4, 3));
}

void speed(QPainter& p) {
    p.setPen(QPen(kInk, 1.2));
    p.drawArc(QRectF(1.5, 3.5, 13, 13), 0, 180 * 16);
    p.setPen(QPen(QColor(220, 30, 30), 1.6));
    p.drawLine(QPointF(8, 10), QPointF(12, 5.5));
}

void colourMode(QPainter& p) {
    p.setPen(Qt::NoPen);
    QPainterPath left;
    left.moveTo(8, 1.5);
    left.arcTo(QRectF(1.5, 1.5, 13, 13), 90, 180);
    left.closeSubpath();
    p.setBrush(QColor(230, 120, 30));
    p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
    p.setBrush(QColor(150, 150, 150));
    p.drawPath(left);
}

void flip(QPainter& p) {
    p.setPen(QPen(kInk, 1.2));
    p.setBrush(kInk);
    const QPointF leftArrow[] = {{1.5, 8}, {6, 4}, {6, 12}};
    const QPointF rightArrow[] = {{14.5, 8}, {10, 4}, {10, 12}};
    p.drawPolygon(leftArrow, 3);
    p.setBrush(Qt::white);
    p.drawPolygon(rightArrow, 3);
    p.drawLine(QPointF(8, 1), QPointF(8, 15));
}

void sampling(QPainter& p) {
    p.setPen(Qt::NoPen);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            p.setBrush((x + y) % 2 ? QColor(200, 210, 230) : kInk);
            p.drawRect(QRectF(1 + x * 3.6, 1 + y * 3.6, 3.2, 3.2));
        }
}

void histogram(QPainter& p) {
    p.setPen(Qt::NoPen);
    p.setBrush(kInk);
    const int heights[] = {3, 6, 10, 13, 9, 5, 2};
    for (int i = 0; i < 7; ++i)
        p.drawRect(QRectF(1 + i * 2, 15 - heights[i], 1.8, heights[i]));
}

} // namespace

QIcon paneGroupIcon(int group) {
    static const std::function<void(QPainter&)> draws[kGroupCount] = {
        resolution, exposure,   whiteBalance, colourAdjust, lightSource,
        speed,      colourMode, flip,         sampling,     histogram};
    if (group < 0 || group >= kGroupCount)
        return {};
    return drawn(16, draws[group]);
}

QIcon previewButtonIcon(PreviewImage image) {
    switch (image) {
    case PreviewImage::Snap:
        return drawn(24, [](QPainter& p) {
            p.setPen(QPen(kInk, 1));
            p.setBrush(QColor(90, 110, 140));
            p.drawRoundedRect(QRectF(1.5, 4.5, 13, 9), 1.5, 1.5);
            p.drawRect(QRectF(5, 3, 4, 1.5));
            p.setBrush(Qt::white);
            p.drawEllipse(QPointF(8, 9), 2.8, 2.8);
        });
    case PreviewImage::Record:
        return drawn(24, [](QPainter& p) {
            p.setPen(QPen(QColor(120, 0, 0), 1));
            p.setBrush(QColor(220, 30, 30));
            p.drawEllipse(QPointF(8, 8), 5, 5);
        });
    case PreviewImage::RecordStop:
        return drawn(24, [](QPainter& p) {
            p.setPen(QPen(kInk, 1));
            p.setBrush(kInk);
            p.drawRect(QRectF(3.5, 3.5, 9, 9));
        });
    }
    return {};
}

} // namespace lanmira
