#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace dscap {

// The slide as the sensor sees it at one sampling: each sample holds round(255 * sqrt(T))
// of the transmittance T, so that the sensor gets T (as s * s) and the square root it needs
// for shot noise from one byte. Samples are BGR triples, or one grey value for a
// monochrome sensor.
struct SlideTexture {
    int width = 0;
    int height = 0;
    int channels = 3;
    std::vector<std::uint8_t> samples;

    std::size_t stride() const { return static_cast<std::size_t>(width) * channels; }
    const std::uint8_t* row(int y) const { return samples.data() + stride() * y; }
    std::uint8_t* row(int y) { return samples.data() + stride() * y; }
};

// The slide at every sampling the sensor offers: full resolution, and 2x2 or 4x4 blocks
// averaged (bin) or every 2nd or 4th sample taken (skip). Each covers the field of view
// plus a margin on every side for the stage drift.
struct Slide {
    static constexpr int kMargin = 64; // full-resolution pixels, divisible by 4
    SlideTexture full;
    SlideTexture bin2;
    SlideTexture bin4;
    SlideTexture skip2;
    SlideTexture skip4;

    const SlideTexture& texture(int factor, bool skip) const {
        if (factor >= 4)
            return skip ? skip4 : bin4;
        if (factor == 2)
            return skip ? skip2 : bin2;
        return full;
    }
};

} // namespace dscap
