#pragma once

#include "dscap/dscap.h"

class ICameraControl;
class QWidget;

namespace lanmira {

// What the camera frame asks of its control pane. The frame knows the pane only through
// this, so the pane can be docked without the frame knowing its panels.
class CameraPaneLink {
public:
    virtual ~CameraPaneLink() = default;

    // State bits of SetStateFlag.
    static constexpr unsigned kRecording = 1;
    static constexpr unsigned kVideoSize = 2;

    // The camera to attach (handle, interface, mode 1), or none (null, null, 0).
    virtual void SetCamera(dscap_handle handle, ICameraControl* control, int mode) = 0;
    virtual void SetStateFlag(bool on, unsigned bits) = 0;
    // The pane's widget, docked beside the live view.
    virtual QWidget* paneWidget() = 0;
};

} // namespace lanmira
