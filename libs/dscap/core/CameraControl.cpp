#include "dscap/core/CameraControl.h"

#include "dscap/core/Device.h"

#include <algorithm>

namespace dscap {

namespace {

template <typename T> bool inRange(T value, long long min, long long max) {
    return static_cast<long long>(value) >= min && static_cast<long long>(value) <= max;
}

} // namespace

// Runs f(device) while the device lives and is not gone; the interface's failure otherwise.
#define WITH_DEVICE(d)                                                                             \
    const std::shared_ptr<Device> d = device_.lock();                                              \
    if (!d || !d->hasSource())                                                                     \
        return kNotAvailable;

namespace {

// Reads one value into out.
template <typename T, typename Get> std::int32_t readValue(Device& d, T* out, Get get) {
    if (!out)
        return ICameraControl::kInvalidArgument;
    *out = static_cast<T>(get(d.values()));
    return ICameraControl::kOk;
}

// Sets one value after a range check.
template <typename Set>
std::int32_t setValue(Device& d, long long value, long long min, long long max, Set set) {
    if (value < min || value > max)
        return ICameraControl::kInvalidArgument;
    return d.change([&](ControlValues& v) {
        set(v);
        return ICameraControl::kOk;
    });
}

std::int32_t checkRegion(const Device& d, const ControlValues& v, Region& r) {
    const auto sizes = d.resolutions();
    if (sizes.empty())
        return ICameraControl::kNotSupported;
    const Resolution size = sizes[static_cast<std::size_t>(v.resolutionIndex)];
    r.left = std::max(r.left, 0);
    r.top = std::max(r.top, 0);
    r.right = std::min(r.right, size.width);
    r.bottom = std::min(r.bottom, size.height);
    if (r.right <= r.left || r.bottom <= r.top)
        return ICameraControl::kInvalidArgument;
    return ICameraControl::kOk;
}

std::int32_t setRegion(Device& d, Region ControlValues::*field, Region r) {
    return d.change([&](ControlValues& v) {
        const std::int32_t status = checkRegion(d, v, r);
        if (status == ICameraControl::kOk)
            v.*field = r;
        return status;
    });
}

std::int32_t readRegion(Device& d, Region ControlValues::*field, std::int32_t* left,
                        std::int32_t* top, std::int32_t* right, std::int32_t* bottom) {
    if (!left || !top || !right || !bottom)
        return ICameraControl::kInvalidArgument;
    const Region r = d.values().*field;
    *left = r.left;
    *top = r.top;
    *right = r.right;
    *bottom = r.bottom;
    return ICameraControl::kOk;
}

template <typename T>
std::int32_t readRange(const Device& d, std::uint32_t feature, ValueRange<T> range, T* min, T* max,
                       T* def) {
    if (!(d.source().features() & feature))
        return ICameraControl::kNotSupported;
    if (!min || !max || !def)
        return ICameraControl::kInvalidArgument;
    *min = range.min;
    *max = range.max;
    *def = range.def;
    return ICameraControl::kOk;
}

} // namespace

std::int32_t CameraControl::GetResolutionIndex(std::int32_t* index) {
    WITH_DEVICE(d);
    return readValue(*d, index, [](const ControlValues& v) { return v.resolutionIndex; });
}

std::int32_t CameraControl::AutoLevelRange() {
    WITH_DEVICE(d);
    Histogram copy;
    const Histogram* histogram = d->lastHistogram(copy);
    if (!histogram)
        return kNotAvailable;
    return d->change([&](ControlValues& v) {
        autoLevels(*histogram, v.monochrome, v.low, v.high);
        return kOk;
    });
}

std::int32_t CameraControl::SetHistogramCallback(DSCAP_HISTOGRAM_CALLBACK cb, void* ctx) {
    WITH_DEVICE(d);
    d->setHistogramCallback(cb, ctx);
    return kOk;
}

std::int32_t CameraControl::SetExposureCallback(DSCAP_EXPOSURE_CALLBACK cb, void* ctx) {
    WITH_DEVICE(d);
    d->setExposureCallback(cb, ctx);
    return kOk;
}

std::int32_t CameraControl::GetAutoExposure(std::int32_t* on) {
    WITH_DEVICE(d);
    if (!(d->source().features() & (kFeatureExposureTime | kFeatureNativeAutoExposure)))
        return kNotSupported;
    return readValue(*d, on, [](const ControlValues& v) { return v.autoExposure ? 1 : 0; });
}

std::int32_t CameraControl::SetAutoExposure(std::int32_t on) {
    WITH_DEVICE(d);
    if (!(d->source().features() & (kFeatureExposureTime | kFeatureNativeAutoExposure)))
        return kNotSupported;
    return setValue(*d, on != 0, 0, 1, [&](ControlValues& v) { v.autoExposure = on != 0; });
}

std::int32_t CameraControl::GetAutoExposureTarget(std::uint16_t* target) {
    WITH_DEVICE(d);
    return readValue(*d, target, [](const ControlValues& v) { return v.autoExposureTarget; });
}

std::int32_t CameraControl::SetAutoExposureTarget(std::uint16_t target) {
    WITH_DEVICE(d);
    // The panel's slider runs 10..230 but sends the low eight bits of any position.
    const auto t = static_cast<std::uint16_t>(std::clamp<int>(target, kTargetMin, kTargetMax));
    return setValue(*d, t, kTargetMin, kTargetMax,
                    [&](ControlValues& v) { v.autoExposureTarget = t; });
}

std::int32_t CameraControl::SetCameraOption(std::int32_t /*value*/) {
    WITH_DEVICE(d);
    return kOk;
}

std::int32_t CameraControl::SetHue(std::int32_t hue) {
    WITH_DEVICE(d);
    return setValue(*d, hue, kHueMin, kHueMax, [&](ControlValues& v) { v.hue = hue; });
}

std::int32_t CameraControl::GetHue(std::int32_t* hue) {
    WITH_DEVICE(d);
    return readValue(*d, hue, [](const ControlValues& v) { return v.hue; });
}

std::int32_t CameraControl::SetSaturation(std::int32_t saturation) {
    WITH_DEVICE(d);
    return setValue(*d, saturation, kSaturationMin, kSaturationMax,
                    [&](ControlValues& v) { v.saturation = saturation; });
}

std::int32_t CameraControl::GetSaturation(std::int32_t* saturation) {
    WITH_DEVICE(d);
    return readValue(*d, saturation, [](const ControlValues& v) { return v.saturation; });
}

std::int32_t CameraControl::SetBrightness(std::int32_t brightness) {
    WITH_DEVICE(d);
    return setValue(*d, brightness, kBrightnessMin, kBrightnessMax,
                    [&](ControlValues& v) { v.brightness = brightness; });
}

std::int32_t CameraControl::GetBrightness(std::int32_t* brightness) {
    WITH_DEVICE(d);
    return readValue(*d, brightness, [](const ControlValues& v) { return v.brightness; });
}

std::int32_t CameraControl::GetExposureTime(std::uint32_t* microseconds) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureExposureTime))
        return kNotSupported;
    return readValue(*d, microseconds, [](const ControlValues& v) { return v.exposureUs; });
}

