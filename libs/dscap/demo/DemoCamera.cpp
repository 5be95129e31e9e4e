#include "dscap/demo/DemoCamera.h"

#include "dscap/demo/Defocus.h"
#include "dscap/demo/SensorModel.h"
#include "dscap/demo/SlideRenderer.h"
#include "dscap/processing/AutoExposure.h"
#include "dscap/processing/ColourTemperature.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <ctime>
#include <map>
#include <mutex>
#include <numbers>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

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

// The demo's own controls, for its property dialog.
enum DemoControl : std::uint32_t {
    kControlFocus = 1,
    kControlLamp = 2,
    kControlDrift = 3,
    kControlFilter = 4,
};
constexpr int kFocusBest = 50;
constexpr double kBlurPerFocusStep = 0.4; // full-resolution pixels of blur radius
enum LampFilter : int { kFilterNone = 0, kFilterDaylight = 1, kFilterGreen = 2 };
constexpr double kDaylightKelvin = 5500;
constexpr RgbGains kGreenFilter{0.12, 0.85, 0.10};

// Rendering the slide takes a few tenths of a second, so it happens on a thread of its own
// and once per seed and sensor kind in the process: the demo camera opened again shows its
// first frame at once. The few slides there can be stay for the process's life.
class SlideCache {
public:
    using Key = std::pair<std::uint32_t, bool>; // seed, colour
    static std::shared_ptr<const Slide> find(const Key& key) {
        std::lock_guard lock(mutex());
        const auto it = slides().find(key);
        return it == slides().end() ? nullptr : it->second;
    }
    static void keep(const Key& key, const std::shared_ptr<const Slide>& slide) {
        std::lock_guard lock(mutex());
        slides()[key] = slide;
    }

private:
    // Never destroyed: cameras may still be let go of while the process ends.
    static std::mutex& mutex() {
        static auto* m = new std::mutex;
        return *m;
    }
    static std::map<Key, std::shared_ptr<const Slide>>& slides() {
        static auto* s = new std::map<Key, std::shared_ptr<const Slide>>;
        return *s;
    }
};

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
    std::uint32_t expectedExposureTime(const SensorSettings& s) const override {
        return snapToMains(std::clamp(s.exposureUs, kExposureRange.min, kExposureRange.max),
                           std::clamp(s.lightSource, 0, 2), kExposureRange.min, kExposureRange.max);
    }
    ~DemoCamera() override;

    bool start(int resolutionIndex) override;
    void stop() override;
    void apply(const SensorSettings& settings) override;
    std::uint32_t realExposureTime() const override { return realExposure_; }
    ReadStatus read(SourceFrame& frame, int timeoutMs) override;
    std::string lastError() const override { return error_; }
    std::vector<ExtraControl> extraControls() override;
    bool setExtraControl(std::uint32_t id, std::int32_t value) override;

private:
    std::int64_t framePeriodNs() const;
    // The slide, with the sensor's noise, once its thread has prepared them, waiting at most
    // timeoutNs (negative: as long as it takes); nullptr when they are not there yet.
    const Slide* slide(std::int64_t timeoutNs);
    void updateLamp();
    const SlideTexture& texture(int factor, bool skip);
    void render(std::int64_t timestampNs, std::uint8_t* out);

    const DemoOptions options_;
    std::unique_ptr<SensorModel> sensor_; // the reading thread's, from prepared_
    std::array<double, 3> lampColour_{};  // B, G, R of the bare lamp, or the grey weights
    std::array<double, 3> lamp_{};
    const std::int64_t openNs_;

    std::mutex slideMutex_; // guards rendered_ and prepared_
    std::condition_variable slideReady_;
    std::shared_ptr<const Slide> rendered_;
    std::unique_ptr<SensorModel> prepared_; // its noise takes a while to draw too
    std::atomic<bool> cancelRender_{false};
    std::thread renderer_;
    std::shared_ptr<const Slide> slide_; // the reading thread's copy of rendered_

    // The demo's own controls.
    int focus_ = kFocusBest;
    int lampPercent_ = 100;
    bool drift_;
    int filter_ = kFilterNone;
    SlideTexture blurred_; // the texture in use, defocused; made again when any key changes
    std::tuple<int, int, bool> blurredKey_{-1, 0, false}; // radius, factor, skip

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
    : options_(options), openNs_(monotonicNs()), drift_(options.drift) {
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
            lampColour_[c] = colour[c];
    } else {
        // A grey sensor sees the luma of what the colour sensor would.
        for (int c = 0; c < 3; ++c) {
            slide.greyWeights[c] = kLumaWeights[c] * colour[c];
            lampColour_[c] = slide.greyWeights[c];
        }
    }
    updateLamp();

    settings_.exposureUs = kExposureRange.def;
    settings_.gain = kGainRange.def;
    settings_.speed = kMaxSpeed;

    const SlideCache::Key key{options.seed, options.colour};
    const std::uint32_t noiseSeed = options.seed * 2654435761u + 1;
    auto prepare = [this, slide, key, noiseSeed] {
        auto sensor = std::make_unique<SensorModel>(noiseSeed, kSensorWidth);
        std::shared_ptr<const Slide> done = SlideCache::find(key);
        if (!done) {
            done = SlideRenderer(slide).render(&cancelRender_);
            if (!done)
                return;
            SlideCache::keep(key, done);
        }
        std::lock_guard lock(slideMutex_);
        rendered_ = std::move(done);
        prepared_ = std::move(sensor);
        slideReady_.notify_all();
    };
    try {
        renderer_ = std::thread(prepare);
    } catch (const std::system_error&) {
        prepare(); // no thread to be had: the slow way
    }
}

