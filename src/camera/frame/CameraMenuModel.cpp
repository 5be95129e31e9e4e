#include "camera/frame/CameraMenuModel.h"

#include "camera/CameraRecord.h"
#include "platform/CommandIds.h"

#include <algorithm>

namespace lanmira {

std::vector<CameraMenuEntry> cameraMenuEntries(const std::vector<CameraRecord>& cameras,
                                               const QString& currentId, bool frameOpen,
                                               const QString& noDeviceText) {
    if (cameras.empty())
        return {CameraMenuEntry{cmd::ID_CAMERA_FIRST, noDeviceText, false, false}};

    // Only the reserved commands can carry a camera; the rest of the list is not offered.
    const std::size_t count = std::min<std::size_t>(cameras.size(), cmd::kMaxCameras);
    std::vector<CameraMenuEntry> entries;
    entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const CameraRecord& camera = cameras[i];
        // No camera open means nothing is current, even for a camera without identifier.
        const bool current = !currentId.isEmpty() && camera.id == currentId;
        entries.push_back(
            {cmd::ID_CAMERA_FIRST + static_cast<int>(i), camera.name, !frameOpen, current});
    }
    return entries;
}

} // namespace lanmira
