#include "camera/panels/CSpinButton.h"

#include "i18n/i18n.h"

#include <QKeyEvent>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace lanmira {

CSpinButton::CSpinButton(QWidget* parent)
    : QWidget(parent), m_up(new QToolButton(this)), m_down(new QToolButton(this)) {
    setFocusPolicy(Qt::StrongFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (QToolButton* b : {m_up, m_down}) {
        b->setAutoRepeat(true);
        b->setFocusPolicy(Qt::NoFocus);
        b->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        layout->addWidget(b);
    }
    m_up->setArrowType(Qt::UpArrow);
    m_down->setArrowType(Qt::DownArrow);
    m_up->setAccessibleName(i18n_stringW("ids_lanmira_spin_up"));
    m_down->setAccessibleName(i18n_stringW("ids_lanmira_spin_down"));
    connect(m_up, &QToolButton::clicked, this, [this] { step(1); });
    connect(m_down, &QToolButton::clicked, this, [this] { step(-1); });
}

void CSpinButton::setRange(int minimum, int maximum) {
    m_min = minimum;
    m_max = std::max(minimum, maximum);
    m_position = std::clamp(m_position, m_min, m_max);
}

void CSpinButton::setPosition(int position) {
    m_position = std::clamp(position, m_min, m_max);
}

void CSpinButton::step(int delta) {
    m_position = std::clamp(m_position + delta, m_min, m_max);
    Q_EMIT stepped(delta);
}

void CSpinButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Up)
        step(1);
    else if (event->key() == Qt::Key_Down)
        step(-1);
    else
        QWidget::keyPressEvent(event);
}

} // namespace lanmira
