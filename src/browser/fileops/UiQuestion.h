#pragma once

#include <QPointer>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class QObject;

namespace lanmira {

// A worker's question to the user: the worker waits, the user-interface thread asks.
// `abandon` (user-interface thread, before the worker is joined) releases a waiting worker
// with its fallback answer, so a closing window never leaves a thread blocked.
class UiQuestion {
public:
    explicit UiQuestion(QObject* context);

    // Worker thread. Runs `question` on the context's thread and returns its answer, or
    // `fallback` when abandoned or the context has gone.
    int ask(std::function<int()> question, int fallback);
    void abandon();

private:
    struct Shared {
        std::mutex lock; // guards answer and abandoned
        std::condition_variable answered;
        std::optional<int> answer;
        bool abandoned = false;
    };
    QPointer<QObject> m_context;
    std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
};

} // namespace lanmira
