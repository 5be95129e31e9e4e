#pragma once

#include "dscap/core/CameraSource.h"
#include "dscap/core/ControlValues.h"
#include "dscap/processing/FrameProcessor.h"

#include <cstdint>
#include <vector>

namespace dscap {

// How one camera's control values reach it: what its source sets in the device, what the
// software processing does for the rest, and which values the source can take at all.
class ValueMapping {
public:
    explicit ValueMapping(const CameraSource& source);

    // Into the source's ranges and resolutions; the regions into the picture.
    void clamp(ControlValues& v) const;
    // To the resolution of that index (which must be one), the regions scaled along.
    void resize(ControlValues& v, int index) const;
    SensorSettings sensorSettings(const ControlValues& v) const;
    // What the source does not do itself.
    ProcessingParams processingParams(const ControlValues& v) const;

private:
    const std::uint32_t features_;
    const bool colour_;
    const std::vector<Resolution> resolutions_;
    const ValueRange<std::uint32_t> time_;
    const ValueRange<std::uint16_t> gain_;
    const int maxSpeed_;
};

} // namespace dscap