std::int32_t CameraControl::SetExposureTime(std::uint32_t microseconds) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureExposureTime))
        return kNotSupported;
    const auto range = d->source().exposureRange();
    return setValue(*d, microseconds, range.min, range.max,
                    [&](ControlValues& v) { v.exposureUs = microseconds; });
}

std::int32_t CameraControl::GetExposureGain(std::uint16_t* gain) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureGain))
        return kNotSupported;
    return readValue(*d, gain, [](const ControlValues& v) { return v.gain; });
}

std::int32_t CameraControl::SetExposureGain(std::uint16_t gain) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureGain))
        return kNotSupported;
    const auto range = d->source().gainRange();
    return setValue(*d, gain, range.min, range.max, [&](ControlValues& v) { v.gain = gain; });
}

std::int32_t CameraControl::SetLevelRange(const std::uint16_t low[4], const std::uint16_t high[4]) {
    WITH_DEVICE(d);
    if (!low || !high)
        return kInvalidArgument;
    for (int c = 0; c < 4; ++c) {
        if (low[c] > 255 || high[c] > 255)
            return kInvalidArgument;
    }
    return d->change([&](ControlValues& v) {
        std::copy(low, low + 4, v.low.begin());
        std::copy(high, high + 4, v.high.begin());
        return kOk;
    });
}

