#pragma once

#include <array>
#include <cstdint>

namespace dscap {

// Channel order of histograms and level ranges.
enum Channel : int { kBlue = 0, kGreen = 1, kRed = 2, kGrey = 3 };

// Counts of the values 0..255 per channel, as the histogram callback hands them on.
struct Histogram {
    std::array<std::array<double, 256>, 4> bins{};
    void clear() { bins = {}; }
};

using LevelArray = std::array<std::uint16_t, 4>;

// Level edges that cut the darkest and brightest 0.5 % of each channel's counts; a channel
// without counts keeps 0..255. For grey output only the grey channel is measured and the
// colour channels keep their edges.
void autoLevels(const Histogram& histogram, bool monochrome, LevelArray& low, LevelArray& high);

} // namespace dscap
