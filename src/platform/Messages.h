#pragma once

#include <QEvent>

// The program's own message numbers. Each is posted as a PostedMessage whose event type is
// QEvent::User + the number, so a number means the same to every window; several numbers
// mean different things to different receivers, hence the per-receiver names.
namespace lanmira::msg {

inline constexpr int WM_USER = 0x400;

// Camera panels.
inline constexpr int WB_ONE_PUSH_DONE = 0x401; // white balance panel: temperature, tint
inline constexpr int EXPOSURE_CHANGED = 0x465; // exposure panel: (0, 0) camera, (0, 1) text only
inline constexpr int LIGHT_SOURCE_REENABLE = 0x466;    // light source panel
inline constexpr int HISTOGRAM_LOW_RETURN = 0x465;     // histogram panel: Return in the low edit
inline constexpr int HISTOGRAM_HIGH_RETURN = 0x466;    // histogram panel: Return in the high edit
inline constexpr int HISTOGRAM_DATA = 0x467;           // histogram panel: four 2048-byte blocks
inline constexpr int HISTOGRAM_OUTPUT_CHANGED = 0x468; // histogram panel: camera output changed

// Capture library to the camera frame and its view (numbers handed over in dscap_init).
inline constexpr int CAPTURE_NOTIFY = 0x465;     // view: hand to dscap_notify
inline constexpr int CAPTURE_RECORDING = 0x466;  // view: recording state changed
inline constexpr int CAPTURE_VIDEO_SIZE = 0x470; // view → frame: width, height
inline constexpr int CAPTURE_EVENT = 0x473;      // frame: device event (e.g. removal)

// Browser.
inline constexpr int BROWSER_RESORT = 0x464;        // browser view: thumbnail pass complete
inline constexpr int BROWSER_DEFERRED_DROP = 0x468; // browser view: drop buffer and effect
inline constexpr int FOLDERS_PANE_CREATED = 0x46E;  // folder pane: post-creation step
inline constexpr int ENUMERATE_CAMERAS = 0x4C8;     // browser frame

// Viewer.
inline constexpr int VIEWER_OPEN_PATH = 0x469;         // viewer frame: payload QString path
inline constexpr int VIEWER_ADOPT_DIB = 0x46C;         // viewer frame: payload PackedDib
inline constexpr int VIEWER_SELECT_SHOWN_FILE = 0x46F; // viewer view

// Camera frame.
inline constexpr int VIDEO_ZOOM_STEP = 0x472; // code 105 in, 111 out, 49 to 100 %
inline constexpr int VIDEO_START_PREVIEW = 0x4C9;
inline constexpr int VIDEO_ORIENTATION_CHANGED = 0x52C;
inline constexpr int VIDEO_SHOW_REGION = 0x52D; // wParam show, lParam 1 white balance / 0 exposure
inline constexpr int VIDEO_RUN_COMMAND = 0x52E; // wParam command id
inline constexpr int VIDEO_SET_RESOLUTION = 0x52F; // wParam resolution index

// Numbers below this are not ours; the highest fits Qt's user event range with room to spare.
inline constexpr int kFirst = WM_USER;
inline constexpr int kLast = 0x7FF;

constexpr QEvent::Type eventType(int message) {
    return static_cast<QEvent::Type>(QEvent::User + message);
}

} // namespace lanmira::msg