std::int32_t CameraControl::GetLevelRange(std::uint16_t low[4], std::uint16_t high[4]) {
    WITH_DEVICE(d);
    if (!low || !high)
        return kInvalidArgument;
    const ControlValues v = d->values();
    std::copy(v.low.begin(), v.low.end(), low);
    std::copy(v.high.begin(), v.high.end(), high);
    return kOk;
}

std::int32_t CameraControl::GetContrast(std::int32_t* contrast) {
    WITH_DEVICE(d);
    return readValue(*d, contrast, [](const ControlValues& v) { return v.contrast; });
}

std::int32_t CameraControl::SetContrast(std::int32_t contrast) {
    WITH_DEVICE(d);
    return setValue(*d, contrast, kContrastMin, kContrastMax,
                    [&](ControlValues& v) { v.contrast = contrast; });
}

std::int32_t CameraControl::GetGamma(std::int32_t* gamma) {
    WITH_DEVICE(d);
    return readValue(*d, gamma, [](const ControlValues& v) { return v.gamma; });
}

std::int32_t CameraControl::SetGamma(std::int32_t gamma) {
    WITH_DEVICE(d);
    return setValue(*d, gamma, kGammaMin, kGammaMax, [&](ControlValues& v) { v.gamma = gamma; });
}

std::int32_t CameraControl::GetMonochrome(std::int32_t* grey) {
    WITH_DEVICE(d);
    return readValue(*d, grey, [](const ControlValues& v) { return v.monochrome ? 1 : 0; });
}

std::int32_t CameraControl::SetMonochrome(std::int32_t grey) {
    WITH_DEVICE(d);
    if (!d->isColour())
        return grey ? kOk : kNotSupported;
    const bool before = d->values().monochrome;
    const std::int32_t status =
        setValue(*d, grey != 0, 0, 1, [&](ControlValues& v) { v.monochrome = grey != 0; });
    if (status >= 0 && before != (grey != 0))
        d->outputChanged();
    return status;
}

std::int32_t CameraControl::GetVerticalFlip(std::int32_t* flip) {
    WITH_DEVICE(d);
    return readValue(*d, flip, [](const ControlValues& v) { return v.verticalFlip ? 1 : 0; });
}

std::int32_t CameraControl::SetVerticalFlip(std::int32_t flip) {
    WITH_DEVICE(d);
    return setValue(*d, flip != 0, 0, 1, [&](ControlValues& v) { v.verticalFlip = flip != 0; });
}

std::int32_t CameraControl::GetHorizontalFlip(std::int32_t* flip) {
    WITH_DEVICE(d);
    return readValue(*d, flip, [](const ControlValues& v) { return v.horizontalFlip ? 1 : 0; });
}

std::int32_t CameraControl::SetHorizontalFlip(std::int32_t flip) {
    WITH_DEVICE(d);
    return setValue(*d, flip != 0, 0, 1, [&](ControlValues& v) { v.horizontalFlip = flip != 0; });
}

std::int32_t CameraControl::SetSpeed(std::uint8_t speed) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureSpeed))
        return kNotSupported;
    return setValue(*d, speed, 0, d->source().maxSpeed(),
                    [&](ControlValues& v) { v.speed = speed; });
}

std::int32_t CameraControl::GetSpeed(std::uint8_t* speed) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureSpeed))
        return kNotSupported;
    return readValue(*d, speed, [](const ControlValues& v) { return v.speed; });
}

std::int32_t CameraControl::GetMaxSpeed() {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureSpeed))
        return 0;
    return std::max(0, d->source().maxSpeed());
}

std::int32_t CameraControl::SetLightSource(std::int32_t source) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureLightSource))
        return kNotSupported;
    return setValue(*d, source, kLightAc60Hz, kLightDc,
                    [&](ControlValues& v) { v.lightSource = source; });
}

std::int32_t CameraControl::GetLightSource(std::int32_t* source) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureLightSource))
        return kNotSupported;
    return readValue(*d, source, [](const ControlValues& v) { return v.lightSource; });
}

std::int32_t CameraControl::SetSamplingMode(std::int32_t mode) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureSamplingMode))
        return kNotSupported;
    return setValue(*d, mode, kSamplingBin, kSamplingSkip,
                    [&](ControlValues& v) { v.sampling = mode; });
}

std::int32_t CameraControl::GetSamplingMode(std::int32_t* mode) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureSamplingMode))
        return kNotSupported;
    return readValue(*d, mode, [](const ControlValues& v) { return v.sampling; });
}

