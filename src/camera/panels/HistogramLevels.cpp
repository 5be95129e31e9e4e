#include "camera/panels/HistogramLevels.h"

#include <algorithm>
#include <utility>

namespace lanmira {
namespace {

std::size_t at(int channel) {
    return static_cast<std::size_t>(std::clamp(channel, 0, 3));
}

std::uint16_t level(int v) {
    return static_cast<std::uint16_t>(std::clamp(v, 0, 255));
}

} // namespace

int HistogramLevels::lowEdge(int channel) const {
    if (channel == kAllColours)
        return std::min({low[0], low[1], low[2]});
    return low[at(channel)];
}

int HistogramLevels::highEdge(int channel) const {
    if (channel == kAllColours)
        return std::max({high[0], high[1], high[2]});
    return high[at(channel)];
}

void HistogramLevels::setColours(int lowValue, int highValue) {
    for (std::size_t c = 0; c < 3; ++c) {
        low[c] = level(lowValue);
        high[c] = level(highValue);
    }
}

void HistogramLevels::joinColours() {
    setColours(lowEdge(kAllColours), highEdge(kAllColours));
}

void HistogramLevels::typeLow(int channel, int value) {
    if (channel == kAllColours) {
        int lo = value, hi = highEdge(kAllColours);
        if (lo > hi)
            std::swap(lo, hi);
        setColours(lo, hi);
        return;
    }
    const std::size_t c = at(channel);
    low[c] = level(value);
    if (low[c] > high[c])
        std::swap(low[c], high[c]);
}

void HistogramLevels::typeHigh(int channel, int value) {
    if (channel == kAllColours) {
        int lo = lowEdge(kAllColours), hi = value;
        if (lo > hi)
            std::swap(lo, hi);
        setColours(lo, hi);
        return;
    }
    const std::size_t c = at(channel);
    high[c] = level(value);
    if (low[c] > high[c])
        std::swap(low[c], high[c]);
}

void HistogramLevels::dropLow(int channel, int value) {
    if (channel == kAllColours) {
        for (std::size_t c = 0; c < 3; ++c)
            low[c] = level(value);
        return;
    }
    typeLow(channel, value);
    const std::size_t c = at(channel);
    if (low[c] == high[c]) {
        low[c] = level(low[c] - 1);
        high[c] = level(high[c] + 1);
    }
}

void HistogramLevels::dropHigh(int channel, int value) {
    if (channel == kAllColours) {
        for (std::size_t c = 0; c < 3; ++c)
            high[c] = level(value);
        return;
    }
    typeHigh(channel, value);
    const std::size_t c = at(channel);
    if (low[c] == high[c]) {
        low[c] = level(low[c] - 1);
        high[c] = level(high[c] + 1);
    }
}

} // namespace lanmira
