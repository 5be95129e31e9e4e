#include "platform/ReceiverRegistry.h"

#include <QCoreApplication>
#include <QObject>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace lanmira;

namespace {

std::atomic<int> g_payloadsAlive{0};

struct Counted {
    Counted() { ++g_payloadsAlive; }
    Counted(const Counted&) { ++g_payloadsAlive; }
    Counted(Counted&&) noexcept { ++g_payloadsAlive; }
    ~Counted() { --g_payloadsAlive; }
    int value = 7;
};

class Receiver final : public QObject {
public:
    std::vector<std::pair<int, qintptr>> got;
    int payloadValue = 0;

protected:
    void customEvent(QEvent* e) override {
        if (PostedMessage* m = PostedMessage::from(e)) {
            got.emplace_back(m->message(), m->lParam());
            if (auto p = m->takePayload<Counted>())
                payloadValue = p->value;
        }
    }
};

} // namespace

TEST(ReceiverRegistry, DeliversToLiveReceiversAndDropsForGoneOnes) {
    auto receiver = std::make_unique<Receiver>();
    const ReceiverToken token = ReceiverRegistry::add(receiver.get());
    EXPECT_TRUE(ReceiverRegistry::alive(token));
    EXPECT_TRUE(ReceiverRegistry::post(token, msg::BROWSER_RESORT, 1, 2, makePayload(Counted{})));
    QCoreApplication::processEvents();
    ASSERT_EQ(receiver->got.size(), 1u);
    EXPECT_EQ(receiver->got[0], std::make_pair(msg::BROWSER_RESORT, qintptr{2}));
    EXPECT_EQ(receiver->payloadValue, 7);

    ReceiverRegistry::remove(token);
    EXPECT_FALSE(ReceiverRegistry::alive(token));
    EXPECT_FALSE(ReceiverRegistry::post(token, msg::BROWSER_RESORT, 0, 0, makePayload(Counted{})));
    EXPECT_EQ(g_payloadsAlive.load(), 0);

    // A context from a C callback maps back to the same token; a new receiver never
    // inherits an old token.
    const ReceiverToken next = ReceiverRegistry::add(receiver.get());
    EXPECT_NE(next, token);
    EXPECT_EQ(ReceiverRegistry::fromContext(ReceiverRegistry::context(next)), next);
    ReceiverRegistry::remove(next);
}

TEST(ReceiverRegistry, EventsQueuedForAReceiverThatDiesAreFreed) {
    auto receiver = std::make_unique<Receiver>();
    {
        ReceiverRegistration reg(receiver.get());
        EXPECT_TRUE(
            ReceiverRegistry::post(reg.token(), msg::HISTOGRAM_DATA, 0, 0, makePayload(Counted{})));
    }
    receiver.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(g_payloadsAlive.load(), 0);
}

TEST(ReceiverRegistry, ManyThreadsPostWhileTheReceiverGoes) {
    auto receiver = std::make_unique<Receiver>();
    auto reg = std::make_unique<ReceiverRegistration>(receiver.get());
    const ReceiverToken token = reg->token();
    std::atomic<int> accepted{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i)
                if (ReceiverRegistry::post(token, msg::EXPOSURE_CHANGED, 0, i,
                                           makePayload(Counted{})))
                    ++accepted;
        });
    reg.reset(); // the window goes while callbacks are still firing
    for (auto& t : threads)
        t.join();
    QCoreApplication::processEvents();
    EXPECT_EQ(static_cast<int>(receiver->got.size()), accepted.load());
    EXPECT_EQ(g_payloadsAlive.load(), 0);
}
