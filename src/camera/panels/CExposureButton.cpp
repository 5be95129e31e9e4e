#include "camera/panels/CExposureButton.h"

#include <QPainter>

namespace lanmira {

CExposureButton::CExposureButton(QWidget* parent) : QPushButton(parent) {
    setAttribute(Qt::WA_Hover);
}

void CExposureButton::paintEvent(QPaintEvent* event) {
    if (showsAsButton()) {
        QPushButton::paintEvent(event);
        return;
    }
    QPainter p(this);
    p.fillRect(rect(), palette().color(QPalette::Button));
    p.setFont(parentWidget() ? parentWidget()->font() : font());
    p.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    p.drawText(rect().adjusted(0, 0, -2, 0), Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
               text());
}

void CExposureButton::enterEvent(QEnterEvent* event) {
    m_hover = true;
    update();
    QPushButton::enterEvent(event);
}

void CExposureButton::leaveEvent(QEvent* event) {
    m_hover = false;
    update();
    QPushButton::leaveEvent(event);
}

void CExposureButton::focusInEvent(QFocusEvent* event) {
    QPushButton::focusInEvent(event);
    update();
}

void CExposureButton::focusOutEvent(QFocusEvent* event) {
    QPushButton::focusOutEvent(event);
    update();
}

} // namespace lanmira
