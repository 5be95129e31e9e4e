#include "browser/fileops/UiQuestion.h"

#include <QMetaObject>
#include <QObject>

namespace lanmira {

UiQuestion::UiQuestion(QObject* context) : m_context(context) {}

int UiQuestion::ask(std::function<int()> question, int fallback) {
    std::shared_ptr<Shared> shared = m_shared;
    {
        std::lock_guard lock(shared->lock);
        if (shared->abandoned)
            return fallback;
        shared->answer.reset();
    }
    QObject* context = m_context.data();
    if (!context)
        return fallback;
    const bool queued = QMetaObject::invokeMethod(
        context,
        [shared, question = std::move(question), fallback] {
            {
                std::lock_guard lock(shared->lock);
                if (shared->abandoned)
                    return;
            }
            const int answer = question ? question() : fallback;
            std::lock_guard lock(shared->lock);
            shared->answer = answer;
            shared->answered.notify_all();
        },
        Qt::QueuedConnection);
    if (!queued)
        return fallback;
    std::unique_lock lock(shared->lock);
    shared->answered.wait(lock, [&] { return shared->answer.has_value() || shared->abandoned; });
    return shared->answer.value_or(fallback);
}

void UiQuestion::abandon() {
    std::lock_guard lock(m_shared->lock);
    m_shared->abandoned = true;
    m_shared->answered.notify_all();
}

} // namespace lanmira
