#pragma once

#include <utility>

namespace dscap {

struct RgbGains {
    double b = 1.0;
    double g = 1.0;
    double r = 1.0;
};

inline constexpr int kTemperatureMin = 2000;
inline constexpr int kTemperatureMax = 15000;
inline constexpr int kTemperatureDefault = 6503;
inline constexpr int kTintMin = 200;
inline constexpr int kTintMax = 2500;
inline constexpr int kTintDefault = 1000;

// Linear RGB of the light of a black body at that temperature, relative to daylight
// (6503 K is 1, 1, 1), normalised so that green is 1. A sensor balanced for daylight sees
// a white object under this light with these relative levels.
RgbGains lightColour(double kelvin);

// The gains white balance applies for a temperature and tint: they make a white object
// under light of that temperature neutral. 6503 and 1000 leave the picture alone; a tint
// above 1000 lowers green (towards magenta), below raises it.
RgbGains whiteBalanceGains(int temperature, int tint);

// The temperature and tint, clamped to their ranges, whose gains turn an area with these
// mean levels (taken without white balance) neutral.
std::pair<int, int> tempTintForNeutral(double meanB, double meanG, double meanR);

} // namespace dscap
