#pragma once

#include <QImage>
#include <QRectF>
#include <QWidget>

namespace twaindsm {

// The preview scan with the chosen area over it; dragging chooses a new area. Works in
// millimetres of the scanner bed.
class PreviewArea final : public QWidget {
    Q_OBJECT
public:
    PreviewArea(QSizeF bedMm, QWidget* parent = nullptr);

    void setPreview(const QImage& image);
    void setArea(const QRectF& mm);
    QRectF area() const { return m_area; }

Q_SIGNALS:
    void areaChosen(const QRectF& mm);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    QSize sizeHint() const override { return {260, 320}; }

private:
    QRectF bedRect() const;
    QPointF toMm(QPointF widgetPoint) const;

    QSizeF m_bed;
    QImage m_preview;
    QRectF m_area;
    QPointF m_dragStart;
    bool m_dragging = false;
};

} // namespace twaindsm
