#include "dscap/v4l2/V4l2ErrorText.h"

#include <cerrno>
#include <system_error>

namespace dscap::v4l2 {

std::string errorText(int error) {
    switch (error) {
    case EBUSY:
        return "The camera is busy: another program is using it.";
    case EACCES:
    case EPERM:
        return "You are not allowed to use the camera: your user needs access to the video "
               "devices.";
    case ENODEV:
    case ENXIO:
    case ENOENT:
        return "The camera is not connected.";
    case EIO:
    case EPROTO:
        return "The camera stopped answering.";
    case ENOSPC:
        return "The USB connection cannot carry this picture size at this speed: choose a "
               "lower resolution or speed.";
    case ENOMEM:
        return "There is not enough memory to stream from the camera.";
    case EINVAL:
    case ENOTTY:
        return "The camera does not support this setting.";
    case ETIMEDOUT:
        return "The camera did not answer in time.";
    default:
        return "The camera reported an error: " + std::generic_category().message(error) + ".";
    }
}

} // namespace dscap::v4l2
