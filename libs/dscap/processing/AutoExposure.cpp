#include "dscap/processing/AutoExposure.h"

#include <algorithm>
#include <cmath>

namespace dscap {

std::uint32_t snapToMains(std::uint32_t us, int lightSource, std::uint32_t min, std::uint32_t max) {
    double half;
    if (lightSource == kLightAc60Hz)
        half = 1e6 / 120.0;
    else if (lightSource == kLightAc50Hz)
        half = 1e6 / 100.0;
    else
        return us;
    if (us < half)
        return us;
    double n = std::round(us / half);
    while (n > 1 && n * half > max)
        n -= 1;
    while (n * half < min)
        n += 1;
    const double snapped = std::round(n * half);
    if (snapped < min || snapped > max)
        return us;
    return static_cast<std::uint32_t>(snapped);
}

namespace {

constexpr int kDeadBand = 4;       // levels either side of the target that count as met
constexpr double kSaturated = 250; // a region this bright hides how far over it is
constexpr double kDamping = 0.6;   // share of the way (in log) moved per step

// The limits in a form that tolerates odd ranges from devices (max below min, gain from 0).
struct Bounds {
    std::uint32_t timeMin, timeMax, timeCap;
    std::uint16_t gainMin, gainMax;
    double gainUnit; // the gain that counts as 1x
    int lightSource;

    explicit Bounds(const AutoExposure::Limits& limits)
        : timeMin(limits.time.min), timeMax(std::max(limits.time.max, limits.time.min)),
          gainMin(limits.gain.min), gainMax(std::max(limits.gain.max, limits.gain.min)),
          gainUnit(std::max(1.0, double(limits.gain.min))), lightSource(limits.lightSource) {
        const std::uint32_t cap =
            limits.maxAutoTimeUs ? std::min(limits.maxAutoTimeUs, timeMax) : timeMax;
        timeCap = std::max(cap, timeMin);
    }

    double total(Exposure e) const {
        return double(e.timeUs) * (std::max(1.0, double(e.gain)) / gainUnit);
    }

    Exposure clamped(Exposure e) const {
        return {std::clamp(e.timeUs, timeMin, timeMax), std::clamp(e.gain, gainMin, gainMax)};
    }

    bool flickers() const { return lightSource == kLightAc50Hz || lightSource == kLightAc60Hz; }
    double halfPeriod() const { return lightSource == kLightAc60Hz ? 1e6 / 120.0 : 1e6 / 100.0; }

    // Time first (gain at its minimum), then gain. The time goes down to whole mains
    // half-periods, never up, and gain makes up the rest, so the total stays continuous
    // and the picture does not hunt between two multiples.
    Exposure spend(double wanted) const {
        const double time = std::clamp(wanted, double(timeMin), double(timeCap));
        auto us = static_cast<std::uint32_t>(std::lround(time));
        const double notAbove = std::clamp(std::floor(wanted), double(timeMin), double(timeCap));
        us = snapToMains(us, lightSource, timeMin, static_cast<std::uint32_t>(notAbove));
        const double gain = gainUnit * wanted / double(std::max(us, 1u));
        const long rounded = std::lround(std::clamp(gain, double(gainMin), double(gainMax)));
        return {us, static_cast<std::uint16_t>(rounded)};
    }

    // The smallest change in the right direction, for errors too small for spend() to turn
    // into a different setting.
    Exposure nudge(Exposure e, bool brighter) const {
        const bool snapped = flickers() && e.timeUs >= halfPeriod();
        const std::uint32_t onePercent = std::max(1u, e.timeUs / 100);
        if (brighter) {
            if (e.gain < gainMax && (snapped || e.timeUs >= timeCap))
                ++e.gain;
            else if (e.timeUs < timeCap)
                e.timeUs = std::min(timeCap, e.timeUs + onePercent);
        } else if (e.gain > gainMin) {
            --e.gain;
        } else if (e.timeUs > timeMin) {
            e.timeUs = std::max(timeMin, e.timeUs - std::min(onePercent, e.timeUs));
            if (snapped)
                e.timeUs = snapToMains(e.timeUs, lightSource, timeMin, e.timeUs);
        }
        return e;
    }
};

} // namespace

Exposure AutoExposure::step(double measured, int target, Exposure current,
                            const Limits& limits) const {
    const Bounds bounds(limits);
    current = bounds.clamped(current);
    target = std::clamp(target, 1, 255);
    if (!(measured >= 1.0))
        measured = 1.0;
    if (measured >= kSaturated)
        measured = 2.0 * target;
    if (std::abs(measured - target) <= kDeadBand)
        return current;

    const bool brighter = measured < target;
    const double total = bounds.total(current);
    const double wanted = total * std::pow(target / measured, kDamping);
    Exposure next = bounds.spend(wanted);
    const double reached = bounds.total(next);
    if (brighter ? reached <= total : reached >= total)
        next = bounds.nudge(current, brighter);
    return next;
}

} // namespace dscap
