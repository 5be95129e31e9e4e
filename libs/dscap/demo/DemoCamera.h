#pragma once

#include "dscap/core/CameraSource.h"

#include <cstdint>
#include <memory>

namespace dscap {

struct DemoOptions {
    bool colour = true;
    bool drift = true;           // the slide wanders slowly, as on a real stage
    std::uint32_t seed = 0x5EED; // slide layout and noise
    // Benchmarks and tests only: read() renders at once instead of waiting for the frame
    // period, and stamps each frame one period after the last.
    bool unpaced = false;
};

// A microscope camera without hardware: a stained slide under a 3200 K lamp on 50 Hz mains,
// seen by a 2592 x 1944 rolling-shutter sensor.
std::unique_ptr<CameraSource> makeDemoCamera(const DemoOptions& options);

} // namespace dscap
