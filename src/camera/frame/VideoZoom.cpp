#include "camera/frame/VideoZoom.h"

#include <cstdint>

namespace lanmira {

namespace {

// The ratio num / den against the threshold quarters / 4, compared exactly.
int compareWithQuarters(std::int64_t num, std::int64_t den, int quarters) {
    const std::int64_t lhs = num * 4;
    const std::int64_t rhs = quarters * den;
    return lhs < rhs ? -1 : (lhs > rhs ? 1 : 0);
}

VideoZoom percent(int value) {
    return {value, 100};
}

} // namespace

bool VideoZoom::sameValue(VideoZoom other) const {
    return static_cast<std::int64_t>(numerator) * other.denominator ==
           static_cast<std::int64_t>(other.numerator) * denominator;
}

std::optional<VideoZoom> VideoZoom::step(VideoZoom current, int code) {
    std::int64_t num = current.numerator;
    std::int64_t den = current.denominator;
    if (den < 0) {
        num = -num;
        den = -den;
    }

    std::optional<VideoZoom> next;
    if (code == kActual || den == 0) {
        // A broken fraction has no ratio to step from; any step repairs it to 1:1.
        if (code == kActual || code == kZoomIn || code == kZoomOut)
            next = percent(100);
    } else if (code == kZoomIn) {
        for (int quarters = 1; quarters <= 4 && !next; ++quarters)
            if (compareWithQuarters(num, den, quarters) < 0)
                next = percent(quarters * 25);
    } else if (code == kZoomOut) {
        for (int quarters = 4; quarters >= 1 && !next; --quarters)
            if (compareWithQuarters(num, den, quarters) > 0)
                next = percent(quarters * 25);
    }

    if (next && current.denominator != 0 && next->sameValue(current))
        return std::nullopt;
    return next;
}

} // namespace lanmira
