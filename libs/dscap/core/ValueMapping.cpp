#include "dscap/core/ValueMapping.h"

#include "dscap/processing/ColourTemperature.h"

#include <algorithm>

namespace dscap {

namespace {

Region scaleRegion(const Region& r, Resolution from, Resolution to) {
    if (from.width <= 0 || from.height <= 0)
        return {};
    auto sx = [&](int v) {
        return static_cast<int>(static_cast<long long>(v) * to.width / from.width);
    };
    auto sy = [&](int v) {
        return static_cast<int>(static_cast<long long>(v) * to.height / from.height);
    };
    return {sx(r.left), sy(r.top), sx(r.right), sy(r.bottom)};
}

} // namespace

ValueMapping::ValueMapping(const CameraSource& source)
    : features_(source.features()), colour_(source.isColour()), resolutions_(source.resolutions()),
      time_(source.exposureRange()), gain_(source.gainRange()), maxSpeed_(source.maxSpeed()) {}

void ValueMapping::clamp(ControlValues& v) const {
    const int count = static_cast<int>(resolutions_.size());
    v.resolutionIndex = count > 0 ? std::clamp(v.resolutionIndex, 0, count - 1) : 0;
    if (features_ & kFeatureExposureTime)
        v.exposureUs = std::clamp(v.exposureUs, time_.min, time_.max);
    if (features_ & kFeatureGain)
        v.gain = std::clamp(v.gain, gain_.min, gain_.max);
    v.speed = std::clamp(v.speed, 0, std::max(0, maxSpeed_));
    if (!colour_)
        v.monochrome = true;
    const Resolution size = count > 0 ? resolutions_[v.resolutionIndex] : Resolution{};
    v.whiteBalanceRegion = clampRegion(v.whiteBalanceRegion, size.width, size.height);
    v.exposureRegion = clampRegion(v.exposureRegion, size.width, size.height);
}

void ValueMapping::resize(ControlValues& v, int index) const {
    const Resolution from = resolutions_[v.resolutionIndex];
    const Resolution to = resolutions_[index];
    v.resolutionIndex = index;
    v.whiteBalanceRegion =
        clampRegion(scaleRegion(v.whiteBalanceRegion, from, to), to.width, to.height);
    v.exposureRegion = clampRegion(scaleRegion(v.exposureRegion, from, to), to.width, to.height);
}

SensorSettings ValueMapping::sensorSettings(const ControlValues& v) const {
    SensorSettings s;
    s.exposureUs = v.exposureUs;
    s.gain = v.gain;
    s.nativeAutoExposure = v.autoExposure && !(features_ & kFeatureExposureTime) &&
                           (features_ & kFeatureNativeAutoExposure);
    s.lightSource = v.lightSource;
    s.sampling = v.sampling;
    s.speed = v.speed;
    s.hue = v.hue;
    s.saturation = v.saturation;
    s.brightness = v.brightness;
    s.contrast = v.contrast;
    s.gamma = v.gamma;
    s.horizontalFlip = v.horizontalFlip;
    s.verticalFlip = v.verticalFlip;
    s.temperature = v.temperature;
    return s;
}

ProcessingParams ValueMapping::processingParams(const ControlValues& v) const {
    ProcessingParams p;
    const RgbGains gains = (features_ & kFeatureWhiteBalanceTemperature)
                               ? whiteBalanceGains(kTemperatureDefault, v.tint)
                               : whiteBalanceGains(v.temperature, v.tint);
    if (colour_) {
        p.gainB = gains.b;
        p.gainG = gains.g;
        p.gainR = gains.r;
        if (!(features_ & kFeatureHue))
            p.hue = v.hue;
        if (!(features_ & kFeatureSaturation))
            p.saturation = v.saturation;
    }
    if (!(features_ & kFeatureBrightness))
        p.brightness = v.brightness;
    if (!(features_ & kFeatureContrast))
        p.contrast = v.contrast;
    if (!(features_ & kFeatureGamma))
        p.gamma = v.gamma;
    p.low = v.low;
    p.high = v.high;
    p.monochrome = v.monochrome || !colour_;
    if (!(features_ & kFeatureHorizontalFlip))
        p.horizontalFlip = v.horizontalFlip;
    if (!(features_ & kFeatureVerticalFlip))
        p.verticalFlip = v.verticalFlip;
    return p;
}

} // namespace dscap
