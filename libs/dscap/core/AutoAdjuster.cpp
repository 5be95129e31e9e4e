#include "dscap/core/AutoAdjuster.h"

#include "dscap/processing/ColourTemperature.h"
#include "dscap/processing/RegionStats.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace dscap {

namespace {

constexpr std::uint32_t kMaxAutoExposureUs = 100000; // longer only with gain at its top
constexpr int kSettleFrames = 2;       // frames until a new exposure shows in the picture
constexpr int kWhiteBalanceRounds = 4; // for cameras that balance in the device

} // namespace

AutoAdjuster::AutoAdjuster(std::uint32_t features, ValueRange<std::uint32_t> time,
                           ValueRange<std::uint16_t> gain)
    : features_(features), time_(time), gain_(gain) {}

bool AutoAdjuster::exposureDue() {
    if (!(features_ & kFeatureExposureTime))
        return false;
    if (settleFrames_ > 0) {
        --settleFrames_;
        return false;
    }
    return true;
}

std::optional<Exposure> AutoAdjuster::nextExposure(const SourceFrame& frame,
                                                   const ControlValues& v) const {
    if (!v.autoExposure)
        return std::nullopt;
    const RegionMeans means =
        regionMeans(frame, clampRegion(v.exposureRegion, frame.width, frame.height));
    if (!means.valid)
        return std::nullopt;
    AutoExposure::Limits limits;
    limits.time = time_;
    limits.gain =
        (features_ & kFeatureGain) ? gain_ : ValueRange<std::uint16_t>{v.gain, v.gain, v.gain};
    limits.maxAutoTimeUs = std::min(kMaxAutoExposureUs, limits.time.max);
    limits.lightSource = (features_ & kFeatureLightSource) ? v.lightSource : kLightDc;
    const Exposure current{v.exposureUs, v.gain};
    const Exposure next = AutoExposure().step(means.luma, v.autoExposureTarget, current, limits);
    if (next == current)
        return std::nullopt;
    return next;
}

void AutoAdjuster::exposureSet() {
    settleFrames_ = kSettleFrames;
}

bool AutoAdjuster::balanceDue() {
    if (balanceWait_ > 0) {
        --balanceWait_;
        return false;
    }
    return true;
}

AutoAdjuster::Balance AutoAdjuster::balance(const SourceFrame& frame, const ControlValues& v,
                                            int round) {
    const RegionMeans means =
        regionMeans(frame, clampRegion(v.whiteBalanceRegion, frame.width, frame.height));
    if (!means.valid)
        return {};
    Balance result;
    result.kind = Balance::Done;
    if (features_ & kFeatureWhiteBalanceTemperature) {
        // The device applied its own balance for the current temperature: take it out to
        // get what the sensor saw, and look again after the new one has reached the picture.
        const double hi = std::max(means.b, means.r);
        const bool balanced = hi > 0 && std::abs(means.b - means.r) / hi < 0.02;
        const RgbGains in = whiteBalanceGains(v.temperature, kTintDefault);
        std::tie(result.temperature, result.tint) =
            tempTintForNeutral(means.b / in.b, means.g / in.g, means.r / in.r);
        if (balanced || round > kWhiteBalanceRounds) {
            result.temperature = v.temperature;
        } else {
            result.kind = Balance::Again;
            balanceWait_ = kSettleFrames;
        }
    } else {
        std::tie(result.temperature, result.tint) = tempTintForNeutral(means.b, means.g, means.r);
    }
    return result;
}

} // namespace dscap
