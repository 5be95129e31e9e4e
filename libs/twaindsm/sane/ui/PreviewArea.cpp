#include "sane/ui/PreviewArea.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace twaindsm {

PreviewArea::PreviewArea(QSizeF bedMm, QWidget* parent)
    : QWidget(parent), m_bed(bedMm.isEmpty() ? QSizeF(216, 297) : bedMm),
      m_area(QPointF(0, 0), m_bed) {
    setMinimumSize(160, 200);
    setCursor(Qt::CrossCursor);
}

void PreviewArea::setPreview(const QImage& image) {
    m_preview = image;
    update();
}

void PreviewArea::setArea(const QRectF& mm) {
    m_area = mm;
    update();
}

QRectF PreviewArea::bedRect() const {
    const QSizeF fitted = m_bed.scaled(QSizeF(size()) - QSizeF(8, 8), Qt::KeepAspectRatio);
    return {QPointF((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted};
}

QPointF PreviewArea::toMm(QPointF p) const {
    const QRectF bed = bedRect();
    const double x = (p.x() - bed.left()) / bed.width() * m_bed.width();
    const double y = (p.y() - bed.top()) / bed.height() * m_bed.height();
    return {std::clamp(x, 0.0, m_bed.width()), std::clamp(y, 0.0, m_bed.height())};
}

void PreviewArea::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRectF bed = bedRect();
    painter.fillRect(bed, Qt::white);
    if (!m_preview.isNull())
        painter.drawImage(bed, m_preview);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawRect(bed);
    const double sx = bed.width() / m_bed.width(), sy = bed.height() / m_bed.height();
    const QRectF chosen(bed.left() + m_area.left() * sx, bed.top() + m_area.top() * sy,
                        m_area.width() * sx, m_area.height() * sy);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2, Qt::DashLine));
    painter.drawRect(chosen);
}

void PreviewArea::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_dragging = true;
    m_dragStart = toMm(event->position());
}

void PreviewArea::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging)
        return;
    m_area = QRectF(m_dragStart, toMm(event->position())).normalized();
    update();
}

void PreviewArea::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_dragging || event->button() != Qt::LeftButton)
        return;
    m_dragging = false;
    m_area = QRectF(m_dragStart, toMm(event->position())).normalized();
    // A click without a drag means the whole bed again.
    if (m_area.width() < 1 || m_area.height() < 1)
        m_area = QRectF(QPointF(0, 0), m_bed);
    update();
    Q_EMIT areaChosen(m_area);
}

} // namespace twaindsm
