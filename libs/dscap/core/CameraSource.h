#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace dscap {

struct Resolution {
    int width = 0;
    int height = 0;
    friend bool operator==(const Resolution&, const Resolution&) = default;
};

template <typename T> struct ValueRange {
    T min{};
    T max{};
    T def{};
};

// Light source codes as the camera interface has them.
enum LightSource : int { kLightAc60Hz = 0, kLightAc50Hz = 1, kLightDc = 2 };
// Sampling codes for the lower resolutions.
enum SamplingMode : int { kSamplingBin = 0, kSamplingSkip = 1 };

// What a source does in the device itself; everything else the library does in software.
enum SourceFeature : std::uint32_t {
    kFeatureExposureTime = 1u << 0,       // exposure time in microseconds with its range
    kFeatureGain = 1u << 1,               // analogue gain with its range
    kFeatureNativeAutoExposure = 1u << 2, // the device runs its own auto exposure (no time control)
    kFeatureLightSource = 1u << 3,
    kFeatureSamplingMode = 1u << 4,
    kFeatureSpeed = 1u << 5,
    kFeatureHue = 1u << 6,
    kFeatureSaturation = 1u << 7,
    kFeatureBrightness = 1u << 8,
    kFeatureContrast = 1u << 9,
    kFeatureGamma = 1u << 10,
    kFeatureHorizontalFlip = 1u << 11,
    kFeatureVerticalFlip = 1u << 12,
    kFeatureWhiteBalanceTemperature = 1u << 13,
};

// The settings the library asks of a source. A source applies those its features name and
// ignores the rest; values are already clamped to the interface's ranges.
struct SensorSettings {
    std::uint32_t exposureUs = 0;
    std::uint16_t gain = 0;
    bool nativeAutoExposure = false; // only with kFeatureNativeAutoExposure
    int lightSource = kLightAc50Hz;
    int sampling = kSamplingBin;
    int speed = 0;
    int hue = 0;          // -180..180
    int saturation = 128; // 0..255
    int brightness = 0;   // -64..64
    int contrast = 0;     // -100..100
    int gamma = 100;      // hundredths, 20..180
    bool horizontalFlip = false;
    bool verticalFlip = false;
    int temperature = 6503; // kelvin
};

// One frame as the source delivers it: packed 8-bit BGR rows, top-down, never flipped or
// colour-corrected. The pixels stay valid until the next read() or stop().
struct SourceFrame {
    const std::uint8_t* bgr = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
    std::int64_t timestampNs = 0; // CLOCK_MONOTONIC
};

enum class ReadStatus {
    Frame,   // a new frame is in the SourceFrame
    Timeout, // nothing yet; call again
    Skipped, // a frame arrived but could not be decoded; call again
    Lost,    // the device is gone; stop
};

// A control of the device that the camera interface does not cover (focus, sharpness,
// backlight...), offered on a property page.
struct ExtraControl {
    std::uint32_t id = 0;
    std::string name;
    enum Kind { Integer, Boolean, Menu, Button } kind = Integer;
    std::int32_t min = 0;
    std::int32_t max = 0;
    std::int32_t step = 1;
    std::int32_t def = 0;
    std::int32_t value = 0;
    std::vector<std::pair<std::int32_t, std::string>> menu; // value, label
};

// A camera backend. The describing calls (isColour .. maxSpeed, expectedExposureTime) give
// fixed answers and may be called from any thread; start, stop, apply, read, realExposureTime and
// the extra controls are called from one thread at a time (the library's capture thread, or the
// caller's thread while no capture thread runs).
class CameraSource {
public:
    virtual ~CameraSource() = default;

    virtual bool isColour() const = 0;
    virtual std::uint32_t features() const = 0;
    virtual std::vector<Resolution> resolutions() const = 0;
    virtual ValueRange<std::uint32_t> exposureRange() const = 0; // microseconds
    virtual ValueRange<std::uint16_t> gainRange() const = 0;
    virtual int maxSpeed() const = 0;
    virtual int defaultSpeed() const = 0;
    // The exposure time apply() would put in force for these settings (snapped as the
    // device snaps it), without touching the device.
    virtual std::uint32_t expectedExposureTime(const SensorSettings& settings) const {
        const auto range = exposureRange();
        return settings.exposureUs < range.min   ? range.min
               : settings.exposureUs > range.max ? range.max
                                                 : settings.exposureUs;
    }

    // Opens the stream at the resolution of that index; false with lastError() when the
    // device refuses.
    virtual bool start(int resolutionIndex) = 0;
    virtual void stop() = 0;
    virtual void apply(const SensorSettings& settings) = 0;
    // The exposure time in force after apply (it may be snapped to the mains period).
    virtual std::uint32_t realExposureTime() const = 0;
    // Waits at most timeoutMs for the next frame.
    virtual ReadStatus read(SourceFrame& frame, int timeoutMs) = 0;
    virtual std::string lastError() const = 0;

    virtual std::vector<ExtraControl> extraControls() { return {}; }
    virtual bool setExtraControl(std::uint32_t /*id*/, std::int32_t /*value*/) { return false; }
};

struct CameraInfo {
    std::string id;   // stable across plugging and restarts
    std::string name; // for the camera list
    std::uint32_t value = 0;
};

// A family of cameras: the V4L2 devices, the demo camera.
class CameraProvider {
public:
    virtual ~CameraProvider() = default;
    virtual std::vector<CameraInfo> list() = 0;
    // nullptr with error set when the camera cannot be opened.
    virtual std::unique_ptr<CameraSource> open(const std::string& id, std::string& error) = 0;
};

} // namespace dscap
