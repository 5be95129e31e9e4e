#include "camera/frame/VideoCommandState.h"

#include "platform/CommandIds.h"

namespace lanmira {

bool videoCommandState(int id, const VideoSessionFacts& facts, bool dialogExists,
                       CommandState& state) {
    const bool live = !facts.lost;
    const bool dialog = id >= cmd::ID_CAMERA_DIALOG_FIRST && id <= cmd::ID_CAMERA_DIALOG_LAST;
    if (!dialog && id != cmd::ID_VIDEO_CAPTURE_FRAME && id != cmd::ID_EDIT_COPY &&
        id != cmd::ID_VIDEO_AUTO_CAPTURE && id != cmd::ID_VIDEO_START_RECORD &&
        id != cmd::ID_VIDEO_STOP_RECORD && id != cmd::ID_VIDEO_VIEW_PROPERTIES &&
        id != cmd::ID_VIDEO_TOPMOST)
        return false;

    state = CommandState{};
    if (dialog) {
        state.enabled = live && dialogExists && !facts.recording;
    } else if (id == cmd::ID_VIDEO_CAPTURE_FRAME || id == cmd::ID_EDIT_COPY) {
        state.enabled = live && !facts.autoCapture && facts.canGrab;
    } else if (id == cmd::ID_VIDEO_AUTO_CAPTURE) {
        // While it runs the command stops it, so it stays available even after an unplug.
        state.setCheck(facts.autoCapture);
        state.enabled = facts.autoCapture || (live && facts.canGrab);
    } else if (id == cmd::ID_VIDEO_START_RECORD) {
        state.enabled = live && facts.hasSource && !facts.recording && !facts.autoCapture;
    } else if (id == cmd::ID_VIDEO_STOP_RECORD) {
        state.enabled = facts.recording;
    } else if (id == cmd::ID_VIDEO_VIEW_PROPERTIES) {
        state.enabled = live && facts.hasSource;
    } else {
        state.setCheck(facts.topmost);
    }
    return true;
}

} // namespace lanmira
