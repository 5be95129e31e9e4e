#pragma once

#include "dscap/demo/SlideTexture.h"

#include <array>
#include <cstdint>
#include <vector>

namespace dscap {

// How one frame is taken.
struct SensorExposure {
    double exposureUs = 30000;
    double gain = 1; // a multiple of the lowest gain
    // Level per channel (B, G, R; only the first for a grey texture) of a fully transmitting
    // spot at 30 ms and gain 1, before clipping.
    std::array<double, 3> lamp{1, 1, 1};
    bool flicker = true;      // the lamp runs on AC and its light ripples at 100 Hz
    double lineTimeS = 0;     // rolling shutter: how much later each row starts its exposure
    double noiseDivisor = 1;  // 2 or 4 when the sensor averages blocks
    std::int64_t startNs = 0; // exposure start of the top row, CLOCK_MONOTONIC
};

// Turns light through the slide into eight-bit levels: level = transmittance x lamp x
// exposure x gain, the lamp's ripple averaged over each row's exposure window, with noise
// that grows with level and gain, clipped to 0..255.
class SensorModel {
public:
    // Rows of up to maxWidth pixels.
    SensorModel(std::uint32_t seed, int maxWidth);

    // Exposes width x height pixels of the texture starting at (x0, y0) into BGR rows.
    void expose(const SlideTexture& texture, int x0, int y0, int width, int height,
                const SensorExposure& exposure, std::uint8_t* out, int stride);

    // The lamp's intensity (1 on average) averaged over an exposure window of that length
    // starting at that time.
    static double meanLight(double startS, double exposureS);

    static constexpr double kReferenceExposureUs = 30000;

private:
    std::vector<std::int16_t> noise_; // unit normal samples, scaled by 4096
    std::vector<std::uint8_t> greyRow_;
    std::uint64_t state_;
};

} // namespace dscap
