#pragma once

#include "dscap/core/CameraSource.h"
#include "dscap/v4l2/FrameDecoder.h"
#include "dscap/v4l2/V4l2Controls.h"
#include "dscap/v4l2/V4l2Formats.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace dscap::v4l2 {

class V4l2Device;

// A V4L2 capture device as a camera source: mmap streaming, frames decoded to BGR, the
// device's controls behind the sensor settings. Formats, sizes and controls are queried
// once at creation so the describing calls can be answered from any thread.
class V4l2Camera final : public CameraSource {
public:
    // nullptr with error set when the device offers nothing that can be shown.
    static std::unique_ptr<V4l2Camera> create(std::unique_ptr<V4l2Device> device,
                                              std::string& error);
    ~V4l2Camera() override;
    V4l2Camera(const V4l2Camera&) = delete;
    V4l2Camera& operator=(const V4l2Camera&) = delete;

    bool isColour() const override { return colour_; }
    std::uint32_t features() const override { return features_; }
    std::vector<Resolution> resolutions() const override { return formats_.resolutions(); }
    ValueRange<std::uint32_t> exposureRange() const override { return controls_.exposureRange(); }
    ValueRange<std::uint16_t> gainRange() const override { return controls_.gainRange(); }
    // From the frame intervals of the size last started (the largest before the first
    // start); the default is the fastest.
    int maxSpeed() const override { return maxSpeed_.load(); }
    int defaultSpeed() const override { return maxSpeed_.load(); }

    bool start(int resolutionIndex) override;
    void stop() override;
    void apply(const SensorSettings& settings) override;
    std::uint32_t realExposureTime() const override { return realExposure_.load(); }
    std::uint32_t expectedExposureTime(const SensorSettings& settings) const override {
        return controls_.expectedExposure(settings);
    }
    ReadStatus read(SourceFrame& frame, int timeoutMs) override;
    std::string lastError() const override;

    std::vector<ExtraControl> extraControls() override;
    bool setExtraControl(std::uint32_t id, std::int32_t value) override;

private:
    struct Buffer {
        void* address = nullptr;
        std::size_t length = 0;
    };

    explicit V4l2Camera(std::unique_ptr<V4l2Device> device);
    bool mapBuffers();
    bool queueAll();
    void releaseBuffers();
    // S_PARM for the speed's frame interval; false only when the device is gone.
    bool setInterval(int speed);
    int clampSpeed(int speed) const;
    void setError(std::string text);
    // Marks the device as failed for good when the error says it is gone.
    bool failed(int error);
    ReadStatus lose(int error);

    std::unique_ptr<V4l2Device> device_;
    V4l2Formats formats_;
    V4l2Controls controls_;
    std::unique_ptr<FrameDecoder> decoder_;
    std::uint32_t features_ = 0;
    bool colour_ = true;
    std::atomic<int> maxSpeed_{0};
    std::atomic<std::uint32_t> realExposure_{0};

    mutable std::mutex errorMutex_; // guards error_
    std::string error_;

    // Capture-thread state.
    std::optional<V4l2Formats::Choice> current_;
    std::vector<Buffer> buffers_;
    bool streaming_ = false;
    bool lost_ = false;
    int wantedSpeed_ = 0;
    int appliedSpeed_ = -1;
    std::vector<std::uint8_t> bgr_[2]; // frames alternate so the last one stays readable
    int next_ = 0;
};

} // namespace dscap::v4l2
