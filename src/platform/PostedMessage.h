#pragma once

#include "platform/Messages.h"

#include <QEvent>

#include <memory>
#include <utility>

class QObject;

namespace lanmira {

// Anything owned that travels with a message: freed with the event when nobody takes it,
// so a message dropped on the way (receiver gone, program closing) leaks nothing.
struct MessagePayload {
    virtual ~MessagePayload() = default;
};

template <class T> struct Payload final : MessagePayload {
    explicit Payload(T v) : value(std::move(v)) {}
    T value;
};

template <class T> std::unique_ptr<MessagePayload> makePayload(T value) {
    return std::make_unique<Payload<T>>(std::move(value));
}

// One of the program's own messages (see Messages.h) with its two parameters.
class PostedMessage final : public QEvent {
public:
    PostedMessage(int message, quintptr wParam, qintptr lParam,
                  std::unique_ptr<MessagePayload> payload = {});

    int message() const { return m_message; }
    quintptr wParam() const { return m_wParam; }
    qintptr lParam() const { return m_lParam; }

    // The payload if it is a T; ownership stays with the event.
    template <class T> T* payload() const {
        auto* p = dynamic_cast<Payload<T>*>(m_payload.get());
        return p ? &p->value : nullptr;
    }
    // Moves the payload out; the event keeps nothing.
    template <class T> std::unique_ptr<T> takePayload() {
        auto* p = dynamic_cast<Payload<T>*>(m_payload.get());
        if (!p)
            return {};
        auto out = std::make_unique<T>(std::move(p->value));
        m_payload.reset();
        return out;
    }

    // The message behind an event, or nullptr when the event is not one of ours.
    static PostedMessage* from(QEvent* event);

private:
    int m_message;
    quintptr m_wParam;
    qintptr m_lParam;
    std::unique_ptr<MessagePayload> m_payload;
};

// Posts to a receiver on the GUI thread's queue; the caller must know the receiver lives.
// Library threads post through ReceiverRegistry instead.
void postMessage(QObject* receiver, int message, quintptr wParam = 0, qintptr lParam = 0,
                 std::unique_ptr<MessagePayload> payload = {});

} // namespace lanmira
