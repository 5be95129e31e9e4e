#pragma once

#include "dscap/processing/Image.h"

#include <mutex>
#include <utility>

namespace dscap {

// Three pictures passed between the capture thread and the view without copies: the
// producer fills the back one and publishes it; a reader swaps in the newest published one
// and keeps it as the front until it swaps again, so neither side ever sees a half-written
// picture and the producer never waits for a slow reader.
class FrameExchange {
public:
    // Producer only.
    Image& back() { return buffers_[back_]; }
    void publish() {
        std::lock_guard lock(swap_);
        std::swap(back_, ready_);
        fresh_ = true;
    }

    // Calls read(front, isNew) with the newest picture while holding it; false when no
    // picture was ever published.
    template <typename F> bool readNewest(F&& read) {
        std::lock_guard frontLock(front_);
        bool isNew = false;
        {
            std::lock_guard lock(swap_);
            if (fresh_) {
                std::swap(frontIndex_, ready_);
                fresh_ = false;
                isNew = true;
                hasFront_ = true;
            }
        }
        if (!hasFront_)
            return false;
        read(static_cast<const Image&>(buffers_[frontIndex_]), isNew);
        return true;
    }

private:
    Image buffers_[3];
    int back_ = 0;       // producer's
    int ready_ = 1;      // guarded by swap_
    int frontIndex_ = 2; // guarded by front_
    bool fresh_ = false; // guarded by swap_
    bool hasFront_ = false;
    std::mutex swap_;
    std::mutex front_;
};

} // namespace dscap
