#include "camera/panels/CMFCEditWithReturn.h"

#include "platform/PostedMessage.h"

#include <QKeyEvent>

namespace lanmira {

CMFCEditWithReturn::CMFCEditWithReturn(QWidget* parent) : QLineEdit(parent) {
    setMaxLength(3);
}

void CMFCEditWithReturn::setReturnMessage(QObject* target, int message) {
    m_target = target;
    m_message = message;
}

void CMFCEditWithReturn::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && m_target) {
        postMessage(m_target, m_message, 0, 0);
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

} // namespace lanmira
