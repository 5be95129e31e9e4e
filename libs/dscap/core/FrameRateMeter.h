#pragma once

#include <chrono>
#include <deque>
#include <mutex>

namespace dscap {

// Events per second over the last second, for the frame-rate text.
class FrameRateMeter {
public:
    using Clock = std::chrono::steady_clock;

    void tick() {
        std::lock_guard lock(mutex_);
        const auto now = Clock::now();
        times_.push_back(now);
        trim(now);
    }
    double perSecond() {
        std::lock_guard lock(mutex_);
        trim(Clock::now());
        return static_cast<double>(times_.size());
    }
    void reset() {
        std::lock_guard lock(mutex_);
        times_.clear();
    }

private:
    void trim(Clock::time_point now) {
        while (!times_.empty() && now - times_.front() > std::chrono::seconds(1))
            times_.pop_front();
    }
    std::mutex mutex_;
    std::deque<Clock::time_point> times_;
};

} // namespace dscap
