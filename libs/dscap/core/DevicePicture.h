#pragma once

#include "dscap/core/FrameExchange.h"
#include "dscap/core/FrameRateMeter.h"
#include "dscap/dscap.h"

#include <atomic>

namespace dscap {

// The newest processed picture of a device on its way from the capture thread to the
// caller's thread, and the frame rates at both ends.
class DevicePicture {
public:
    // What publish() found of the picture's size.
    struct Size {
        int width = 0;
        int height = 0;
        bool changed = false; // from the last picture's, or the first
        bool first = false;
    };

    // The capture thread.
    void frameArrived() { cameraRate_.tick(); }
    Image& back() { return exchange_.back(); }
    // Hands the back picture over.
    Size publish();
    // Whether to post a notify: none while the last one is unhandled.
    bool notifyDue() { return !notifyPending_.exchange(true); }

    // Any thread: the size of the last picture handed over, 0 before the first.
    int width() const { return width_; }
    int height() const { return height_; }

    // The caller's thread.
    bool any();
    // The newest picture's size; false when there is none yet.
    bool newestSize(int& width, int& height);
    // The size the caller was last told: it sizes grab()'s block from it.
    void reportSize(int width, int height);
    // Writes a bottom-up 24-bit bitmap of the newest picture; false when there is none or
    // it is not of the reported size.
    bool grab(void* dib);
    bool draw(dscap_draw_fn paint, void* context);
    int notify();
    void rates(double& camera, double& shown);

private:
    FrameExchange exchange_;
    FrameRateMeter cameraRate_;
    FrameRateMeter shownRate_;
    std::atomic<bool> notifyPending_{false};
    std::atomic<int> width_{0};
    std::atomic<int> height_{0};
    int sentWidth_ = 0; // capture thread: the size last published
    int sentHeight_ = 0;
    int reportedWidth_ = 0; // caller's thread
    int reportedHeight_ = 0;
};

} // namespace dscap
