#pragma once

#include "dscap/core/CameraSource.h"

namespace dscap {

struct Region {
    int left = 0;
    int top = 0;
    int right = 0; // exclusive
    int bottom = 0;
    friend bool operator==(const Region&, const Region&) = default;
};

struct RegionMeans {
    double b = 0;
    double g = 0;
    double r = 0;
    double luma = 0;    // 0.114 B + 0.587 G + 0.299 R
    bool valid = false; // false for an empty region
};

// Means over the region clipped to the frame, from a sample grid of at most about 64k
// pixels so the cost stays flat at any resolution.
RegionMeans regionMeans(const SourceFrame& frame, Region region);

} // namespace dscap
