#pragma once

#include "dscap/core/CameraSource.h"

#include <linux/videodev2.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace dscap::v4l2 {

class V4l2Device;

// The decodable formats of a device with their sizes and frame intervals, queried once, and
// the choice of format for each picture size.
class V4l2Formats {
public:
    struct Choice {
        std::uint32_t pixelFormat = 0;
        Resolution size;
        std::vector<v4l2_fract> intervals; // discrete, slowest first
    };

    void query(V4l2Device& device);

    // Every size of the decodable formats, largest first.
    const std::vector<Resolution>& resolutions() const { return resolutions_; }
    // Motion-JPEG at 1280x720 and above or where it is faster; else YUYV; else the best
    // other format. Empty for an index out of range.
    std::optional<Choice> choose(int resolutionIndex) const;
    // Whether some size offers a choice of frame intervals.
    bool hasSpeeds() const;
    bool isColour() const;
    bool empty() const { return formats_.empty(); }

private:
    struct SizeOption {
        Resolution size;
        std::vector<v4l2_fract> intervals;
    };
    struct Format {
        std::uint32_t pixelFormat = 0;
        std::vector<SizeOption> sizes;
    };

    std::vector<Format> formats_; // in the device's order
    std::vector<Resolution> resolutions_;
};

} // namespace dscap::v4l2
