#pragma once

#include <QString>

#include <vector>

namespace lanmira {

struct CameraRecord;

// One entry of the "Camera List" popup.
struct CameraMenuEntry {
    int id = 0; // command
    QString text;
    bool enabled = true;
    bool checked = false;
};

// The popup's entries for a camera list: with no camera one greyed entry with the "no
// device" text; otherwise one entry per camera (at most the 27 reserved commands), the
// current camera checked (exact match of the identifier), all greyed while a camera
// window is open.
std::vector<CameraMenuEntry> cameraMenuEntries(const std::vector<CameraRecord>& cameras,
                                               const QString& currentId, bool frameOpen,
                                               const QString& noDeviceText);

} // namespace lanmira
