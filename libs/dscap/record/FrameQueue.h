#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace dscap {

// A fixed pool of frame buffers handed from one producer to one consumer in order. Each
// buffer is allocated on its first use and reused after, so a warm queue never allocates,
// and the producer never waits: when every buffer is taken it is told so at once.
class FrameQueue {
public:
    struct Slot {
        std::unique_ptr<std::uint8_t[]> pixels;
        std::int64_t timestampNs = 0;
    };

    FrameQueue(std::size_t capacity, std::size_t frameBytes);

    // Producer: a buffer to fill, or nullptr with full set when all are in use (full stays
    // false when the queue is shut).
    Slot* acquire(bool& full);
    void submit(Slot* slot);

    // Consumer: the oldest submitted frame; blocks while there is none. nullptr once the
    // queue is shut and everything acquired before has been handed over.
    Slot* next();
    void recycle(Slot* slot);

    // Refuses new frames; those already acquired or submitted still reach next().
    void shut();

private:
    const std::size_t frameBytes_;
    std::vector<Slot> slots_;
    mutable std::mutex mutex_; // guards free_, ready_, readyHead_, readyCount_, filling_, shut_
    std::condition_variable wake_;
    std::vector<Slot*> free_;
    std::vector<Slot*> ready_; // ring of readyCount_ slots from readyHead_
    std::size_t readyHead_ = 0;
    std::size_t readyCount_ = 0;
    std::size_t filling_ = 0;
    bool shut_ = false;
};

} // namespace dscap
