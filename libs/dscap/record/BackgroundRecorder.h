#pragma once

#include "dscap/record/FrameQueue.h"
#include "dscap/record/VideoRecorder.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace dscap {

class VideoEncoder;

// The recorder the library uses: push() copies the frame into a small pool and returns;
// conversion, encoding and writing happen on the recorder's own thread, so the preview
// never waits for the disk or the encoder.
class BackgroundRecorder final : public VideoRecorder {
public:
    explicit BackgroundRecorder(std::unique_ptr<VideoEncoder> encoder);
    ~BackgroundRecorder() override;

    bool push(const std::uint8_t* bgr, int stride, std::int64_t timestampNs) override;
    bool failed() const override { return failed_.load(std::memory_order_acquire); }
    std::string error() const override;
    void close() override;
    std::int64_t framesWritten() const override { return written_.load(); }
    std::int64_t framesDropped() const override { return dropped_.load(); }

private:
    void run();
    void fail(const std::string& text);

    // Used by the thread only, and by close() once the thread has ended.
    std::unique_ptr<VideoEncoder> encoder_;
    const int width_;
    const int height_;
    const std::size_t rowBytes_;
    FrameQueue queue_;
    std::atomic<bool> closed_{false};
    std::atomic<bool> failed_{false};
    std::atomic<std::int64_t> written_{0};
    std::atomic<std::int64_t> dropped_{0};
    mutable std::mutex errorMutex_; // guards error_
    std::string error_;
    std::mutex closeMutex_; // guards thread_ joining, so two close() calls cannot both join
    std::thread thread_;
};

} // namespace dscap
