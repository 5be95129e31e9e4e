#include "dscap/record/FrameQueue.h"

#include <algorithm>
#include <new>

namespace dscap {

FrameQueue::FrameQueue(std::size_t capacity, std::size_t frameBytes)
    : frameBytes_(frameBytes), slots_(std::max<std::size_t>(capacity, 1)), ready_(slots_.size()) {
    free_.reserve(slots_.size());
    for (Slot& slot : slots_)
        free_.push_back(&slot);
}

FrameQueue::Slot* FrameQueue::acquire(bool& full) {
    Slot* slot = nullptr;
    {
        std::lock_guard lock(mutex_);
        full = !shut_ && free_.empty();
        if (shut_ || free_.empty())
            return nullptr;
        slot = free_.back();
        free_.pop_back();
        ++filling_;
    }
    if (!slot->pixels) {
        try {
            slot->pixels = std::make_unique_for_overwrite<std::uint8_t[]>(frameBytes_);
        } catch (const std::bad_alloc&) {
            // Short of memory this frame is left out, like one that finds the queue full.
            {
                std::lock_guard lock(mutex_);
                free_.push_back(slot);
                --filling_;
            }
            wake_.notify_one();
            full = true;
            return nullptr;
        }
    }
    return slot;
}

void FrameQueue::submit(Slot* slot) {
    {
        std::lock_guard lock(mutex_);
        ready_[(readyHead_ + readyCount_) % ready_.size()] = slot;
        ++readyCount_;
        --filling_;
    }
    wake_.notify_one();
}

FrameQueue::Slot* FrameQueue::next() {
    std::unique_lock lock(mutex_);
    wake_.wait(lock, [this] { return readyCount_ > 0 || (shut_ && filling_ == 0); });
    if (readyCount_ == 0)
        return nullptr;
    Slot* slot = ready_[readyHead_];
    readyHead_ = (readyHead_ + 1) % ready_.size();
    --readyCount_;
    return slot;
}

void FrameQueue::recycle(Slot* slot) {
    std::lock_guard lock(mutex_);
    free_.push_back(slot);
}

void FrameQueue::shut() {
    {
        std::lock_guard lock(mutex_);
        shut_ = true;
    }
    wake_.notify_all();
}

} // namespace dscap
