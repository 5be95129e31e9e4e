#include "platform/PostedMessage.h"

#include <QCoreApplication>

namespace lanmira {

PostedMessage::PostedMessage(int message, quintptr wParam, qintptr lParam,
                             std::unique_ptr<MessagePayload> payload)
    : QEvent(msg::eventType(message)), m_message(message), m_wParam(wParam), m_lParam(lParam),
      m_payload(std::move(payload)) {}

PostedMessage* PostedMessage::from(QEvent* event) {
    if (!event)
        return nullptr;
    const int n = event->type() - QEvent::User;
    if (n < msg::kFirst || n > msg::kLast)
        return nullptr;
    return dynamic_cast<PostedMessage*>(event);
}

void postMessage(QObject* receiver, int message, quintptr wParam, qintptr lParam,
                 std::unique_ptr<MessagePayload> payload) {
    if (!receiver)
        return;
    QCoreApplication::postEvent(receiver,
                                new PostedMessage(message, wParam, lParam, std::move(payload)));
}

} // namespace lanmira
