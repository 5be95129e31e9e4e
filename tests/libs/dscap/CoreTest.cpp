// The capture library's own plumbing: the frame exchange's shown count, the background
// jobs that finish recordings and release cameras, and work handed to the capture thread.
#include "dscap/core/BackgroundJobs.h"
#include "dscap/core/FrameExchange.h"
#include "dscap/core/SourceTask.h"
#include "dscap/demo/DemoCamera.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace dscap {
namespace {

using namespace std::chrono_literals;

void publish(FrameExchange& exchange, int width) {
    exchange.back().resize(width, 1);
    exchange.publish();
}

TEST(FrameExchange, OnlyReadingCountsAFrameAsShownAndPeekingSeesTheNewest) {
    FrameExchange exchange;
    EXPECT_FALSE(exchange.peekNewest([](const Image&) {}));
    publish(exchange, 10);
    int width = 0;
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(exchange.peekNewest([&](const Image& p) { width = p.width(); }));
    EXPECT_EQ(width, 10);
    int unshown = 0;
    auto read = [&] {
        exchange.readNewest([&](const Image& p, bool isNew) {
            width = p.width();
            unshown += isNew;
        });
    };
    read();
    read();
    EXPECT_EQ(unshown, 1) << "peeked first, still shown once";
    publish(exchange, 20);
    publish(exchange, 30);
    exchange.peekNewest([&](const Image& p) { width = p.width(); });
    EXPECT_EQ(width, 30);
    read();
    EXPECT_EQ(unshown, 2);
}

TEST(BackgroundJobs, WaitAllWaitsForEveryJobAndSilenceDropsOnlyTheNews) {
    BackgroundJobs jobs;
    std::atomic<int> worked{0}, told{0};
    for (int i = 0; i < 3; ++i)
        jobs.run(
            "a",
            [&] {
                std::this_thread::sleep_for(50ms);
                ++worked;
            },
            [&] { ++told; });
    jobs.waitAll();
    EXPECT_EQ(worked, 3);
    EXPECT_EQ(told, 3);

    jobs.run(
        "b",
        [&] {
            std::this_thread::sleep_for(50ms);
            ++worked;
        },
        [&] { ++told; });
    jobs.silence();
    jobs.waitAll();
    EXPECT_EQ(worked, 4);
    EXPECT_EQ(told, 3);
}

TEST(BackgroundJobs, WaitingForAKeyWaitsOnlyForItsJobs) {
    BackgroundJobs jobs;
    std::atomic<bool> release{false}, quickDone{false};
    jobs.run("slow", [&] {
        while (!release)
            std::this_thread::sleep_for(1ms);
    });
    jobs.run("quick", [&] {
        std::this_thread::sleep_for(30ms);
        quickDone = true;
    });
    jobs.waitFor("quick");
    EXPECT_TRUE(quickDone);
    jobs.waitFor("nothing");
    release = true;
    jobs.waitFor("slow");
}

TEST(BackgroundJobs, GoingAwayFinishesWhatIsUnderWay) {
    std::atomic<bool> finished{false};
    {
        BackgroundJobs jobs;
        jobs.run("b", [&] {
            std::this_thread::sleep_for(100ms);
            finished = true;
        });
    }
    EXPECT_TRUE(finished);
}

TEST(SourceTask, RunsOnceOrNeverAndTheCallerKnowsWhich) {
    const auto camera = makeDemoCamera({.unpaced = true});
    int runs = 0;
    auto count = [&](CameraSource&) { ++runs; };

    SourceTask ran(count);
    std::thread worker([&] {
        std::this_thread::sleep_for(20ms);
        ran.run(*camera);
        ran.run(*camera);
    });
    EXPECT_TRUE(ran.wait(2000ms));
    worker.join();
    EXPECT_EQ(runs, 1);

    SourceTask late(count);
    EXPECT_FALSE(late.wait(10ms));
    late.run(*camera);
    EXPECT_EQ(runs, 1) << "given up on: must not run after the caller returned";

    SourceTask dropped(count);
    dropped.drop();
    EXPECT_FALSE(dropped.wait(2000ms));
    dropped.run(*camera);
    EXPECT_EQ(runs, 1);
}

TEST(SourceTask, WorkUnderWayIsWaitedForBeyondThePatience) {
    const auto camera = makeDemoCamera({.unpaced = true});
    std::atomic<bool> started{false}, finished{false};
    SourceTask slow([&](CameraSource&) {
        started = true;
        std::this_thread::sleep_for(100ms);
        finished = true;
    });
    std::thread worker([&] { slow.run(*camera); });
    while (!started)
        std::this_thread::sleep_for(1ms);
    EXPECT_TRUE(slow.wait(1ms));
    EXPECT_TRUE(finished);
    worker.join();
}

} // namespace
} // namespace dscap
