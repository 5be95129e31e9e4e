#pragma once

#include <QString>

#include <cstdint>

namespace lanmira {

class CommandTarget;
class CVideoFrame;

// Where and how captured frames are saved: the application's capture naming.
struct CaptureFormat {
    QString title;     // may hold a folder
    QString extension; // without the dot
    int format = 0;    // the image library's format number
    std::uint32_t options[2] = {0, 0};
};

// What the camera frame asks of the application that made it.
class VideoFrameHost {
public:
    virtual ~VideoFrameHost() = default;

    virtual int readSetting(const QString& section, const QString& key, int def) = 0;
    virtual void writeSetting(const QString& section, const QString& key, int value) = 0;

    virtual CaptureFormat captureSettings() const = 0;
    // The capture counter, kept for the life of the process.
    virtual int& captureCounter() = 0;

    // The camera the frame opened is now the current one.
    virtual void setCurrentCamera(const QString& id) = 0;
    // Told once, as the frame goes.
    virtual void cameraFrameDestroyed(CVideoFrame* frame) = 0;
    // The application's commands, last link of the frame's command chain.
    virtual CommandTarget* applicationCommands() = 0;
};

} // namespace lanmira
