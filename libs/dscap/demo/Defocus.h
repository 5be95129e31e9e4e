#pragma once

#include "dscap/demo/SlideTexture.h"

namespace dscap {

// The texture as an objective out of focus shows it: each sample the mean of the
// (2 radius + 1) square around it, edges repeated. Radius 0 gives a copy.
SlideTexture defocus(const SlideTexture& texture, int radius);

} // namespace dscap
