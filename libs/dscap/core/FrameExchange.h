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

    // Calls read(front, isNew) with the newest picture while holding it, and counts that
    // picture as shown: isNew is true the first time a picture reaches this call, however
    // often peekNewest saw it before. False when no picture was ever published.
    template <typename F> bool readNewest(F&& read) {
        return access([&](const Image& picture, bool unshown) { read(picture, unshown); }, true);
    }
    // Calls read(front) with the newest picture while holding it, without counting it as
    // shown: for sizing and grabbing, which must not make the shown rate drop.
    template <typename F> bool peekNewest(F&& read) {
        return access([&](const Image& picture, bool) { read(picture); }, false);
    }

private:
    template <typename F> bool access(F&& read, bool markShown) {
        std::lock_guard frontLock(front_);
        {
            std::lock_guard lock(swap_);
            if (fresh_) {
                std::swap(frontIndex_, ready_);
                fresh_ = false;
                frontShown_ = false;
                hasFront_ = true;
            }
        }
        if (!hasFront_)
            return false;
        const bool unshown = !frontShown_;
        if (markShown)
            frontShown_ = true;
        read(static_cast<const Image&>(buffers_[frontIndex_]), unshown);
        return true;
    }

    Image buffers_[3];
    int back_ = 0;            // producer's
    int ready_ = 1;           // guarded by swap_
    int frontIndex_ = 2;      // guarded by front_
    bool fresh_ = false;      // guarded by swap_
    bool hasFront_ = false;   // guarded by front_
    bool frontShown_ = false; // guarded by front_: readNewest has had the front picture
    std::mutex swap_;
    std::mutex front_;
};

} // namespace dscap