DemoCamera::~DemoCamera() {
    cancelRender_ = true;
    if (renderer_.joinable())
        renderer_.join();
}

const Slide* DemoCamera::slide(std::int64_t timeoutNs) {
    if (!slide_) {
        std::unique_lock lock(slideMutex_);
        if (timeoutNs < 0)
            slideReady_.wait(lock, [&] { return rendered_ != nullptr; });
        else
            slideReady_.wait_for(lock, std::chrono::nanoseconds(timeoutNs),
                                 [&] { return rendered_ != nullptr; });
        slide_ = rendered_;
        sensor_ = std::move(prepared_);
    }
    return slide_.get();
}

void DemoCamera::updateLamp() {
    RgbGains filter;
    if (filter_ == kFilterDaylight) {
        // A blue glass that makes the lamp look like daylight, losing light to do so.
        const RgbGains from = lightColour(kLampKelvin), to = lightColour(kDaylightKelvin);
        filter = {to.b / from.b, to.g / from.g, to.r / from.r};
        const double top = std::max({filter.b, filter.g, filter.r});
        filter = {filter.b / top, filter.g / top, filter.r / top};
    } else if (filter_ == kFilterGreen) {
        filter = kGreenFilter;
    }
    const double through[3] = {filter.b, filter.g, filter.r};
    const double level = kGreenAtFullLight * lampPercent_ / 100.0;
    if (options_.colour) {
        for (int c = 0; c < 3; ++c)
            lamp_[c] = level * lampColour_[c] * through[c];
    } else {
        double sum = 0;
        for (int c = 0; c < 3; ++c)
            sum += lampColour_[c] * through[c];
        lamp_ = {level * sum, 0, 0};
    }
}

std::vector<ExtraControl> DemoCamera::extraControls() {
    ExtraControl focus{kControlFocus, "Focus", ExtraControl::Integer, 0, 100, 1, kFocusBest,
                       focus_,        {}};
    ExtraControl lamp{
        kControlLamp, "Lamp intensity", ExtraControl::Integer, 0, 100, 1, 100, lampPercent_, {}};
    ExtraControl drift{kControlDrift,
                       "Stage drift",
                       ExtraControl::Boolean,
                       0,
                       1,
                       1,
                       options_.drift ? 1 : 0,
                       drift_ ? 1 : 0,
                       {}};
    ExtraControl filter{
        kControlFilter,
        "Lamp filter",
        ExtraControl::Menu,
        kFilterNone,
        kFilterGreen,
        1,
        kFilterNone,
        filter_,
        {{kFilterNone, "None"}, {kFilterDaylight, "Daylight blue"}, {kFilterGreen, "Green"}}};
    return {focus, lamp, drift, filter};
}

bool DemoCamera::setExtraControl(std::uint32_t id, std::int32_t value) {
    switch (id) {
    case kControlFocus:
        if (value < 0 || value > 100)
            return false;
        focus_ = value;
        return true;
    case kControlLamp:
        if (value < 0 || value > 100)
            return false;
        lampPercent_ = value;
        updateLamp();
        return true;
    case kControlDrift:
        if (value != 0 && value != 1)
            return false;
        drift_ = value != 0;
        return true;
    case kControlFilter:
        if (value < kFilterNone || value > kFilterGreen)
            return false;
        filter_ = value;
        updateLamp();
        return true;
    default:
        return false;
    }
}

const SlideTexture& DemoCamera::texture(int factor, bool skip) {
    const SlideTexture& sharp = slide_->texture(factor, skip);
    const int radius =
        static_cast<int>(std::lround(std::abs(focus_ - kFocusBest) * kBlurPerFocusStep / factor));
    if (radius == 0)
        return sharp;
    // Made once per change of focus or sampling, not per frame.
    const std::tuple<int, int, bool> key{radius, factor, skip};
    if (key != blurredKey_) {
        blurred_ = defocus(sharp, radius);
        blurredKey_ = key;
    }
    return blurred_;
}

bool DemoCamera::start(int resolutionIndex) {
    if (resolutionIndex < 0 || resolutionIndex >= static_cast<int>(kResolutions.size())) {
        error_ = "The demo camera has no resolution " + std::to_string(resolutionIndex) + ".";
        return false;
    }
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
    // Until the slide is there, the camera is still warming up: nothing to show yet, and
    // the stream's clock starts when it is.
    if (!slide_) {
        const std::int64_t waitNs =
            options_.unpaced ? -1 : static_cast<std::int64_t>(std::max(timeoutMs, 0)) * 1'000'000;
        if (!slide(waitNs))
            return ReadStatus::Timeout;
        if (!options_.unpaced)
            lastFrameNs_ = monotonicNs();
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
    const Resolution r = kResolutions[static_cast<std::size_t>(resolution_)];
    std::vector<std::uint8_t>& buffer = buffers_[static_cast<std::size_t>(nextBuffer_)];
    nextBuffer_ ^= 1;
    // Sized here, on the reading thread: at full size that is tens of megabytes to clear.
    buffer.resize(static_cast<std::size_t>(r.width) * r.height * 3);
    render(due, buffer.data());
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
    if (drift_) {
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
    sensor_->expose(texture(factor, skip), dx / factor, dy / factor, r.width, r.height, e, out,
                    r.width * 3);
}

} // namespace

std::unique_ptr<CameraSource> makeDemoCamera(const DemoOptions& options) {
    return std::make_unique<DemoCamera>(options);
}

} // namespace dscap
