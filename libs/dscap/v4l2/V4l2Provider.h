#pragma once

#include "dscap/core/CameraSource.h"

#include <memory>

namespace dscap::v4l2 {

class V4l2System;

// The system's video capture devices, or those of a fake system in tests.
std::unique_ptr<CameraProvider> makeV4l2Provider(std::shared_ptr<V4l2System> system);
// The real /dev and /sys.
std::shared_ptr<V4l2System> systemV4l2();

} // namespace dscap::v4l2
