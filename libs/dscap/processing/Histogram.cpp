#include "dscap/processing/Histogram.h"

#include <algorithm>

namespace dscap {
namespace {

// Share of the counts left outside the edges at each end, so that a few hot or dead
// pixels do not hold the range open.
constexpr double kClip = 0.005;

void levelsOf(const std::array<double, 256>& bins, std::uint16_t& low, std::uint16_t& high) {
    double total = 0;
    for (const double count : bins)
        total += count;
    if (!(total > 0)) {
        low = 0;
        high = 255;
        return;
    }
    const double cut = total * kClip;
    int lo = 0;
    for (double below = bins[0]; below <= cut && lo < 255;)
        below += bins[++lo];
    int hi = 255;
    for (double above = bins[255]; above <= cut && hi > 0;)
        above += bins[--hi];
    // A picture of a single level gets a narrow range around it rather than a step that
    // the level stage would turn all black or all white.
    if (hi <= lo) {
        hi = std::min(lo + 1, 255);
        lo = std::max(hi - 2, 0);
        hi = std::min(lo + 2, 255);
    }
    low = static_cast<std::uint16_t>(lo);
    high = static_cast<std::uint16_t>(hi);
}

} // namespace

void autoLevels(const Histogram& histogram, bool monochrome, LevelArray& low, LevelArray& high) {
    if (monochrome) {
        levelsOf(histogram.bins[kGrey], low[kGrey], high[kGrey]);
        return;
    }
    for (const int channel : {kBlue, kGreen, kRed})
        levelsOf(histogram.bins[channel], low[channel], high[channel]);
}

} // namespace dscap
