#include "camera/pane/AnchorLayout.h"

namespace lanmira {

TemplateRect anchoredRect(int anchor, const TemplateRect& c, const TemplateRect& panel, int W) {
    const int W0 = panel.width();
    const int R0 = panel.right;
    const int cw = c.width();
    TemplateRect r = c;
    auto moveTo = [&](int x) {
        r.left = x;
        r.right = x + cw;
    };
    switch (anchor) {
    case kAnchorStretch:
        if (panel.left == 0)
            r.right = c.left + cw + (W - R0);
        break;
    case kAnchorRight:
        moveTo(c.left + (W - R0));
        break;
    case kAnchorCentre:
        moveTo((W - cw) / 2);
        break;
    case kAnchorLeftHalf:
        moveTo((W / 2 - cw) / 2);
        break;
    case kAnchorRightHalf:
        moveTo(W / 2 + (W / 2 - cw) / 2);
        break;
    case kAnchorStretchLeftHalf:
        r.right = c.left + cw + W / 2 - W0 / 2;
        break;
    case kAnchorStretchRightHalf:
        r.left = W / 2 - W0 / 2 + c.left;
        r.right = c.right + (W - R0);
        break;
    default:
        break;
    }
    return r;
}

} // namespace lanmira
