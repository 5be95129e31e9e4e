#include "dscap/record/BackgroundRecorder.h"

#include "dscap/record/VideoEncoder.h"

#include <cstring>
#include <new>
#include <pthread.h>

namespace dscap {
namespace {

// About a quarter of a second at 30 frames a second: enough to ride out a slow write or a
// keyframe, small enough that a stalled encoder shows as dropped frames, not as memory.
constexpr std::size_t kQueueFrames = 8;

std::size_t alignedRowBytes(int width) {
    return (static_cast<std::size_t>(width) * 3 + 31) & ~std::size_t{31};
}

} // namespace

BackgroundRecorder::BackgroundRecorder(std::unique_ptr<VideoEncoder> encoder)
    : encoder_(std::move(encoder)), width_(encoder_->width()), height_(encoder_->height()),
      rowBytes_(alignedRowBytes(width_)),
      queue_(kQueueFrames, rowBytes_ * static_cast<std::size_t>(height_)) {
    thread_ = std::thread([this] { run(); });
}

BackgroundRecorder::~BackgroundRecorder() {
    close();
}

bool BackgroundRecorder::push(const std::uint8_t* bgr, int stride, std::int64_t timestampNs) {
    if (closed_.load(std::memory_order_acquire) || failed() || !bgr || stride < width_ * 3)
        return false;
    bool full = false;
    FrameQueue::Slot* slot = queue_.acquire(full);
    if (!slot) {
        if (full)
            dropped_.fetch_add(1);
        return false;
    }
    // Only the even part the file keeps; an odd last column or row is left behind here.
    const std::size_t used = static_cast<std::size_t>(width_) * 3;
    std::uint8_t* out = slot->pixels.get();
    for (int y = 0; y < height_; ++y)
        std::memcpy(out + y * rowBytes_, bgr + static_cast<std::ptrdiff_t>(y) * stride, used);
    slot->timestampNs = timestampNs;
    queue_.submit(slot);
    return true;
}

std::string BackgroundRecorder::error() const {
    std::lock_guard lock(errorMutex_);
    return error_;
}

void BackgroundRecorder::close() {
    std::lock_guard lock(closeMutex_);
    closed_.store(true, std::memory_order_release);
    queue_.shut();
    if (thread_.joinable())
        thread_.join();
    // The thread has finished the file unless something threw there; this covers that.
    if (!encoder_->finish() && !failed())
        fail(encoder_->error());
    written_.store(encoder_->framesWritten());
}

void BackgroundRecorder::run() {
    pthread_setname_np(pthread_self(), "dscap-record");
    try {
        while (FrameQueue::Slot* slot = queue_.next()) {
            const bool ok = encoder_->convert(slot->pixels.get(), static_cast<int>(rowBytes_)) &&
                            encoder_->encode(slot->timestampNs);
            queue_.recycle(slot);
            written_.store(encoder_->framesWritten());
            if (!ok) {
                fail(encoder_->error());
                break;
            }
        }
        if (!encoder_->finish() && !failed())
            fail(encoder_->error());
        written_.store(encoder_->framesWritten());
    } catch (const std::bad_alloc&) {
        fail("There is not enough memory to go on recording.");
    } catch (...) {
        fail("The recording stopped because of an internal error.");
    }
}

void BackgroundRecorder::fail(const std::string& text) {
    {
        std::lock_guard lock(errorMutex_);
        if (error_.empty())
            error_ = text;
    }
    failed_.store(true, std::memory_order_release);
    queue_.shut();
}

} // namespace dscap
