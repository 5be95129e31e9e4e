#pragma once

#include "camera/view/VideoGeometry.h"

#include <Qt>

namespace lanmira {

// Hit test, move and resize of a region of interest, free of widgets.
//
// Codes: -1 nothing, 0 move (inside, 3 pixels in from the edges), 1 top-left, 2 top,
// 3 top-right, 4 right, 5 bottom-right, 6 bottom, 7 bottom-left, 8 left.
namespace RegionEditor {

inline constexpr int kNone = -1;
inline constexpr int kMove = 0;

// The handles are tried in the order 1 to 8, each as a 10 x 10 square around its point
// (from 5 pixels before it up to 4 after); then the inside shrunk by 3 pixels, its right
// and bottom edges excluded.
int hitTest(const RegionI& screen, QPoint point);

Qt::CursorShape cursor(int code);

// Moves the region by (dx, dy) video pixels, limited so that it stays inside the video;
// its size never changes. False when nothing moved: a video below 1 x 1, a drag below
// 0.01 pixel on both axes, or a region already against the borders it is dragged to.
bool move(RegionF& region, float dx, float dy, int videoWidth, int videoHeight);

// Moves the edges that the handle holds, each kept inside the video. When a dragged edge
// passes the opposite one, the handle becomes its mirror (top-left crossing horizontally
// gives top-right, vertically bottom-left, both bottom-right) and the two edges swap, so
// the region stays in order; the new code is returned. A code that is not a handle, or a
// drag below 0.01 pixel on both axes, changes nothing.
int resize(RegionF& region, int code, float dx, float dy, int videoWidth, int videoHeight);

// The handle that mirrors `code` across the vertical axis (horizontal crossing), the
// horizontal axis, or both.
int mirrored(int code, bool horizontally, bool vertically);

// The region as the camera takes it: converted for a flipped picture (a region in the
// left quarter of the screen lies in the right quarter of a horizontally flipped
// picture), truncated to integers and put in order (left <= right, top <= bottom), since
// the camera refuses a crossed region.
RegionI toCamera(const RegionF& region, bool horizontalFlip, bool verticalFlip, int videoWidth,
                 int videoHeight);

// The reverse, for a region read from the camera.
RegionF fromCamera(const RegionI& region, bool horizontalFlip, bool verticalFlip, int videoWidth,
                   int videoHeight);

} // namespace RegionEditor

} // namespace lanmira
