#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace lanmira {

// A region of interest in video pixels (floats, as the view drags them).
struct RegionF {
    float left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const RegionF&) const = default;
};

// The integer region handed to the camera.
struct RegionI {
    int left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const RegionI&) const = default;
};

namespace VideoGeometry {

// Multiply-divide in 64 bits rounded half away from zero; 0 when the divisor is 0, and a
// result beyond the integer range saturates.
int mulDiv(int value, int numerator, int denominator);

// A float truncated toward zero; NaN gives 0 and values beyond the integer range saturate.
int truncated(float value);

// Where the live picture lies in the client area: centred, 2 pixels right of and below the
// exact centre, or from the edge when the client is not larger than the picture.
QRect pictureRect(QSize client, QSize video, int numerator, int denominator);

// The region on screen: each edge scaled and truncated, then shifted by the picture's
// top-left corner. Edges, not a QRect: right and bottom are where the outline is drawn.
RegionI screenRegion(const RegionF& region, const QRect& picture, int numerator, int denominator);

// The handle points 1 to 8 of a screen region; (0, 0) for any other code.
QPoint handlePoint(const RegionI& screen, int code);

} // namespace VideoGeometry

} // namespace lanmira
