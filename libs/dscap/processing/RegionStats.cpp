#include "dscap/processing/RegionStats.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace dscap {

RegionMeans regionMeans(const SourceFrame& frame, Region region) {
    RegionMeans means;
    if (!frame.bgr)
        return means;
    const int left = std::max(region.left, 0);
    const int top = std::max(region.top, 0);
    const int right = std::min(region.right, frame.width);
    const int bottom = std::min(region.bottom, frame.height);
    if (left >= right || top >= bottom)
        return means;

    // One sample every `step` pixels each way keeps the count near 64k for any size.
    constexpr double kMaxSamples = 65536.0;
    const double area = double(right - left) * double(bottom - top);
    const int step = std::max(1, static_cast<int>(std::ceil(std::sqrt(area / kMaxSamples))));

    std::uint64_t sumB = 0, sumG = 0, sumR = 0, count = 0;
    for (int y = top; y < bottom; y += step) {
        const std::uint8_t* p = frame.bgr + static_cast<std::ptrdiff_t>(y) * frame.stride;
        std::uint32_t rowB = 0, rowG = 0, rowR = 0, rowCount = 0;
        for (int x = left; x < right; x += step) {
            const std::uint8_t* px = p + x * 3;
            rowB += px[0];
            rowG += px[1];
            rowR += px[2];
            ++rowCount;
        }
        sumB += rowB;
        sumG += rowG;
        sumR += rowR;
        count += rowCount;
    }
    const double n = double(count);
    means.b = double(sumB) / n;
    means.g = double(sumG) / n;
    means.r = double(sumR) / n;
    means.luma = 0.114 * means.b + 0.587 * means.g + 0.299 * means.r;
    means.valid = true;
    return means;
}

} // namespace dscap
