#pragma once

#include "platform/PostedMessage.h"

#include <cstdint>
#include <memory>

class QObject;

namespace lanmira {

// Library threads know their windows only by a token. Posting to a token whose receiver
// has gone does nothing, the way a callback that checks its window before posting does.
// Tokens are never reused, so a stale context can never reach a new window.
using ReceiverToken = std::uint64_t;

class ReceiverRegistry {
public:
    static ReceiverToken add(QObject* receiver);
    static void remove(ReceiverToken token);
    static bool alive(ReceiverToken token);
    // Thread-safe. True when the message was queued for a live receiver; otherwise the
    // payload is freed here.
    static bool post(ReceiverToken token, int message, quintptr wParam = 0, qintptr lParam = 0,
                     std::unique_ptr<MessagePayload> payload = {});

    // The token as the opaque context a C callback carries, and back.
    static void* context(ReceiverToken token) { return reinterpret_cast<void*>(token); }
    static ReceiverToken fromContext(const void* context) {
        return reinterpret_cast<ReceiverToken>(context);
    }
};

// Registers a receiver for its lifetime; make it a member of the receiving window.
class ReceiverRegistration {
public:
    explicit ReceiverRegistration(QObject* receiver) : m_token(ReceiverRegistry::add(receiver)) {}
    ~ReceiverRegistration() { ReceiverRegistry::remove(m_token); }
    ReceiverRegistration(const ReceiverRegistration&) = delete;
    ReceiverRegistration& operator=(const ReceiverRegistration&) = delete;

    ReceiverToken token() const { return m_token; }
    void* context() const { return ReceiverRegistry::context(m_token); }

private:
    ReceiverToken m_token;
};

} // namespace lanmira
