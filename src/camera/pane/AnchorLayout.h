#pragma once

namespace lanmira {

// A rectangle as a panel template gives it: right and bottom are one past the last pixel.
struct TemplateRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    friend bool operator==(const TemplateRect&, const TemplateRect&) = default;
};

// How a panel control follows the panel's width.
enum Anchor : int {
    kAnchorNone = 0,
    kAnchorStretch = 1,          // keeps the right margin
    kAnchorRight = 2,            // follows the right edge
    kAnchorCentre = 4,           // centred
    kAnchorLeftHalf = 8,         // centred in the left half
    kAnchorRightHalf = 16,       // centred in the right half
    kAnchorStretchLeftHalf = 32, // stretches with the left half
    kAnchorStretchRightHalf = 64 // stretches with the right half
};

// Where a control of the template goes when the panel is `width` wide. `panel` is the
// panel's own template rectangle. Integer arithmetic throughout, divisions truncating, so
// a panel laid out twice at the same width lands on the same pixels. Unknown anchors leave
// the control where the template put it.
TemplateRect anchoredRect(int anchor, const TemplateRect& control, const TemplateRect& panel,
                          int width);

} // namespace lanmira
