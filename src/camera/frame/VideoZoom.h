#pragma once

#include <optional>

namespace lanmira {

// The camera frame's zoom of the live picture, a fraction kept as the user last set it.
struct VideoZoom {
    int numerator = 100;
    int denominator = 100;

    // Codes the live view posts with its zoom message.
    static constexpr int kZoomIn = 105;  // wheel forward
    static constexpr int kZoomOut = 111; // wheel backward
    static constexpr int kActual = 49;   // middle button

    // The zoom after one step of that code, or nothing when the step leaves the value as
    // it is (compared by value: 50/100 equals 1/2), and for an unknown code. The wheel never
    // goes beyond 100 %. A zero denominator is repaired to 100 % by any step.
    static std::optional<VideoZoom> step(VideoZoom current, int code);

    bool sameValue(VideoZoom other) const;
};

} // namespace lanmira
