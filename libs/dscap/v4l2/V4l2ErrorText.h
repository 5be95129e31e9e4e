#pragma once

#include <string>

namespace dscap::v4l2 {

// A sentence for the user about a failed device call.
std::string errorText(int error);

} // namespace dscap::v4l2
