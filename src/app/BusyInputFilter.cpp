#include "app/BusyInputFilter.h"

#include <QEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QShortcutEvent>
#include <QWidget>

namespace lanmira {

BusyInputFilter::BusyInputFilter(QObject* parent) : QObject(parent) {}

bool BusyInputFilter::closeWindow(QWidget* window) {
    const QScopedValueRollback guard(m_programClose, true);
    return window->close();
}

bool BusyInputFilter::eventFilter(QObject* watched, QEvent* event) {
    if (!m_busy)
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
        return true;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape;
    case QEvent::Shortcut:
        // Shortcuts fire before their key press is delivered.
        return static_cast<QShortcutEvent*>(event)->key() != QKeySequence(Qt::Key_Escape);
    case QEvent::Close:
        return !m_programClose;
    default:
        return false;
    }
}

} // namespace lanmira
