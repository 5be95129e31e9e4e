#include "dscap/demo/DemoCamera.h"

#include "dscap/demo/SensorModel.h"
#include "dscap/demo/SlideRenderer.h"
#include "dscap/processing/AutoExposure.h"
#include "dscap/processing/ColourTemperature.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <numbers>

namespace dscap {
namespace {

constexpr int kSensorWidth = 2592;
constexpr int kSensorHeight = 1944;
constexpr std::array<Resolution, 3> kResolutions{{{kSensorWidth, kSensorHeight},
                                                  {kSensorWidth / 2, kSensorHeight / 2},
                                                  {kSensorWidth / 4, kSensorHeight / 4}}};
// Frames a second by resolution and speed level.
constexpr int kFrameRates[3][3] = {{5, 10, 15}, {10, 20, 30}, {15, 30, 60}};
constexpr int kMaxSpeed = 2;

constexpr ValueRange<std::uint32_t> kExposureRange{100, 2'000'000, 30'000};
constexpr ValueRange<std::uint16_t> kGainRange{100, 500, 100};

constexpr double kLampKelvin = 3200;
// Green level of a fully transmitting spot at the default exposure and gain. The slide's
// background lets about 88 % through, so its green sits near 120 and its red, 1.8 times
// that under the warm lamp, stays clear of clipping; one-push white balance needs an
// unclipped white.
constexpr double kGreenAtFullLight = 136;
constexpr double kLumaWeights[3] = {0.114, 0.587, 0.299};

// The stage wanders on a smooth path, a few pixels a second, within the slide's margin.
constexpr double kDriftAmplitude = Slide::kMargin - 4;

std::int64_t monotonicNs() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<std::int64_t>(ts.tv_sec) * 1'000'000'000 + ts.tv_nsec;
}

void sleepUntil(std::int64_t ns) {
    timespec ts{};
    ts.tv_sec = static_cast<time_t>(ns / 1'000'000'000);
    ts.tv_nsec = static_cast<long>(ns % 1'000'000'000);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &ts, nullptr) == EINTR) {
    }
}

class DemoCamera final : public CameraSource {
public:
    explicit DemoCamera(const DemoOptions& options);

    bool isColour() const override { return options_.colour; }
    std::uint32_t features() const override {
        return kFeatureExposureTime | kFeatureGain | kFeatureLightSource | kFeatureSamplingMode |
               kFeatureSpeed;
    }
    std::vector<Resolution> resolutions() const override {
        return {kResolutions.begin(), kResolutions.end()};
    }
    ValueRange<std::uint32_t> exposureRange() const override { return kExposureRange; }
    ValueRange<std::uint16_t> gainRange() const override { return kGainRange; }
    int maxSpeed() const override { return kMaxSpeed; }
    int defaultSpeed() const override { return kMaxSpeed; }

    bool start(int resolutionIndex) override;
    void stop() override;
    void apply(const SensorSettings& settings) override;
    std::uint32_t realExposureTime() const override { return realExposure_; }
    ReadStatus read(SourceFrame& frame, int timeoutMs) override;
    std::string lastError() const override { return error_; }

private:
    std::int64_t framePeriodNs() const;
    void render(std::int64_t timestampNs, std::uint8_t* out);

    const DemoOptions options_;
    std::unique_ptr<Slide> slide_;
    SensorModel sensor_;
    std::array<double, 3> lamp_{};
    const std::int64_t openNs_;

    SensorSettings settings_;
    std::uint32_t realExposure_ = kExposureRange.def;
    bool started_ = false;
    int resolution_ = 0;
    std::int64_t lastFrameNs_ = 0; // when the last frame was due (or the stream started)
    std::array<std::vector<std::uint8_t>, 2> buffers_;
    int nextBuffer_ = 0;
    std::string error_;
};

DemoCamera::DemoCamera(const DemoOptions& options)
    : options_(options), sensor_(options.seed * 2654435761u + 1, kSensorWidth),
      openNs_(monotonicNs()) {
    // The sensor is balanced for daylight, so the lamp's own colour reaches the raw picture.
    const RgbGains light = lightColour(kLampKelvin);
    const double colour[3] = {light.b, light.g, light.r};
    SlideRenderer::Options slide;
    slide.width = kSensorWidth;
    slide.height = kSensorHeight;
    slide.seed = options.seed;
    slide.colour = options.colour;
    if (options.colour) {
        for (int c = 0; c < 3; ++c)
            lamp_[c] = kGreenAtFullLight * colour[c];
    } else {
        // A grey sensor sees the luma of what the colour sensor would.
        double sum = 0;
        for (int c = 0; c < 3; ++c) {
            slide.greyWeights[c] = kLumaWeights[c] * colour[c];
            sum += slide.greyWeights[c];
        }
        lamp_[0] = kGreenAtFullLight * sum;
    }
    slide_ = SlideRenderer(slide).render();

    settings_.exposureUs = kExposureRange.def;
    settings_.gain = kGainRange.def;
    settings_.speed = kMaxSpeed;
}

bool DemoCamera::start(int resolutionIndex) {
    if (resolutionIndex < 0 || resolutionIndex >= static_cast<int>(kResolutions.size())) {
        error_ = "The demo camera has no resolution " + std::to_string(resolutionIndex) + ".";
        return false;
    }
    const Resolution r = kResolutions[static_cast<std::size_t>(resolutionIndex)];
    for (auto& buffer : buffers_)
        buffer.resize(static_cast<std::size_t>(r.width) * r.height * 3);
    resolution_ = resolutionIndex;
    started_ = true;
    lastFrameNs_ = monotonicNs();
    error_.clear();
    return true;
}

void DemoCamera::stop() {
    started_ = false;
}

void DemoCamera::apply(const SensorSettings& settings) {
    settings_ = settings;
    settings_.exposureUs = std::clamp(settings.exposureUs, kExposureRange.min, kExposureRange.max);
    settings_.gain = std::clamp(settings.gain, kGainRange.min, kGainRange.max);
    settings_.lightSource = std::clamp(settings.lightSource, 0, 2);
    settings_.sampling = std::clamp(settings.sampling, 0, 1);
    settings_.speed = std::clamp(settings.speed, 0, kMaxSpeed);
    realExposure_ = snapToMains(settings_.exposureUs, settings_.lightSource, kExposureRange.min,
                                kExposureRange.max);
}

std::int64_t DemoCamera::framePeriodNs() const {
    const auto index = static_cast<std::size_t>(resolution_);
    const std::int64_t rate = 1'000'000'000 / kFrameRates[index][settings_.speed];
    return std::max(rate, static_cast<std::int64_t>(realExposure_) * 1000);
}

ReadStatus DemoCamera::read(SourceFrame& frame, int timeoutMs) {
    if (!started_) {
        error_ = "The demo camera is not started.";
        return ReadStatus::Timeout;
    }
    const std::int64_t period = framePeriodNs();
    std::int64_t due = lastFrameNs_ + period;
    if (!options_.unpaced) {
        const std::int64_t now = monotonicNs();
        // A reader that fell behind gets the newest frame, not a burst of old ones.
        if (now - due > period)
            due += (now - due) / period * period;
        const std::int64_t timeoutNs =
            static_cast<std::int64_t>(std::max(timeoutMs, 0)) * 1'000'000;
        if (due - now > timeoutNs) {
            sleepUntil(now + timeoutNs);
            return ReadStatus::Timeout;
        }
        sleepUntil(due);
    }
    lastFrameNs_ = due;
    std::vector<std::uint8_t>& buffer = buffers_[static_cast<std::size_t>(nextBuffer_)];
    nextBuffer_ ^= 1;
    render(due, buffer.data());
    const Resolution r = kResolutions[static_cast<std::size_t>(resolution_)];
    frame.bgr = buffer.data();
    frame.width = r.width;
    frame.height = r.height;
    frame.stride = r.width * 3;
    frame.timestampNs = due;
    return ReadStatus::Frame;
}

void DemoCamera::render(std::int64_t timestampNs, std::uint8_t* out) {
    const Resolution r = kResolutions[static_cast<std::size_t>(resolution_)];
    const int factor = kSensorWidth / r.width;
    const bool skip = settings_.sampling == kSamplingSkip;

    int dx = Slide::kMargin, dy = Slide::kMargin;
    if (options_.drift) {
        const double t = static_cast<double>(timestampNs - openNs_) * 1e-9;
        constexpr double tau = 2 * std::numbers::pi;
        dx += static_cast<int>(std::lround(
            kDriftAmplitude * (0.8 * std::sin(tau * t / 97) + 0.2 * std::sin(tau * t / 23 + 1.3))));
        dy += static_cast<int>(std::lround(kDriftAmplitude * (0.8 * std::sin(tau * t / 131 + 0.7) +
                                                              0.2 * std::sin(tau * t / 31))));
    }

    SensorExposure e;
    e.exposureUs = realExposure_;
    e.gain = static_cast<double>(settings_.gain) / kGainRange.min;
    e.lamp = lamp_;
    e.flicker = settings_.lightSource != kLightDc;
    e.lineTimeS = 1.0 / kFrameRates[resolution_][kMaxSpeed] / r.height;
    e.noiseDivisor = skip ? 1 : factor;
    e.startNs = timestampNs;
    sensor_.expose(slide_->texture(factor, skip), dx / factor, dy / factor, r.width, r.height, e,
                   out, r.width * 3);
}

} // namespace

std::unique_ptr<CameraSource> makeDemoCamera(const DemoOptions& options) {
    return std::make_unique<DemoCamera>(options);
}

} // namespace dscap
