#include "platform/ReceiverRegistry.h"

#include <QCoreApplication>
#include <QObject>

#include <mutex>
#include <unordered_map>

namespace lanmira {
namespace {

struct Registry {
    // Guards receivers and next: a receiver is removed under the lock before it dies, and
    // events are queued under the same lock, so no event is queued for a dead object.
    std::mutex mutex;
    std::unordered_map<ReceiverToken, QObject*> receivers;
    ReceiverToken next = 1;
};

Registry& registry() {
    static Registry r;
    return r;
}

} // namespace

ReceiverToken ReceiverRegistry::add(QObject* receiver) {
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    const ReceiverToken token = r.next++;
    r.receivers.emplace(token, receiver);
    return token;
}

void ReceiverRegistry::remove(ReceiverToken token) {
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    r.receivers.erase(token);
}

bool ReceiverRegistry::alive(ReceiverToken token) {
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    return r.receivers.contains(token);
}

bool ReceiverRegistry::post(ReceiverToken token, int message, quintptr wParam, qintptr lParam,
                            std::unique_ptr<MessagePayload> payload) {
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    const auto it = r.receivers.find(token);
    if (it == r.receivers.end())
        return false;
    QCoreApplication::postEvent(it->second,
                                new PostedMessage(message, wParam, lParam, std::move(payload)));
    return true;
}

} // namespace lanmira
