#include "camera/view/RegionEditor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace lanmira::RegionEditor {

namespace {

// The edges a handle holds: x -1 left, +1 right; y -1 top, +1 bottom; 0 neither.
struct Sides {
    int x = 0;
    int y = 0;
};

constexpr Sides kSides[] = {{0, 0}, {-1, -1}, {0, -1}, {1, -1}, {1, 0},
                            {1, 1}, {0, 1},   {-1, 1}, {-1, 0}};

constexpr bool isHandle(int code) {
    return code >= 1 && code <= 8;
}

int handleOf(Sides sides) {
    for (int code = 1; code <= 8; ++code)
        if (kSides[code].x == sides.x && kSides[code].y == sides.y)
            return code;
    return kNone;
}

// The view ignores a drag below a hundredth of a video pixel on both axes.
bool negligible(float dx, float dy) {
    return std::fabs(dx) < 0.01f && std::fabs(dy) < 0.01f;
}

float finiteOrZero(float value) {
    return std::isfinite(value) ? value : 0.0f;
}

// The movement that keeps [low, high] inside [0, limit], never reversed: a region already
// over a border is not pulled back by a drag away from it.
float limitMovement(float delta, float low, float high, int limit) {
    if (delta < 0)
        return std::min(0.0f, std::max(delta, -low));
    if (delta > 0)
        return std::max(0.0f, std::min(delta, static_cast<float>(limit) - high));
    return 0.0f;
}

// Mirrors [low, high] within [0, size]: the picture's flip turns the low edge into the high.
template <typename T> void flipSpan(T& low, T& high, int size) {
    const T width = high - low;
    low = static_cast<T>(size) - high;
    high = low + width;
}

template <typename Region> void putInOrder(Region& region) {
    if (region.left > region.right)
        std::swap(region.left, region.right);
    if (region.top > region.bottom)
        std::swap(region.top, region.bottom);
}

} // namespace

int hitTest(const RegionI& screen, QPoint point) {
    // Half-open squares and inside, so each handle covers exactly 10 x 10 pixels.
    const auto within = [](std::int64_t value, std::int64_t low, std::int64_t high) {
        return value >= low && value < high;
    };
    for (int code = 1; code <= 8; ++code) {
        const QPoint handle = VideoGeometry::handlePoint(screen, code);
        if (within(point.x(), std::int64_t{handle.x()} - 5, std::int64_t{handle.x()} + 5) &&
            within(point.y(), std::int64_t{handle.y()} - 5, std::int64_t{handle.y()} + 5))
            return code;
    }
    if (within(point.x(), std::int64_t{screen.left} + 3, std::int64_t{screen.right} - 3) &&
        within(point.y(), std::int64_t{screen.top} + 3, std::int64_t{screen.bottom} - 3))
        return kMove;
    return kNone;
}

Qt::CursorShape cursor(int code) {
    switch (code) {
    case 1:
    case 5:
        return Qt::SizeFDiagCursor;
    case 3:
    case 7:
        return Qt::SizeBDiagCursor;
    case 2:
    case 6:
        return Qt::SizeVerCursor;
    case 4:
    case 8:
        return Qt::SizeHorCursor;
    case kMove:
        return Qt::SizeAllCursor;
    default:
        return Qt::ArrowCursor;
    }
}

bool move(RegionF& region, float dx, float dy, int videoWidth, int videoHeight) {
    if (videoWidth < 1 || videoHeight < 1)
        return false;
    dx = finiteOrZero(dx);
    dy = finiteOrZero(dy);
    if (negligible(dx, dy))
        return false;
    dx = limitMovement(dx, region.left, region.right, videoWidth);
    dy = limitMovement(dy, region.top, region.bottom, videoHeight);
    if (dx == 0 && dy == 0)
        return false;
    region.left += dx;
    region.right += dx;
    region.top += dy;
    region.bottom += dy;
    return true;
}

int resize(RegionF& region, int code, float dx, float dy, int videoWidth, int videoHeight) {
    dx = finiteOrZero(dx);
    dy = finiteOrZero(dy);
    if (!isHandle(code) || negligible(dx, dy))
        return code;
    const float width = static_cast<float>(std::max(videoWidth, 0));
    const float height = static_cast<float>(std::max(videoHeight, 0));
    const auto drag = [](float& edge, float delta, float limit) {
        edge = std::clamp(edge + delta, 0.0f, limit);
    };

    const Sides sides = kSides[code];
    bool crossedX = false;
    bool crossedY = false;
    if (sides.x < 0) {
        drag(region.left, dx, width);
        crossedX = region.left > region.right;
    } else if (sides.x > 0) {
        drag(region.right, dx, width);
        crossedX = region.right < region.left;
    }
    if (sides.y < 0) {
        drag(region.top, dy, height);
        crossedY = region.top > region.bottom;
    } else if (sides.y > 0) {
        drag(region.bottom, dy, height);
        crossedY = region.bottom < region.top;
    }
    // The edges swap so the region stays in order; the handle follows the dragged edge to
    // its new side.
    putInOrder(region);
    return mirrored(code, crossedX, crossedY);
}

int mirrored(int code, bool horizontally, bool vertically) {
    if (!isHandle(code))
        return code;
    Sides sides = kSides[code];
    if (horizontally)
        sides.x = -sides.x;
    if (vertically)
        sides.y = -sides.y;
    return handleOf(sides);
}

RegionI toCamera(const RegionF& region, bool horizontalFlip, bool verticalFlip, int videoWidth,
                 int videoHeight) {
    RegionF flipped = region;
    if (horizontalFlip)
        flipSpan(flipped.left, flipped.right, videoWidth);
    if (verticalFlip)
        flipSpan(flipped.top, flipped.bottom, videoHeight);
    using VideoGeometry::truncated;
    RegionI result{truncated(flipped.left), truncated(flipped.top), truncated(flipped.right),
                   truncated(flipped.bottom)};
    putInOrder(result);
    return result;
}

RegionF fromCamera(const RegionI& region, bool horizontalFlip, bool verticalFlip, int videoWidth,
                   int videoHeight) {
    RegionF result{static_cast<float>(region.left), static_cast<float>(region.top),
                   static_cast<float>(region.right), static_cast<float>(region.bottom)};
    // The flip is its own inverse.
    if (horizontalFlip)
        flipSpan(result.left, result.right, videoWidth);
    if (verticalFlip)
        flipSpan(result.top, result.bottom, videoHeight);
    putInOrder(result);
    return result;
}

} // namespace lanmira::RegionEditor
