#include "dscap/core/SourceTask.h"

namespace dscap {

void SourceTask::setState(State to) {
    state_ = to;
    changed_.notify_all();
}

bool SourceTask::wait(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, patience,
                      [&] { return state_ == State::Done || state_ == State::Dropped; });
    if (state_ == State::Queued)
        setState(State::Dropped); // too late: it must not run after we return
    changed_.wait(lock, [&] { return state_ != State::Running; });
    return state_ == State::Done;
}

void SourceTask::run(CameraSource& source) {
    {
        std::lock_guard lock(mutex_);
        if (state_ != State::Queued)
            return;
        setState(State::Running);
    }
    work_(source);
    std::lock_guard lock(mutex_);
    setState(State::Done);
}

void SourceTask::drop() {
    std::lock_guard lock(mutex_);
    if (state_ == State::Queued)
        setState(State::Dropped);
}

} // namespace dscap
