#pragma once

#include "dscap/demo/SlideLayout.h"
#include "dscap/demo/SlideTexture.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

namespace dscap {

// Paints a stained smear as transmittance: a bright, slightly uneven background with a soft
// vignette, and on it the cells, fibres, debris and out-of-focus blobs of its layout, each
// adding stain by the Beer-Lambert law. The picture follows from the seed alone.
class SlideRenderer {
public:
    struct Options {
        int width = 2592; // the field of view at full resolution
        int height = 1944;
        std::uint32_t seed = 0;
        bool colour = true;
        // Weights of B, G, R in the single value of a monochrome texture.
        std::array<double, 3> greyWeights{0.114, 0.587, 0.299};
    };

    explicit SlideRenderer(const Options& options);

    // Every texture of the slide, with Slide::kMargin around the field of view; nullptr when
    // cancel was set meanwhile (it is looked at every row).
    std::unique_ptr<Slide> render(const std::atomic<bool>* cancel = nullptr) const;

private:
    Options options_;
    SlideLayout layout_;
};

} // namespace dscap
