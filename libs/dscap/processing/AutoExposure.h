#pragma once

#include "dscap/core/CameraSource.h"

#include <cstdint>

namespace dscap {

// The shortest whole number of mains half-periods (8333 us at 60 Hz, 10000 us at 50 Hz)
// nearest to the time, for times of at least one half-period and a light source that
// flickers; otherwise the time itself. Stays within [min, max] when a multiple fits.
std::uint32_t snapToMains(std::uint32_t us, int lightSource, std::uint32_t min, std::uint32_t max);

struct Exposure {
    std::uint32_t timeUs = 0;
    std::uint16_t gain = 0;
    friend bool operator==(const Exposure&, const Exposure&) = default;
};

// Drives exposure time first, then gain, so that the measured brightness meets the target.
// Damped, with a dead band of a few levels so the picture settles instead of hunting.
class AutoExposure {
public:
    struct Limits {
        ValueRange<std::uint32_t> time;
        ValueRange<std::uint16_t> gain;
        std::uint32_t maxAutoTimeUs = 0; // longest time auto exposure picks before adding gain
        int lightSource = kLightAc50Hz;
    };

    // One step from a frame taken with `current` whose region luma was `measured` (0..255).
    // Returns `current` unchanged when the brightness is close enough.
    Exposure step(double measured, int target, Exposure current, const Limits& limits) const;
};

} // namespace dscap
