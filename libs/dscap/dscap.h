#pragma once

#include <cstddef>
#include <cstdint>

class ICameraControl;

// The capture library: cameras, live preview, grabbing and recording. Every call is safe
// with a null or stale handle (it fails); calls made in the wrong state fail too.
extern "C" {

// One enumerated camera. Arrays of them end with a record whose id is nullptr.
struct dscap_dsvi {
    char* id;   // stable identifier, UTF-8
    char* name; // display name, UTF-8
    std::uint32_t value;
};

// Messages the library posts to the windows given to dscap_device. The numbers are the
// application's own and are given at initialisation.
struct dscap_messages {
    unsigned notify;             // to the view; hand to dscap_notify
    unsigned videoSize;          // to the view: width, height
    unsigned recording;          // to the view: 1 recording started, 0 its file is complete
    unsigned firstDialogCommand; // first of sixteen property-dialog commands
    unsigned event;              // to the frame: a DSCAP_EVENT_* code, detail
};

// Codes carried by the event message.
enum {
    DSCAP_EVENT_DEVICE_LOST = 1,   // the camera went away; preview and recording stopped
    DSCAP_EVENT_RECORD_FAILED = 2, // the recording stopped on a write error (e.g. disk full)
    DSCAP_EVENT_STREAM_FAILED = 3, // the camera could not start streaming
};

// Flags returned by dscap_notify.
enum {
    DSCAP_NOTIFY_REPAINT = 1, // a new frame is ready: repaint the view
};

// The application's side of the library. `window` is the opaque value given to
// dscap_device; post may be called from any thread and must not block.
typedef struct dscap_device_s* dscap_handle;

typedef void (*dscap_post_fn)(void* window, unsigned message, std::uintptr_t wParam,
                              std::intptr_t lParam);
// Asks the user for the recording file on the caller's thread. Fills path (UTF-8, NUL
// terminated) and returns 1, or returns 0 when the user cancels. The extension picks the
// container: ".mkv" Matroska, anything else MP4.
typedef int (*dscap_record_file_fn)(void* frameWindow, const char* suggestedPath, char* path,
                                    std::size_t pathSize);

// Shows the camera's property dialog of that command on the caller's thread, built from
// dscap_get_controls; returns 1 when it was shown.
typedef int (*dscap_dialog_fn)(void* frameWindow, dscap_handle h, int command);

struct dscap_hooks {
    dscap_post_fn post;
    dscap_record_file_fn recordFile;
    dscap_dialog_fn showDialog;
};

// configHome nullptr: the user's XDG config folder. Camera settings are kept under the key
// Software\company\app\dscap of that settings root. Returns 0 on success.
int dscap_init(const char* configHome, const char* company, const char* app,
               const char* cameraModule, const char* secondCameraModule,
               const dscap_messages* messages);
void dscap_set_hooks(const dscap_hooks* hooks);

// The cameras present now (real ones first, then the demo camera), or nullptr when there
// are none; free with dscap_free_dsvi.
dscap_dsvi* dscap_enum_device(int flags);
void dscap_free_dsvi(dscap_dsvi* list);

// Opens the camera; nullptr when it cannot be opened. The handle lives until dscap_stop.
// Returns within milliseconds (the demo camera prepares its slide in the background); a
// camera opened again right after dscap_stop first waits for its release.
dscap_handle dscap_device(void* frameWindow, void* viewWindow, const dscap_dsvi* camera);
// Starts the preview; the first frame follows within about half a second.
int dscap_start(dscap_handle h, int a, int b, int c, int d, int e);
// Stops preview and recording and releases the handle at once: no callback of the control
// interface and no message comes after it returns, except the "recording stopped" message
// of a recording it ended, posted when that file is complete. The stream is closed and the
// settings kept in the background; the library waits for that, and for every file still
// being finished, before the process ends.
int dscap_stop(dscap_handle h);
ICameraControl* dscap_get_interface(dscap_handle h, int which);

int dscap_fPreviewing(dscap_handle h);
// 1 from a successful dscap_start_capture until the recording ends (not while its file is
// being finished).
int dscap_fCapturing(dscap_handle h);
int dscap_fSource(dscap_handle h);
// dscap_can_grabber, dscap_video_size and dscap_grabber look at the newest frame without
// counting it as shown; only dscap_draw does that.
int dscap_can_grabber(dscap_handle h);
int dscap_video_size(dscap_handle h, int* width, int* height);
// Fills a packed bitmap block: a 40-byte info header and 24-bit bottom-up rows padded to 4
// bytes, ((width * 24 + 31) / 32) * 4 * height + 40 bytes for the current video size.
int dscap_grabber(dscap_handle h, void* dib, int a, int b, int c, int d, int e);

// Asks the application for a file through the hook, then records until stopped. Fails
// (0, with dscap_last_error) when the camera stopped previewing while the hook ran; a file
// that was there before is never removed. When this camera's last recording, or any
// recording of the file chosen, is still being finished, waits for that first (so the
// recording messages alternate and no file is written twice at once). Posts the recording
// message with 1 when recording begins.
int dscap_start_capture(dscap_handle h);
// Ends the recording at once: dscap_fCapturing is 0 when it returns and a new recording may
// start. The file is finished in the background; the recording message with 0 is posted
// when it is complete and playable. A recording that ends by itself (write error: event
// DSCAP_EVENT_RECORD_FAILED; camera gone: DSCAP_EVENT_DEVICE_LOST) posts the recording
// message with 0 once its file is complete, and the event after it.
int dscap_stop_capture(dscap_handle h);

// What the view draws: the newest processed frame, packed BGR rows top-down.
struct dscap_image {
    const std::uint8_t* bgr;
    int width;
    int height;
    int stride;
};
typedef void (*dscap_draw_fn)(void* context, const dscap_image* image);
// Calls draw with the newest frame, which stays untouched until draw returns. Returns 1
// when there was a frame to draw.
int dscap_draw(dscap_handle h, dscap_draw_fn draw, void* context);
// Handles the notify message; returns DSCAP_NOTIFY_* flags.
int dscap_notify(dscap_handle h, std::uintptr_t wParam, std::intptr_t lParam);

// Frames per second the camera delivers and the view shows (distinct frames dscap_draw
// drew), over the last second.
int dscap_get_property(dscap_handle h, double* cameraFps, double* shownFps);

// Switches the picture size to the camera's resolution of that index.
int dscap_set_esize(dscap_handle h, int index, int reserved);

struct dscap_capability {
    int width;
    int height;
};
// The sizes the camera offers; free with dscap_free_capability. nullptr when none.
dscap_capability* dscap_get_capability(dscap_handle h, int* count);
void dscap_free_capability(dscap_capability* table);

// The reason of the last failure of this camera (opening the stream, recording), as a
// sentence; 0 when there is none.
int dscap_last_error(dscap_handle h, char* text, std::size_t size);

// The camera's controls beyond the control interface (focus, sharpness, backlight...), as
// its property dialog shows them. The demo camera has "Focus" (integer 0..100, sharp at
// its default 50, blurred either side), "Lamp intensity" (integer 0..100 %, default 100),
// "Stage drift" (boolean, the slow wander of the stage) and "Lamp filter" (menu: None,
// Daylight blue, Green). They are not kept with the camera's settings.
enum {
    DSCAP_CONTROL_INTEGER = 0,
    DSCAP_CONTROL_BOOLEAN = 1,
    DSCAP_CONTROL_MENU = 2,
    DSCAP_CONTROL_BUTTON = 3,
};
struct dscap_menu_item {
    std::int32_t value;
    char label[64];
};
struct dscap_control {
    std::uint32_t id;
    char name[64];
    int kind;
    std::int32_t min, max, step, def, value;
    int menuCount;
    dscap_menu_item* menu;
};
// nullptr and 0 when the camera has none; free with dscap_free_controls.
dscap_control* dscap_get_controls(dscap_handle h, int* count);
void dscap_free_controls(dscap_control* controls, int count);
int dscap_set_control(dscap_handle h, std::uint32_t id, std::int32_t value);

// Property dialogs: the sixteen commands from firstDialogCommand. The first is the dialog of
// the camera's controls and exists when it has any; the application's dialog hook shows it.
int dscap_fDialog(dscap_handle h, int command);
// The English name of the dialog for its menu entry; 0 when there is no such dialog.
int dscap_dialog_name(dscap_handle h, int command, char* name, std::size_t size);
int dscap_dialog(dscap_handle h, int command);
// The camera's property sheet: its first dialog.
int dscap_view_property(dscap_handle h, void* frameWindow);

} // extern "C"
