#pragma once

#include "acquire/PackedDib.h"
#include "camera/CameraRecord.h"
#include "dscap/dscap.h"

#include <QString>

class ICameraControl;

namespace lanmira {

// One opened camera as the camera frame drives it through the capture library.
//
//   Idle --start ok--> Previewing --lost--> Lost --stop--> Stopped
//   Idle --start fails--> Failed --stop--> Stopped
//   Previewing --stop--> Stopped
//
// Only Previewing offers a picture; every call checks the state first.
class CameraSession {
public:
    enum class State { Idle, Previewing, Failed, Lost, Stopped };

    explicit CameraSession(CameraRecord camera);
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    // Opens the camera and starts its preview; the library posts to the two receiver
    // contexts. False (state Failed) when the camera cannot be opened or started.
    bool start(void* frameContext, void* viewContext);
    // The camera went away: keeps the handle for a clean stop, offers nothing more.
    void markLost();
    // Stops preview and recording and releases the camera; final.
    void stop();

    State state() const { return m_state; }
    const CameraRecord& camera() const { return m_camera; }
    dscap_handle handle() const;
    ICameraControl* control() const;
    // The library's reason for a failure to open or record, if it gave one.
    QString lastError() const;

    bool hasSource() const;
    bool previewing() const;
    bool recording() const;
    bool canGrab() const;
    bool videoSize(int& width, int& height) const;
    bool dialogExists(int command) const;

    // The current frame as a 24-bit packed bitmap, or null.
    PackedDib grab() const;

private:
    void setState(State next);

    CameraRecord m_camera;
    State m_state = State::Idle;
    dscap_handle m_handle = nullptr;
    ICameraControl* m_control = nullptr;
};

} // namespace lanmira
