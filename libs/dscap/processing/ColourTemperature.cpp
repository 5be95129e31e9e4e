#include "dscap/processing/ColourTemperature.h"

#include <algorithm>
#include <cmath>

namespace dscap {
namespace {

struct Rgb {
    double r, g, b;
};

// Linear sRGB of the Planckian locus point at that temperature (Y = 1), from the cubic
// spline fit of the locus in CIE 1931 xy.
Rgb planckianRgb(double kelvin) {
    const double t = std::clamp(kelvin, 1667.0, 25000.0);
    const double t1 = 1e3 / t, t2 = t1 * t1, t3 = t2 * t1;
    const double x = t <= 4000.0 ? -0.2661239 * t3 - 0.2343589 * t2 + 0.8776956 * t1 + 0.179910
                                 : -3.0258469 * t3 + 2.1070379 * t2 + 0.2226347 * t1 + 0.240390;
    const double x2 = x * x, x3 = x2 * x;
    double y;
    if (t <= 2222.0)
        y = -1.1063814 * x3 - 1.34811020 * x2 + 2.18555832 * x - 0.20219683;
    else if (t <= 4000.0)
        y = -0.9549476 * x3 - 1.37418593 * x2 + 2.09137015 * x - 0.16748867;
    else
        y = 3.0817580 * x3 - 5.87338670 * x2 + 3.75112997 * x - 0.37001483;
    const double bigX = x / y, bigY = 1.0, bigZ = (1.0 - x - y) / y;
    return {3.2406 * bigX - 1.5372 * bigY - 0.4986 * bigZ,
            -0.9689 * bigX + 1.8758 * bigY + 0.0415 * bigZ,
            0.0557 * bigX - 0.2040 * bigY + 1.0570 * bigZ};
}

} // namespace

RgbGains lightColour(double kelvin) {
    static const Rgb daylight = planckianRgb(kTemperatureDefault);
    const Rgb c = planckianRgb(kelvin);
    const double r = c.r / daylight.r, g = c.g / daylight.g, b = c.b / daylight.b;
    return {std::max(b / g, 0.01), 1.0, std::max(r / g, 0.01)};
}

RgbGains whiteBalanceGains(int temperature, int tint) {
    const RgbGains light = lightColour(std::clamp(temperature, kTemperatureMin, kTemperatureMax));
    const double t = std::clamp(tint, kTintMin, kTintMax);
    return {1.0 / light.b, std::sqrt(kTintDefault / t), 1.0 / light.r};
}

std::pair<int, int> tempTintForNeutral(double meanB, double meanG, double meanR) {
    // Below this an area is too dark (or empty) for its colour to mean anything.
    constexpr double kTooDark = 0.5;
    const auto usable = [](double mean) { return std::isfinite(mean) && mean >= kTooDark; };
    if (!usable(meanB) || !usable(meanG) || !usable(meanR))
        return {kTemperatureDefault, kTintDefault};

    // Blue over red of the light rises with the temperature, so bisection finds the one
    // temperature whose light tints a white object like these means.
    const auto blueOverRed = [](double kelvin) {
        const RgbGains c = lightColour(kelvin);
        return c.b / c.r;
    };
    const double wanted = meanB / meanR;
    double lo = std::log(double(kTemperatureMin));
    double hi = std::log(double(kTemperatureMax));
    double kelvin;
    if (wanted <= blueOverRed(kTemperatureMin)) {
        kelvin = kTemperatureMin;
    } else if (wanted >= blueOverRed(kTemperatureMax)) {
        kelvin = kTemperatureMax;
    } else {
        for (int i = 0; i < 40; ++i) {
            const double mid = 0.5 * (lo + hi);
            if (blueOverRed(std::exp(mid)) < wanted)
                lo = mid;
            else
                hi = mid;
        }
        kelvin = std::exp(0.5 * (lo + hi));
    }
    const int temperature =
        std::clamp(static_cast<int>(std::lround(kelvin)), kTemperatureMin, kTemperatureMax);

    // Green is brought to the level blue and red reach under the temperature's gains; a
    // clamped temperature leaves those two apart, so green meets them half way (in log).
    const RgbGains gains = whiteBalanceGains(temperature, kTintDefault);
    const double neutral = std::sqrt(meanB * gains.b * meanR * gains.r);
    const double ratio = meanG / neutral;
    const double tint = kTintDefault * ratio * ratio;
    const long rounded = std::lround(std::clamp(tint, double(kTintMin), double(kTintMax)));
    return {temperature, static_cast<int>(rounded)};
}

} // namespace dscap
