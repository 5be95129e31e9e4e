#pragma once

#include "dscap/core/CameraSource.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace dscap {

// Work for the capture thread from another thread. The caller waits until it has run or
// was dropped unrun, so the work may refer to the caller's locals.
class SourceTask {
public:
    explicit SourceTask(std::function<void(CameraSource&)> work) : work_(std::move(work)) {}

    // The caller: whether the work ran. Work not started within the patience never runs; work
    // under way is waited for to the end.
    bool wait(std::chrono::milliseconds patience);
    // The capture thread: runs the work unless the caller gave up on it.
    void run(CameraSource& source);
    // The capture thread, ending: the work will not run.
    void drop();

private:
    enum class State { Queued, Running, Done, Dropped };
    void setState(State to); // under mutex_

    const std::function<void(CameraSource&)> work_;
    std::mutex mutex_; // guards state_
    std::condition_variable changed_;
    State state_ = State::Queued;
};

} // namespace dscap
