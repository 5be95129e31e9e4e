#include "camera/view/VideoGeometry.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace lanmira::VideoGeometry {

namespace {

int saturate(std::int64_t value) {
    if (value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    if (value < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

} // namespace

int truncated(float value) {
    if (std::isnan(value))
        return 0;
    constexpr float kLimit = 2147483648.0f; // 2^31, exact in a float
    if (value >= kLimit)
        return std::numeric_limits<int>::max();
    if (value <= -kLimit)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

int mulDiv(int value, int numerator, int denominator) {
    // A zero divisor comes from a zoom that was never set; nothing is shown then.
    if (denominator == 0)
        return 0;
    const std::int64_t product = static_cast<std::int64_t>(value) * numerator;
    const std::int64_t divisor = std::llabs(denominator);
    const std::int64_t magnitude = (std::llabs(product) + divisor / 2) / divisor;
    return saturate((product < 0) != (denominator < 0) ? -magnitude : magnitude);
}

QRect pictureRect(QSize client, QSize video, int numerator, int denominator) {
    const int width = mulDiv(video.width(), numerator, denominator);
    const int height = mulDiv(video.height(), numerator, denominator);
    // The 2 extra pixels put the picture just right of and below the exact centre; the
    // layout has always been like that, and the regions are drawn relative to it.
    const int left = client.width() > width ? (client.width() - width) / 2 + 2 : 0;
    const int top = client.height() > height ? (client.height() - height) / 2 + 2 : 0;
    return {QPoint(left, top), QSize(width, height)};
}

RegionI screenRegion(const RegionF& region, const QRect& picture, int numerator, int denominator) {
    // Scaled in single precision, as the region is kept.
    const auto edge = [&](float value, int origin) {
        const int scaled = denominator == 0 ? 0
                                            : truncated(value * static_cast<float>(numerator) /
                                                        static_cast<float>(denominator));
        return saturate(std::int64_t{scaled} + origin);
    };
    return {edge(region.left, picture.left()), edge(region.top, picture.top()),
            edge(region.right, picture.left()), edge(region.bottom, picture.top())};
}

QPoint handlePoint(const RegionI& screen, int code) {
    const int midX = static_cast<int>((static_cast<std::int64_t>(screen.left) + screen.right) / 2);
    const int midY = static_cast<int>((static_cast<std::int64_t>(screen.top) + screen.bottom) / 2);
    switch (code) {
    case 1:
        return {screen.left, screen.top};
    case 2:
        return {midX, screen.top};
    case 3:
        return {screen.right, screen.top};
    case 4:
        return {screen.right, midY};
    case 5:
        return {screen.right, screen.bottom};
    case 6:
        return {midX, screen.bottom};
    case 7:
        return {screen.left, screen.bottom};
    case 8:
        return {screen.left, midY};
    default:
        return {};
    }
}

} // namespace lanmira::VideoGeometry
