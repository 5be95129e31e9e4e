#pragma once

#include "acquire/PackedDib.h"

namespace lanmira {

// The viewer's turns and mirrors. Each builds a new picture and leaves its input as it
// was: header, bit-field masks and colour table are copied, a turn exchanges width and
// height and sizes its rows for the new width, and row padding comes out as zero bits.
// Every depth is handled, 16- and 32-bit pixels as 2 and 4 bytes. An empty result means
// memory ran short, or the picture is not one the viewer holds (a core or compressed
// header, or top-down rows); convert those with dibToRgb24 first.

// A quarter turn counter-clockwise: memory row y, column x goes to row x, column h-1-y.
PackedDib rotateCounterClockwise(const PackedDib& dib);
// The same bytes as three quarter turns in a row, made in one pass.
PackedDib rotateClockwise(const PackedDib& dib);
// The same bytes as two quarter turns in a row, made in one pass.
PackedDib rotate180(const PackedDib& dib);
PackedDib mirrorLeftRight(const PackedDib& dib);
PackedDib mirrorTopBottom(const PackedDib& dib);

} // namespace lanmira
