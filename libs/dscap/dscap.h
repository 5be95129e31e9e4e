#pragma once

#include <cstdint>

// The capture library: cameras, live preview, grabbing and recording.
extern "C" {

// One enumerated camera. Arrays of them end with a record whose id is nullptr.
struct dscap_dsvi {
    char* id;   // stable identifier, UTF-8
    char* name; // display name, UTF-8
    std::uint32_t value;
};

// Messages the library posts through the application's callback. The numbers are the
// application's own and are given at initialisation.
struct dscap_messages {
    unsigned notify;             // hand to dscap_notify
    unsigned videoSize;          // the video size changed: width, height
    unsigned recording;          // recording started or stopped
    unsigned firstDialogCommand; // first of sixteen property-dialog commands
    unsigned event;              // device event, such as removal
};

// configHome nullptr: the user's XDG config folder. Returns 0 on success.
int dscap_init(const char* configHome, const char* company, const char* app,
               const char* cameraModule, const char* secondCameraModule,
               const dscap_messages* messages);
// The cameras present now, or nullptr when there are none; free with dscap_free_dsvi.
dscap_dsvi* dscap_enum_device(int flags);
void dscap_free_dsvi(dscap_dsvi* list);

} // extern "C"