std::int32_t CameraControl::SetNotifyCallback(DSCAP_NOTIFY_CALLBACK cb, void* ctx) {
    WITH_DEVICE(d);
    d->setNotifyCallback(cb, ctx);
    return kOk;
}

std::int32_t CameraControl::GetExposureTimeRange(std::uint32_t* min, std::uint32_t* max,
                                                 std::uint32_t* def) {
    WITH_DEVICE(d);
    return readRange(*d, kFeatureExposureTime, d->source().exposureRange(), min, max, def);
}

std::int32_t CameraControl::GetExposureGainRange(std::uint16_t* min, std::uint16_t* max,
                                                 std::uint16_t* def) {
    WITH_DEVICE(d);
    return readRange(*d, kFeatureGain, d->source().gainRange(), min, max, def);
}

std::int32_t CameraControl::GetResolutionCount() {
    WITH_DEVICE(d);
    return static_cast<std::int32_t>(d->resolutions().size());
}

std::int32_t CameraControl::GetResolution(std::int32_t index, std::int32_t* width,
                                          std::int32_t* height) {
    WITH_DEVICE(d);
    const auto sizes = d->resolutions();
    if (!width || !height || index < 0 || index >= static_cast<std::int32_t>(sizes.size()))
        return kInvalidArgument;
    *width = sizes[static_cast<std::size_t>(index)].width;
    *height = sizes[static_cast<std::size_t>(index)].height;
    return kOk;
}

std::int32_t CameraControl::SetTempTint(std::int32_t temperature, std::int32_t tint) {
    WITH_DEVICE(d);
    if (!d->isColour())
        return kNotSupported;
    if (!inRange(temperature, kTemperatureMin, kTemperatureMax) ||
        !inRange(tint, kTintMin, kTintMax))
        return kInvalidArgument;
    return d->change([&](ControlValues& v) {
        v.temperature = temperature;
        v.tint = tint;
        return kOk;
    });
}

std::int32_t CameraControl::GetTempTint(std::int32_t* temperature, std::int32_t* tint) {
    WITH_DEVICE(d);
    if (!d->isColour())
        return kNotSupported;
    if (!temperature || !tint)
        return kInvalidArgument;
    const ControlValues v = d->values();
    *temperature = v.temperature;
    *tint = v.tint;
    return kOk;
}

std::int32_t CameraControl::WhiteBalanceOnce(DSCAP_WHITEBALANCE_CALLBACK cb, void* ctx) {
    WITH_DEVICE(d);
    return d->startWhiteBalance(cb, ctx);
}

std::int32_t CameraControl::SetWhiteBalanceRegion(std::int32_t left, std::int32_t top,
                                                  std::int32_t right, std::int32_t bottom) {
    WITH_DEVICE(d);
    return setRegion(*d, &ControlValues::whiteBalanceRegion, {left, top, right, bottom});
}

std::int32_t CameraControl::GetWhiteBalanceRegion(std::int32_t* left, std::int32_t* top,
                                                  std::int32_t* right, std::int32_t* bottom) {
    WITH_DEVICE(d);
    return readRegion(*d, &ControlValues::whiteBalanceRegion, left, top, right, bottom);
}

std::int32_t CameraControl::SetAutoExposureRegion(std::int32_t left, std::int32_t top,
                                                  std::int32_t right, std::int32_t bottom) {
    WITH_DEVICE(d);
    return setRegion(*d, &ControlValues::exposureRegion, {left, top, right, bottom});
}

std::int32_t CameraControl::GetAutoExposureRegion(std::int32_t* left, std::int32_t* top,
                                                  std::int32_t* right, std::int32_t* bottom) {
    WITH_DEVICE(d);
    return readRegion(*d, &ControlValues::exposureRegion, left, top, right, bottom);
}

std::int32_t CameraControl::IsColour() {
    WITH_DEVICE(d);
    return d->isColour() ? 1 : 0;
}

std::int32_t CameraControl::GetRealExposureTime(std::uint32_t* microseconds) {
    WITH_DEVICE(d);
    if (!(d->source().features() & kFeatureExposureTime))
        return kNotSupported;
    if (!microseconds)
        return kInvalidArgument;
    *microseconds = d->realExposureTime();
    return kOk;
}

} // namespace dscap

#undef WITH_DEVICE
