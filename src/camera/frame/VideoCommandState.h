#pragma once

#include "platform/CommandTarget.h"

namespace lanmira {

// What the camera frame's commands depend on, read once per update.
struct VideoSessionFacts {
    bool hasSource = false; // a video source is present
    bool canGrab = false;   // a frame can be grabbed now
    bool recording = false;
    bool autoCapture = false; // auto capture runs
    bool topmost = false;
    bool lost = false; // the camera was unplugged: nothing can be captured any more
};

// The enabling and checking rules of the camera frame's commands. `dialogExists` is asked
// only for the property-dialog commands. Once the camera is lost only what stops or does
// not touch the camera stays available: stop record while recording, auto capture while it
// runs, topmost. Returns false, leaving `state` alone, for a command the frame does not own.
bool videoCommandState(int id, const VideoSessionFacts& facts, bool dialogExists,
                       CommandState& state);

} // namespace lanmira
