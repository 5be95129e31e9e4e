#pragma once

#include "dscap/core/CameraSource.h"
#include "dscap/processing/ColourTemperature.h"
#include "dscap/processing/Histogram.h"
#include "dscap/processing/RegionStats.h"

#include <algorithm>
#include <cstdint>

namespace dscap {

// Every value of one camera that the control interface reads and sets, with the defaults a
// camera starts with before it has settings of its own.
struct ControlValues {
    int resolutionIndex = 0;
    bool autoExposure = true;
    std::uint16_t autoExposureTarget = 120;
    std::uint32_t exposureUs = 0; // 0 until the camera's default is known
    std::uint16_t gain = 0;
    int hue = 0;
    int saturation = 128;
    int brightness = 0;
    int contrast = 0;
    int gamma = 100;
    LevelArray low{0, 0, 0, 0};
    LevelArray high{255, 255, 255, 255};
    bool monochrome = false;
    bool horizontalFlip = false;
    bool verticalFlip = false;
    int speed = 0;
    int lightSource = kLightAc50Hz;
    int sampling = kSamplingBin;
    int temperature = kTemperatureDefault;
    int tint = kTintDefault;
    Region whiteBalanceRegion; // empty: the middle of the picture
    Region exposureRegion;

    friend bool operator==(const ControlValues&, const ControlValues&) = default;
};

// The interface's own ranges.
inline constexpr int kHueMin = -180, kHueMax = 180;
inline constexpr int kSaturationMin = 0, kSaturationMax = 255;
inline constexpr int kBrightnessMin = -64, kBrightnessMax = 64;
inline constexpr int kContrastMin = -100, kContrastMax = 100;
inline constexpr int kGammaMin = 20, kGammaMax = 180;
inline constexpr int kTargetMin = 10, kTargetMax = 230;

// The middle third of a picture, where a region starts before the user moves it.
inline Region defaultRegion(int width, int height) {
    return {width / 3, height / 3, width - width / 3, height - height / 3};
}

// The region within a picture of that size; one left empty by that is the default region.
inline Region clampRegion(Region r, int width, int height) {
    r.left = std::clamp(r.left, 0, width);
    r.right = std::clamp(r.right, 0, width);
    r.top = std::clamp(r.top, 0, height);
    r.bottom = std::clamp(r.bottom, 0, height);
    if (r.right <= r.left || r.bottom <= r.top)
        return defaultRegion(width, height);
    return r;
}

} // namespace dscap
